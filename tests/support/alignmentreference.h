#pragma once

#include "display/kernels/apsalignment.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

/// The rule pixel by pixel, every operation rounded by itself.
inline std::vector<std::uint8_t> alignedByRule(const korvane::kernels::BgrView& source, int sourceWidth,
                                               int sourceHeight, int width, int height, std::size_t stride)
{
    std::vector<std::uint8_t> result(stride * std::size_t(height), 0xAB);
    const float k = std::bit_cast<float>(0x405682A6U);
    for (int r = 0; r < height; ++r) {
        for (int c = 0; c < width; ++c) {
            volatile float down = static_cast<float>(r - height / 2) * k;
            volatile float y = static_cast<float>(sourceHeight / 2) + down;
            volatile float across = static_cast<float>(c - width / 2) * k;
            volatile float x = across + static_cast<float>(sourceWidth / 2);
            const int sy = static_cast<int>(y);
            const int sx = static_cast<int>(x);
            const bool inside = sy >= 0 && sy < source.height && sx >= 0 && sx < source.width;
            for (std::size_t channel = 0; channel < 3; ++channel)
                result[std::size_t(r) * stride + std::size_t(c) * 3 + channel] = inside
                    ? source.pixels[std::size_t(sy) * source.stride + std::size_t(sx) * 3 + channel]
                    : std::uint8_t{255};
        }
    }
    return result;
}
