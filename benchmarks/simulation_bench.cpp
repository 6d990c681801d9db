#include "benchmarks/figure.h"
#include "camera/driver/event2d.h"
#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/streetscene.h"
#include "camera/simulation/turntablescene.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace {

using namespace korvane::simulation;

/// The share of a processor core that making a stream in real time takes; the limit copies its events.
void makeStream(benchmark::State& state, std::unique_ptr<Scene> scene)
{
    EventGenerator generator(std::move(scene), SensorParameters(), 2);
    std::uint64_t events = 0;
    const double before = figure::processorSeconds();
    for ([[maybe_unused]] auto _ : state) {
        while (generator.time() < 2'000'000)
            events += generator.generateStep().size();
    }
    const double made = static_cast<double>(generator.time()) / 1e6;
    const double cores = (figure::processorSeconds() - before) / made;
    state.counters["events_per_second"] = static_cast<double>(events) / made;
    figure::report(state, "cores", figure::Better::Lower, cores,
                   figure::secondsToCopy(events * sizeof(korvane::Event2D), 1024 * 1024) / made);
}

void generate_street_10m(benchmark::State& state)
{
    makeStream(state, std::make_unique<StreetScene>(2, 10e6));
}

void generate_street_20m(benchmark::State& state)
{
    makeStream(state, std::make_unique<StreetScene>(2, 20e6));
}

void generate_turntable(benchmark::State& state)
{
    makeStream(state, std::make_unique<TurntableScene>(3, 1.5e6));
}

BENCHMARK(generate_street_10m)->Iterations(1)->Repetitions(3);
BENCHMARK(generate_street_20m)->Iterations(1)->Repetitions(3);
BENCHMARK(generate_turntable)->Iterations(1)->Repetitions(3);

} // namespace
