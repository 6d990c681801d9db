#pragma once

#include "camera/driver/event2d.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace korvane::kernels {

/// A counter of events grows no further than this.
constexpr std::uint16_t maximumCount = 10;

/// The picture that events are painted into: 3 bytes a pixel in the order blue, green, red.
struct BgrPicture
{
    std::uint8_t* pixels;
    std::size_t stride; ///< bytes from row to row
    int width;
    int height;
};

/// Counts events per pixel and polarity: two counters a pixel, polarity 0 then 1, row-major. An event at
/// column x counts at column `width` - x, for the fusion camera's event sensor sees the scene mirrored: with
/// x = 0 that is the first column of the next row. What lies outside the counters is dropped.
void countEvents(const Event2D* begin, const Event2D* end, std::span<std::uint16_t> counts, int width);

/// Paints the pixels that have counts: red where polarity 1 has at least as many as polarity 0, else blue.
/// `counts` has two counters for each pixel of the picture.
void paintCounts(std::span<const std::uint16_t> counts, const BgrPicture& picture);

/// Paints events in their order: red for polarity 1, blue for any other. An event at column x is painted at
/// column `picture.width` - x in 16-bit arithmetic; what lies outside the picture is left out.
void paintMirrored(const Event2D* begin, const Event2D* end, const BgrPicture& picture);

} // namespace korvane::kernels
