#pragma once

#include <QImage>

#include <cstdint>
#include <vector>

/// The luma of a picture's top left `width` x `height` pixels as a video holds it: BT.709, limited range.
inline std::vector<std::uint8_t> lumaOf(const QImage& image, int width, int height)
{
    std::vector<std::uint8_t> luma;
    luma.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            const double full = 0.2126 * qRed(row[x]) + 0.7152 * qGreen(row[x]) + 0.0722 * qBlue(row[x]);
            luma.push_back(static_cast<std::uint8_t>(16.5 + full * 219 / 255));
        }
    }
    return luma;
}

inline std::vector<std::uint8_t> lumaOf(const QImage& image)
{
    return lumaOf(image, image.width(), image.height());
}
