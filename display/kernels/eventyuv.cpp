#include "display/kernels/eventyuv.h"

#include "display/kernels/eventpainter.h"
#include "display/kernels/multiversion.h"

#include <cstring>

namespace korvane::kernels {

namespace {

/// The two pixels of a row that share a chroma pixel, one a byte.
inline std::uint16_t pairAt(const std::uint8_t* row, std::size_t pair)
{
    std::uint16_t pixels = 0;
    std::memcpy(&pixels, row + 2 * pair, sizeof pixels);
    return pixels;
}

} // namespace

KORVANE_CLONES
void colourPlaneYuv(const std::uint8_t* plane, unsigned width, unsigned height, const YuvPalette& palette,
                    const YuvPlanes& picture)
{
    static_assert(PlaneBackground == 0 && PlaneOff == 1 && PlaneOn == 2, "pixels are counted by their bits");
    const std::uint8_t background = palette.background.luma;
    const std::uint8_t off = palette.off.luma;
    const std::uint8_t on = palette.on.luma;
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* const row = plane + y * width;
        std::uint8_t* const luma = picture.luma + y * picture.lumaStride;
        for (std::size_t x = 0; x < width; ++x)
            luma[x] = row[x] == PlaneBackground ? background : (row[x] == PlaneOff ? off : on);
    }

    // Unsigned 16-bit sums may wrap on the way and are right in the end.
    const auto step = [](unsigned from, unsigned to) { return static_cast<std::uint16_t>(to - from); };
    const auto fourfold = [](unsigned value) { return static_cast<std::uint16_t>(4 * value + 2); };
    const std::uint16_t cbBase = fourfold(palette.background.cb);
    const std::uint16_t crBase = fourfold(palette.background.cr);
    const std::uint16_t cbOff = step(palette.background.cb, palette.off.cb);
    const std::uint16_t crOff = step(palette.background.cr, palette.off.cr);
    const std::uint16_t cbOn = step(palette.background.cb, palette.on.cb);
    const std::uint16_t crOn = step(palette.background.cr, palette.on.cr);
    constexpr std::uint16_t lowBits = 0x0101;
    for (std::size_t y = 0; y < height / 2; ++y) {
        const std::uint8_t* const upper = plane + 2 * y * width;
        const std::uint8_t* const lower = upper + width;
        std::uint8_t* const cb = picture.cb + y * picture.chromaStride;
        std::uint8_t* const cr = picture.cr + y * picture.chromaStride;
        for (std::size_t x = 0; x < width / 2; ++x) {
            const std::uint16_t above = pairAt(upper, x);
            const std::uint16_t below = pairAt(lower, x);
            const auto offs = static_cast<std::uint16_t>((above & lowBits) + (below & lowBits));
            const auto ons = static_cast<std::uint16_t>(((above >> 1) & lowBits) + ((below >> 1) & lowBits));
            const auto offCount = static_cast<std::uint16_t>((offs & 0xFF) + (offs >> 8));
            const auto onCount = static_cast<std::uint16_t>((ons & 0xFF) + (ons >> 8));
            const auto cbSum = static_cast<std::uint16_t>(cbBase + offCount * cbOff + onCount * cbOn);
            const auto crSum = static_cast<std::uint16_t>(crBase + offCount * crOff + onCount * crOn);
            cb[x] = static_cast<std::uint8_t>(cbSum >> 2);
            cr[x] = static_cast<std::uint8_t>(crSum >> 2);
        }
    }
}

} // namespace korvane::kernels
