#pragma once

#include <cstdint>

namespace korvane::kernels {

/// A colour as 0xffRRGGBB, the pixels of a 32-bit image.
using Rgb32 = std::uint32_t;

constexpr Rgb32 rgb32(unsigned red, unsigned green, unsigned blue)
{
    return 0xFF000000u | (red << 16) | (green << 8) | blue;
}

/// The three colours that events are painted in.
struct EventPalette
{
    Rgb32 background;
    Rgb32 off; ///< polarity 0
    Rgb32 on; ///< any other polarity
};

/// Live view and playback of DVS-only sources: grey with beige and dark events.
constexpr EventPalette dvsPalette{rgb32(112, 112, 112), rgb32(64, 61, 51), rgb32(191, 188, 180)};

} // namespace korvane::kernels
