#include "camera/simulation/shortclock.h"

#include <algorithm>

namespace korvane::simulation {

std::size_t ShortClock::reach(const Event2D* events, std::size_t count) const
{
    // Times before the base wrap around to large numbers.
    const auto tells = [this](const Event2D& event) { return (event.timestamp >> shift) - base <= span; };
    if (count == 0 || !begun || !tells(events[0]))
        return 0;
    if (tells(events[count - 1]))
        return count;
    return static_cast<std::size_t>(std::partition_point(events, events + count, tells) - events);
}

std::uint64_t ShortClock::moveTo(std::uint64_t timestamp)
{
    const std::uint64_t before = base;
    base = (timestamp >> shift) - memory - 1;
    begun = true;
    return base - before;
}

} // namespace korvane::simulation
