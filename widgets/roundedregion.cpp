#include "widgets/roundedregion.h"

#include <algorithm>
#include <cmath>

QRegion roundedRegion(QSize size, int radius)
{
    const int rounded = std::min({radius, size.width() / 2, size.height() / 2});
    QRegion region(0, rounded, size.width(), size.height() - 2 * rounded);
    for (int row = 0; row < rounded; ++row) {
        const double up = rounded - row - 0.5;
        const int cut = rounded - static_cast<int>(std::lround(std::sqrt(rounded * rounded - up * up)));
        region += QRect(cut, row, size.width() - 2 * cut, 1);
        region += QRect(cut, size.height() - 1 - row, size.width() - 2 * cut, 1);
    }
    return region;
}
