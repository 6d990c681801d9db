#pragma once

#include "display/kernels/palette.h"

#include <cstddef>
#include <cstdint>

namespace korvane::kernels {

/// A colour as videos hold it: BT.709, limited range (luma 16 to 235, chroma 16 to 240 about 128).
struct YuvColour
{
    std::uint8_t luma;
    std::uint8_t cb;
    std::uint8_t cr;

    bool operator==(const YuvColour&) const = default;
};

/// Recommendation ITU-R BT.709-6: what each channel adds to the luma, and what the differences of blue and of
/// red from it are divided by.
namespace bt709 {

constexpr double red = 0.2126;
constexpr double green = 0.7152;
constexpr double blue = 0.0722;
constexpr double cbDivisor = 1.8556;
constexpr double crDivisor = 1.5748;

} // namespace bt709

/// The nearest video colour.
constexpr YuvColour yuvColour(Rgb32 colour)
{
    const double red = (colour >> 16) & 0xFF;
    const double green = (colour >> 8) & 0xFF;
    const double blue = colour & 0xFF;
    const double luma = bt709::red * red + bt709::green * green + bt709::blue * blue;
    // Nothing is below 0, and std::lround is no constant expression.
    const auto rounded
        = [](double value) { return static_cast<std::uint8_t>(static_cast<unsigned>(2 * value + 1) / 2); };
    return {rounded(16 + luma * 219 / 255), rounded(128 + (blue - luma) / bt709::cbDivisor * 224 / 255),
            rounded(128 + (red - luma) / bt709::crDivisor * 224 / 255)};
}

/// The three colours of an EventPalette for videos.
struct YuvPalette
{
    YuvColour background;
    YuvColour off;
    YuvColour on;
};

constexpr YuvPalette yuvPalette(const EventPalette& palette)
{
    return {yuvColour(palette.background), yuvColour(palette.off), yuvColour(palette.on)};
}

/// Views a picture of 8-bit luma, and chroma at half the width and height. Strides are bytes from row to row.
struct YuvPlanes
{
    std::uint8_t* luma = nullptr;
    std::uint8_t* cb = nullptr;
    std::uint8_t* cr = nullptr;
    std::size_t lumaStride = 0;
    std::size_t chromaStride = 0;
};

/// Turns an event plane (see PlaneValue) of `width` x `height` pixels, both even, into a picture. The chroma
/// of a pixel is the mean of the four it stands for, halves rounded up.
void colourPlaneYuv(const std::uint8_t* plane, unsigned width, unsigned height, const YuvPalette& palette,
                    const YuvPlanes& picture);

} // namespace korvane::kernels
