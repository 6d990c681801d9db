#include "camera/simulation/ratefilter.h"

#include <algorithm>
#include <utility>

namespace korvane::simulation {

namespace {

constexpr std::uint64_t sliceUs = 50;
// What so many slices have left may be used later: 300 us are 3 % of 10 ms, the slices at the ends of a
// window are another percent.
constexpr std::uint64_t carriedSlices = 6;
constexpr std::uint64_t creditUnit = 1'000'000;
constexpr std::uint64_t secondUs = 1'000'000;

/// How many events, of which the first lies in the slice, lie in it. They are few, so the search begins
/// there.
std::size_t countInSlice(const Event2D* events, std::size_t count, std::uint64_t start)
{
    const auto inside = [start](const Event2D& event) { return event.timestamp - start < sliceUs; };
    std::size_t found = 0;
    std::size_t step = 32;
    while (found + step < count && inside(events[found + step])) {
        found += step;
        step *= 2;
    }
    return static_cast<std::size_t>(
        std::partition_point(events + found, events + std::min(count, found + step), inside) - events);
}

} // namespace

void RateFilter::configure(const Settings& next)
{
    if (next.enabled != settings.enabled) {
        endSecond();
        begun = false;
        credit = 0;
    }
    settings = next;
}

void RateFilter::endSecond()
{
    const Count ended = std::exchange(count, {});
    if (report && ended.dropped > 0)
        report(ended);
}

void RateFilter::enterSlice(std::uint64_t timestamp)
{
    if (!begun || timestamp >= secondEnd) {
        endSecond();
        secondEnd = timestamp - timestamp % secondUs + secondUs;
    }
    const std::uint64_t start = timestamp - timestamp % sliceUs;
    const std::uint64_t passed = begun && start > sliceStart ? (start - sliceStart) / sliceUs : 1;
    const std::uint64_t share = sliceUs * settings.limit;
    credit = std::min(credit + std::min(passed, carriedSlices + 1) * share, (carriedSlices + 1) * share);
    sliceStart = start;
    begun = true;
}

std::size_t RateFilter::thin(const Event2D* events, std::size_t inSlice, Event2D* out)
{
    const std::uint64_t allowed = credit / creditUnit;
    if (allowed >= inSlice) {
        if (out != events)
            std::copy(events, events + inSlice, out);
        credit -= inSlice * creditUnit;
        return inSlice;
    }
    // An event passes when the sum of steps goes beyond 32 bits. It begins anywhere, so that no place within
    // the slices is preferred.
    const auto step = static_cast<std::uint32_t>((allowed << 32U) / inSlice);
    std::uint32_t sum = random.next();
    std::size_t kept = 0;
    for (std::size_t i = 0; i < inSlice; ++i) {
        const std::uint32_t before = sum;
        sum += step;
        out[kept] = events[i];
        kept += sum < before ? 1 : 0;
    }
    credit -= kept * creditUnit;
    return kept;
}

std::size_t RateFilter::filter(Event2D* events, std::size_t total)
{
    std::size_t kept = 0;
    for (std::size_t done = 0; done < total;) {
        const std::uint64_t timestamp = events[done].timestamp;
        if (!begun || timestamp < sliceStart || timestamp - sliceStart >= sliceUs)
            enterSlice(timestamp);
        const std::size_t inSlice = countInSlice(events + done, total - done, sliceStart);
        const std::size_t passed = thin(events + done, inSlice, events + kept);
        count.passed += passed;
        count.dropped += inSlice - passed;
        kept += passed;
        done += inSlice;
    }
    return kept;
}

} // namespace korvane::simulation
