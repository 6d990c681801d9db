#include "display/kernels/bgryuv.h"

#include "display/kernels/multiversion.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace korvane::kernels {

namespace {

/// Pixels that are worked on at a time: their parts stay in the fastest cache.
constexpr std::size_t piece = 512;

/// A coefficient for mulHigh(): what 256 times a byte is multiplied with, so that 128 times the product comes
/// out. Sixteen bits a lane are enough then.
constexpr std::uint16_t scaled(double factor)
{
    return static_cast<std::uint16_t>(factor * 32768 + 0.5);
}

constexpr double lumaRange = 219.0 / 255;
constexpr double cbRange = 224.0 / 255 / bt709::cbDivisor;
constexpr double crRange = 224.0 / 255 / bt709::crDivisor;

constexpr std::uint16_t lumaRed = scaled(bt709::red * lumaRange);
constexpr std::uint16_t lumaGreen = scaled(bt709::green * lumaRange);
constexpr std::uint16_t lumaBlue = scaled(bt709::blue * lumaRange);
constexpr std::uint16_t cbRed = scaled(bt709::red * cbRange);
constexpr std::uint16_t cbGreen = scaled(bt709::green * cbRange);
constexpr std::uint16_t cbBlue = scaled((1 - bt709::blue) * cbRange);
constexpr std::uint16_t crRed = scaled((1 - bt709::red) * crRange);
constexpr std::uint16_t crGreen = scaled(bt709::green * crRange);
constexpr std::uint16_t crBlue = scaled(bt709::blue * crRange);

// The offset, half a unit to round, and half of what mulHigh() cuts off on the average of its terms.
constexpr std::uint16_t lumaBase = 16 * 128 + 64 + 1;
constexpr std::uint16_t chromaBase = 128 * 128 + 64;

inline std::uint16_t mulHigh(std::uint16_t value, std::uint16_t factor)
{
    return static_cast<std::uint16_t>(std::uint32_t{value} * factor >> 16U);
}

/// The channels of a piece of a row.
struct Channels
{
    std::array<std::uint8_t, piece> blue;
    std::array<std::uint8_t, piece> green;
    std::array<std::uint8_t, piece> red;
};

inline __attribute__((always_inline)) void split(const std::uint8_t* pixels, std::size_t count,
                                                 Channels& channels)
{
    for (std::size_t i = 0; i < count; ++i) {
        channels.blue[i] = pixels[3 * i];
        channels.green[i] = pixels[3 * i + 1];
        channels.red[i] = pixels[3 * i + 2];
    }
}

inline __attribute__((always_inline)) void writeLuma(const Channels& channels, std::size_t count,
                                                     std::uint8_t* luma)
{
    const auto high = [](std::uint8_t value) { return static_cast<std::uint16_t>(value << 8U); };
    for (std::size_t i = 0; i < count; ++i) {
        const auto sum = static_cast<std::uint16_t>(lumaBase + mulHigh(high(channels.red[i]), lumaRed)
                                                    + mulHigh(high(channels.green[i]), lumaGreen)
                                                    + mulHigh(high(channels.blue[i]), lumaBlue));
        luma[i] = static_cast<std::uint8_t>(sum >> 7U);
    }
}

/// 64 times the sum of the four pixels that a chroma pixel stands for.
inline __attribute__((always_inline)) std::uint16_t fourOf(const std::array<std::uint8_t, piece>& upper,
                                                           const std::array<std::uint8_t, piece>& lower,
                                                           std::size_t pair)
{
    std::uint16_t above = 0;
    std::uint16_t below = 0;
    std::memcpy(&above, upper.data() + 2 * pair, sizeof above);
    std::memcpy(&below, lower.data() + 2 * pair, sizeof below);
    const unsigned sum = (above & 0xFFU) + (above >> 8U) + (below & 0xFFU) + (below >> 8U);
    return static_cast<std::uint16_t>(sum << 6U);
}

inline __attribute__((always_inline)) void writeChroma(const Channels& upper, const Channels& lower,
                                                       std::size_t pairs, std::uint8_t* cb, std::uint8_t* cr)
{
    for (std::size_t i = 0; i < pairs; ++i) {
        const std::uint16_t blue = fourOf(upper.blue, lower.blue, i);
        const std::uint16_t green = fourOf(upper.green, lower.green, i);
        const std::uint16_t red = fourOf(upper.red, lower.red, i);
        const auto cbSum = static_cast<std::uint16_t>(chromaBase + mulHigh(blue, cbBlue)
                                                      - mulHigh(green, cbGreen) - mulHigh(red, cbRed));
        const auto crSum = static_cast<std::uint16_t>(chromaBase + mulHigh(red, crRed)
                                                      - mulHigh(green, crGreen) - mulHigh(blue, crBlue));
        cb[i] = static_cast<std::uint8_t>(cbSum >> 7U);
        cr[i] = static_cast<std::uint8_t>(crSum >> 7U);
    }
}

} // namespace

KORVANE_CLONES
void bgrToYuv(const BgrView& image, const YuvPlanes& picture)
{
    const auto width = static_cast<std::size_t>(image.width);
    Channels upper;
    Channels lower;
    for (std::size_t y = 0; y < static_cast<std::size_t>(image.height); y += 2) {
        const std::uint8_t* const row = image.pixels + y * image.stride;
        std::uint8_t* const luma = picture.luma + y * picture.lumaStride;
        const std::size_t chroma = y / 2 * picture.chromaStride;
        for (std::size_t x = 0; x < width; x += piece) {
            const std::size_t count = width - x < piece ? width - x : piece;
            split(row + 3 * x, count, upper);
            split(row + image.stride + 3 * x, count, lower);
            writeLuma(upper, count, luma + x);
            writeLuma(lower, count, luma + picture.lumaStride + x);
            writeChroma(upper, lower, count / 2, picture.cb + chroma + x / 2, picture.cr + chroma + x / 2);
        }
    }
}

} // namespace korvane::kernels
