#include "display/kernels/fusionpainter.h"

#include <cstring>

namespace korvane::kernels {

namespace {

constexpr std::size_t pixelBytes = 3;

void putPixel(std::uint8_t* pixel, bool on)
{
    pixel[0] = on ? 0 : 255;
    pixel[1] = 0;
    pixel[2] = on ? 255 : 0;
}

} // namespace

void countEvents(const Event2D* begin, const Event2D* end, std::span<std::uint16_t> counts, int width)
{
    for (const Event2D* event = begin; event != end; ++event) {
        const std::int64_t pixel = std::int64_t{width} * event->y + (width - event->x);
        const std::int64_t index = event->polarity + 2 * pixel;
        if (index < 0 || index >= static_cast<std::int64_t>(counts.size()))
            continue;
        std::uint16_t& count = counts[static_cast<std::size_t>(index)];
        if (count < maximumCount)
            ++count;
    }
}

void paintCounts(std::span<const std::uint16_t> counts, const BgrPicture& picture)
{
    const auto width = static_cast<std::size_t>(picture.width);
    const std::uint16_t* count = counts.data();
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* const row = picture.pixels + static_cast<std::size_t>(y) * picture.stride;
        for (std::size_t x = 0; x < width; ++x, count += 2) {
            std::uint32_t both;
            std::memcpy(&both, count, sizeof(both));
            if (both != 0)
                putPixel(row + x * pixelBytes, count[1] != 0 && count[1] >= count[0]);
        }
    }
}

void paintMirrored(const Event2D* begin, const Event2D* end, const BgrPicture& picture)
{
    for (const Event2D* event = begin; event != end; ++event) {
        const auto column = static_cast<std::uint16_t>(picture.width - event->x);
        if (column >= picture.width || event->y >= picture.height)
            continue;
        putPixel(picture.pixels + event->y * picture.stride + column * pixelBytes, event->polarity == 1);
    }
}

} // namespace korvane::kernels
