#include "camera/simulation/regionfilter.h"

#include <cstring>

namespace korvane::simulation {

std::size_t RegionFilter::filter(Event2D* events, std::size_t count) const
{
    // Columns and rows before the window's first wrap around to large numbers.
    const std::uint32_t left = settings.region.x;
    const std::uint32_t top = settings.region.y;
    const std::uint32_t width = settings.region.width;
    const std::uint32_t height = settings.region.height;
    const unsigned turned = settings.outside ? 1 : 0;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Event2D& event = events[i];
        const unsigned within = (event.x - left < width ? 1U : 0U) & (event.y - top < height ? 1U : 0U);
        std::memmove(events + kept, events + i, sizeof(Event2D));
        kept += within ^ turned;
    }
    return kept;
}

} // namespace korvane::simulation
