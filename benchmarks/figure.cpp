#include "benchmarks/figure.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <limits>
#include <vector>

namespace figure {

void report(benchmark::State& state, const char* unit, Better better, double value, double limit)
{
    state.SetLabel(unit);
    state.counters["value"] = value;
    state.counters["limit"] = limit;
    state.counters["higher"] = better == Better::Higher ? 1 : 0;
}

void note(benchmark::State& state, const char* name, double value)
{
    state.counters[name] = value;
}

double processorSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double bestOfFive(const std::function<void()>& work)
{
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < 5; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best
            = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

double secondsToCopy(std::size_t bytes, std::size_t window)
{
    window = std::min(window, bytes);
    const std::vector<std::uint8_t> source(window, 1);
    std::vector<std::uint8_t> target(window, 0);
    return bestOfFive([&] {
        for (std::size_t done = 0; done < bytes; done += window) {
            std::memcpy(target.data(), source.data(), std::min(window, bytes - done));
            benchmark::DoNotOptimize(target.data());
            benchmark::ClobberMemory();
        }
    });
}

double milliseconds(std::chrono::steady_clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

double percentile99(std::vector<double> values)
{
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(values.size() * 99 / 100);
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

} // namespace figure
