#pragma once

#include "camera/driver/event2d.h"

#include <cstddef>
#include <cstdint>

namespace korvane::simulation {

/// A rectangle of pixels: columns [x, x + width), rows [y, y + height). A plain value.
struct Region
{
    std::uint16_t x = 0;
    std::uint16_t y = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;

    friend bool operator==(const Region&, const Region&) = default;
};

/// Lets the events inside a window pass, or those outside. One thread at a time.
class RegionFilter
{
public:
    struct Settings
    {
        bool enabled = false;
        bool outside = false; ///< events outside the window pass instead of those inside
        Region region;
    };

    void configure(const Settings& next) { settings = next; }
    /// Moves the events that pass to the front, in their order, and returns how many they are.
    std::size_t filter(Event2D* events, std::size_t count) const;

private:
    Settings settings;
};

} // namespace korvane::simulation
