#pragma once

#include <QImage>

#include <algorithm>
#include <cstdlib>

/// Share (0..1) of the pixels for which `differs(first, second)` holds.
template <typename Differs>
double differingPart(const QImage& first, const QImage& second, Differs differs)
{
    int count = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            if (differs(first.pixel(x, y), second.pixel(x, y)))
                ++count;
        }
    }
    return double(count) / (double(first.width()) * first.height());
}

inline bool differsVisibly(QRgb first, QRgb second)
{
    const QRgb a = qPremultiply(first);
    const QRgb b = qPremultiply(second);
    const int largest = std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                  std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
    return largest >= 32;
}

/// Lightness alone, which every kind of colour blindness leaves.
inline bool differsInLightness(QRgb first, QRgb second)
{
    return std::abs(qGray(first) - qGray(second)) >= 12;
}

/// An image of `size` pixels without anything on it.
inline QImage clearImage(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}
