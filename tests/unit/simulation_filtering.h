#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/random.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace korvane::simulation::testing {

/// What a filter leaves of events that come in batches of many sizes, empty ones among them.
template <typename Filter>
std::vector<Event2D> filtered(Filter& filter, const std::vector<Event2D>& events)
{
    Random random(events.size());
    std::vector<Event2D> left;
    for (std::size_t done = 0; done < events.size();) {
        const auto size = static_cast<std::size_t>(random.below(random.chance(0.5) ? 5 : 2000));
        const std::size_t end = std::min(events.size(), done + size);
        std::vector<Event2D> batch(events.begin() + static_cast<std::ptrdiff_t>(done),
                                   events.begin() + static_cast<std::ptrdiff_t>(end));
        batch.resize(filter.filter(batch.data(), batch.size()));
        left.insert(left.end(), batch.begin(), batch.end());
        done = end;
    }
    return left;
}

/// The fewest and the most events in any window of 10 ms, events per second.
inline std::pair<double, double> ratesOf(const std::vector<Event2D>& events, std::uint64_t start,
                                         std::uint64_t end)
{
    constexpr std::uint64_t windowUs = 10'000;
    // Counts per 10 us, of which a window has a thousand.
    constexpr std::uint64_t bin = 10;
    std::vector<std::size_t> before((end - start) / bin + 1);
    for (const Event2D& event : events)
        ++before[(event.timestamp - start) / bin + 1];
    for (std::size_t i = 1; i < before.size(); ++i)
        before[i] += before[i - 1];
    std::size_t fewest = events.size();
    std::size_t most = 0;
    for (std::size_t i = 0; i + windowUs / bin < before.size(); ++i) {
        const std::size_t count = before[i + windowUs / bin] - before[i];
        fewest = std::min(fewest, count);
        most = std::max(most, count);
    }
    constexpr double perSecond = 1e6 / windowUs;
    return {static_cast<double>(fewest) * perSecond, static_cast<double>(most) * perSecond};
}

} // namespace korvane::simulation::testing
