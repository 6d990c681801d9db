#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/simulatedcameraconfig.h"
#include "camera/simulation/spanassembler.h"
#include "camera/simulation/streetscene.h"
#include "camera/simulation/turntablescene.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace {

using namespace korvane::simulation;

/// Makes a stream; "core" is the share of a processor core that real time takes, "events" the events a
/// second.
void makeStream(benchmark::State& state, std::unique_ptr<Scene> scene, const SensorParameters& parameters)
{
    EventGenerator generator(std::move(scene), parameters, 2);
    std::uint64_t events = 0;
    for ([[maybe_unused]] auto _ : state)
        events += generator.generateStep().size();
    const double seconds = static_cast<double>(generator.time()) * 1e-6;
    state.counters["events"] = static_cast<double>(events) / seconds;
    state.counters["core"]
        = benchmark::Counter(seconds, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["per_event"] = benchmark::Counter(
        static_cast<double>(events), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_Street(benchmark::State& state)
{
    makeStream(state, std::make_unique<StreetScene>(2, static_cast<double>(state.range(0)) * 1e6),
               SensorParameters());
}
BENCHMARK(BM_Street)->ArgName("Mev_per_s")->Arg(1)->Arg(10)->Arg(20)->Arg(30)->Arg(50)->MinTime(2);

void BM_Turntable(benchmark::State& state)
{
    makeStream(state, std::make_unique<TurntableScene>(3, static_cast<double>(state.range(0)) * 1e6),
               SensorParameters());
}
BENCHMARK(BM_Turntable)->ArgName("Mev_per_s")->Arg(1)->Arg(2)->Arg(10)->MinTime(2);

void BM_StreetWithNoisySensor(benchmark::State& state)
{
    SensorParameters parameters;
    parameters.backgroundRateHz = static_cast<float>(state.range(0));
    makeStream(state, std::make_unique<StreetScene>(2, 10e6), parameters);
}
BENCHMARK(BM_StreetWithNoisySensor)->ArgName("Hz_per_pixel")->Arg(1)->Arg(10)->MinTime(1);

void BM_SetParameters(benchmark::State& state)
{
    EventGenerator generator(std::make_unique<TurntableScene>(3, 1e6), SensorParameters(), 2);
    SensorParameters parameters;
    for ([[maybe_unused]] auto _ : state) {
        parameters.onThreshold = parameters.onThreshold > 0.3F ? 0.2F : parameters.onThreshold + 0.01F;
        generator.setParameters(parameters);
    }
}
BENCHMARK(BM_SetParameters)->Unit(benchmark::kMillisecond);

void BM_OpenStandardCamera(benchmark::State& state)
{
    const SimulatedCameraConfig config = standardCameras()[static_cast<std::size_t>(state.range(0))];
    state.SetLabel(config.serial);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(EventGenerator(makeScene(config), config.sensor, config.seed));
}
BENCHMARK(BM_OpenStandardCamera)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

} // namespace
