#include "display/kernels/apsalignment.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace korvane::kernels {

namespace {

static_assert(std::bit_cast<std::uint32_t>(ApsAlignment::scale) == 0x405682A6U);

constexpr std::size_t pixelBytes = 3;
constexpr std::size_t cacheLine = 64; // bytes
constexpr std::size_t fetchedAtOnce = 32; // pixels

/// Source positions of a line of `count` pixels about the middle of a source line. This file is compiled
/// without fused multiply-add, which would round differently.
std::vector<int> positions(int count, int sourceCentre)
{
    std::vector<int> result(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const float offset = static_cast<float>(i - count / 2) * ApsAlignment::scale;
        result[static_cast<std::size_t>(i)] = static_cast<int>(static_cast<float>(sourceCentre) + offset);
    }
    return result;
}

void fillWhite(std::uint8_t* pixels, std::size_t count)
{
    std::memset(pixels, 0xFF, count * pixelBytes);
}

} // namespace

ApsAlignment::ApsAlignment(int sourceWidth, int sourceHeight, int destinationWidth, int destinationHeight)
    : columns(positions(destinationWidth, sourceWidth / 2)),
      rows(positions(destinationHeight, sourceHeight / 2))
{
}

void ApsAlignment::align(const BgrView& source, std::uint8_t* destination,
                         std::size_t destinationStride) const
{
    // The positions rise: those inside the source are one run.
    const auto first = std::partition_point(columns.begin(), columns.end(), [](int x) { return x < 0; });
    const auto last
        = std::partition_point(first, columns.end(), [&source](int x) { return x < source.width; });
    const auto left = static_cast<std::size_t>(first - columns.begin());
    const auto inside = static_cast<std::size_t>(last - first);
    const int* const sampled = columns.data() + left;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const int sourceRow = rows[row];
        std::uint8_t* out = destination;
        destination += destinationStride;
        if (sourceRow < 0 || sourceRow >= source.height) {
            fillWhite(out, columns.size());
            continue;
        }
        fillWhite(out, left);
        out += left * pixelBytes;
        const std::uint8_t* const line = source.pixels + static_cast<std::size_t>(sourceRow) * source.stride;
        // The next row lies far away and is not in a cache: it is fetched while this one is sampled.
        const bool hasNext = row + 1 < rows.size() && rows[row + 1] < source.height;
        const std::uint8_t* const nextLine
            = source.pixels + static_cast<std::size_t>(hasNext ? rows[row + 1] : sourceRow) * source.stride;
        // Four bytes at a time, the fourth overwritten by the next pixel; the last one goes alone.
        std::size_t i = 0;
        while (i + 1 < inside) {
            const std::uint8_t* const ahead = nextLine + static_cast<std::size_t>(sampled[i]) * pixelBytes;
            const std::size_t end = std::min(i + fetchedAtOnce, inside - 1);
            const std::uint8_t* const aheadEnd
                = nextLine + static_cast<std::size_t>(sampled[end]) * pixelBytes;
            for (const std::uint8_t* place = ahead; place < aheadEnd; place += cacheLine)
                __builtin_prefetch(place);
            for (; i < end; ++i) {
                std::uint32_t pixel;
                std::memcpy(&pixel, line + static_cast<std::size_t>(sampled[i]) * pixelBytes, sizeof(pixel));
                std::memcpy(out + i * pixelBytes, &pixel, sizeof(pixel));
            }
        }
        if (i < inside)
            std::memcpy(out + i * pixelBytes, line + static_cast<std::size_t>(sampled[i]) * pixelBytes,
                        pixelBytes);
        fillWhite(out + inside * pixelBytes, columns.size() - left - inside);
    }
}

} // namespace korvane::kernels
