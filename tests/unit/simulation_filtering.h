#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/random.h"

#include <algorithm>
#include <cstddef>
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

} // namespace korvane::simulation::testing
