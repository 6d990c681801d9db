#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <vector>

/// Figures: what a benchmark measured, beside what the machine itself can do with the same bytes.
namespace figure {

/// Which of two values is the better one.
enum class Better {
    Higher,
    Lower,
};

/// Reports the figure of one run. `limit` is in the same unit.
void report(benchmark::State& state, const char* unit, Better better, double value, double limit);

/// Prints a further value below the figure of the run.
void note(benchmark::State& state, const char* name, double value);

/// Processor time of all threads of this process so far, in seconds.
double processorSeconds();

/// Seconds that copying this many bytes takes at best of five, within buffers of at most `window` bytes each.
double secondsToCopy(std::size_t bytes, std::size_t window);

/// Seconds of wall time at best of five.
double bestOfFive(const std::function<void()>& work);

double milliseconds(std::chrono::steady_clock::duration duration);

/// The value that 99 of 100 are not above.
double percentile99(std::vector<double> values);

} // namespace figure
