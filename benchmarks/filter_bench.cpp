#include "benchmarks/figure.h"
#include "camera/driver/event2d.h"
#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/flickerfilter.h"
#include "camera/simulation/ratefilter.h"
#include "camera/simulation/regionfilter.h"
#include "camera/simulation/streetscene.h"
#include "camera/simulation/trailfilter.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

namespace {

using namespace korvane::simulation;
using korvane::Event2D;

/// Steps of a street as a camera delivers them, 10 million events a second.
const std::vector<std::vector<Event2D>>& street()
{
    static const std::vector<std::vector<Event2D>> steps = [] {
        EventGenerator generator(std::make_unique<StreetScene>(2, 10e6), SensorParameters(), 2);
        std::vector<std::vector<Event2D>> made;
        while (generator.time() < 400'000) {
            const auto step = generator.generateStep();
            made.emplace_back(step.begin(), step.end());
        }
        return made;
    }();
    return steps;
}

/// Nanoseconds that the filter takes for an event, each step at best of five; the limit copies the events
/// within a buffer of a step's size.
template <typename Filter>
void filterStreet(benchmark::State& state, Filter filter, const typename Filter::Settings& settings)
{
    filter.configure(settings);
    std::size_t count = 0;
    std::size_t longest = 0;
    for (const auto& step : street()) {
        count += step.size();
        longest = std::max(longest, step.size());
    }
    std::vector<Event2D> batch(longest);
    std::vector<double> best(street().size(), std::numeric_limits<double>::max());
    std::size_t kept = 0;
    std::uint64_t later = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (int round = 0; round < 5; ++round, later += 400'000) {
            kept = 0;
            for (std::size_t i = 0; i < street().size(); ++i) {
                const std::vector<Event2D>& step = street()[i];
                std::transform(step.begin(), step.end(), batch.begin(), [later](Event2D event) {
                    event.timestamp += later;
                    return event;
                });
                const auto start = std::chrono::steady_clock::now();
                kept += filter.filter(batch.data(), step.size());
                benchmark::ClobberMemory();
                const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
                best[i] = std::min(best[i], spent.count());
            }
        }
    }
    const auto events = static_cast<double>(count);
    figure::note(state, "kept_percent", 100.0 * static_cast<double>(kept) / events);
    figure::report(state, "ns/event", figure::Better::Lower,
                   std::accumulate(best.begin(), best.end(), 0.0) * 1e9 / events,
                   figure::secondsToCopy(count * sizeof(Event2D), longest * sizeof(Event2D)) * 1e9 / events);
}

void filter_roi(benchmark::State& state)
{
    filterStreet(state, RegionFilter(), {true, false, {320, 180, 640, 360}});
}

void filter_trail(benchmark::State& state)
{
    filterStreet(state, TrailFilter(1280, 720), {true, TrailFilter::Mode::Trail, 10'000});
}

void filter_antiflicker(benchmark::State& state)
{
    filterStreet(state, FlickerFilter(1280, 720), {true, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
}

void filter_rate(benchmark::State& state)
{
    filterStreet(state, RateFilter(), {true, 5'000'000});
}

BENCHMARK(filter_roi)->Iterations(1)->Repetitions(3);
BENCHMARK(filter_trail)->Iterations(1)->Repetitions(3);
BENCHMARK(filter_antiflicker)->Iterations(1)->Repetitions(3);
BENCHMARK(filter_rate)->Iterations(1)->Repetitions(3);

} // namespace
