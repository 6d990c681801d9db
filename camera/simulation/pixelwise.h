#pragma once

#include "camera/driver/event2d.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace korvane::simulation {

/// Numbers the pixels of a sensor, with one place more for all that lies outside it. A plain value.
struct PixelPlaces
{
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;

    std::uint32_t outside() const { return columns * rows; }
    std::size_t count() const { return std::size_t{outside()} + 1; }
    std::uint32_t placeOf(const Event2D& event) const
    {
        const std::uint32_t inside = (event.x < columns ? 1U : 0U) & (event.y < rows ? 1U : 0U);
        return outside() ^ (((event.y * columns + event.x) ^ outside()) & (0U - inside));
    }
};

/// One of two values without a branch: which one it is, is as hard to predict as the light.
inline std::uint32_t choose(bool first, std::uint32_t a, std::uint32_t b)
{
    return b ^ ((a ^ b) & (0U - static_cast<std::uint32_t>(first)));
}

/// Moves the events that pass to `out`, which may be `events`, and returns how many they are. The `rule` gets
/// each event with the state of its pixel, to be read and changed, and tells whether it passes; what lies
/// outside the sensor passes when `outsidePasses`. `states` has places.count() members.
template <typename State, typename Rule>
std::size_t filterPixelwise(const PixelPlaces& places, State* states, const Event2D* events,
                            std::size_t count, Event2D* out, bool outsidePasses, Rule rule)
{
    // The pixels of a block are called into the cache while the block before is worked on.
    constexpr std::size_t block = 64;
    std::uint32_t found[2][block];
    const auto look = [&](std::size_t start) {
        std::uint32_t* const into = found[start / block % 2];
        for (std::size_t i = 0; i < std::min(block, count - start); ++i) {
            into[i] = places.placeOf(events[start + i]);
            __builtin_prefetch(states + into[i], 1);
        }
    };
    std::size_t kept = 0;
    if (count > 0)
        look(0);
    for (std::size_t start = 0; start < count; start += block) {
        if (start + block < count)
            look(start + block);
        const std::uint32_t* const at = found[start / block % 2];
        for (std::size_t i = 0; i < std::min(block, count - start); ++i) {
            const Event2D* const event = events + start + i;
            const bool passes = rule(*event, states[at[i]]);
            // As a whole, padding too: that is one load and one store.
            std::memmove(out + kept, event, sizeof(Event2D));
            kept += choose(at[i] == places.outside(), outsidePasses ? 1 : 0, passes ? 1 : 0);
        }
    }
    return kept;
}

} // namespace korvane::simulation
