#pragma once

#include "camera/driver/event2d.h"
#include "display/kernels/palette.h"

#include <cstddef>
#include <cstdint>

namespace korvane::kernels {

/// What a pixel of an event plane holds: one byte a pixel, row-major. A third of the memory of a coloured
/// image, so that a frame stays in the processor's cache while events are painted into it.
enum PlaneValue : std::uint8_t {
    PlaneBackground = 0,
    PlaneOff = 1,
    PlaneOn = 2,
};

/// Events counted over periods of a second.
struct EventRateCounter
{
    std::uint64_t periodStart = 0; ///< microseconds
    std::uint64_t eventsInPeriod = 0;
};

/// Paints events into a plane of `width` x `height` pixels, the last event at a pixel wins. Events outside
/// are neither painted nor counted.
void paintEvents(const Event2D* begin, const Event2D* end, std::uint8_t* plane, unsigned width,
                 unsigned height, EventRateCounter& rate);

/// Turns a plane of `count` pixels into colours.
void colourPlane(const std::uint8_t* plane, std::size_t count, const EventPalette& palette, Rgb32* pixels);

} // namespace korvane::kernels
