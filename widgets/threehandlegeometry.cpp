#include "widgets/threehandlegeometry.h"

#include "widgets/saturate.h"

#include <algorithm>
#include <limits>

namespace {

/// Far outside any screen, and near enough that adding handle sizes cannot overflow.
constexpr int farAway = 1 << 30;

int toPixel(float position)
{
    return std::clamp(saturateToInt(static_cast<double>(position)), -farAway, farAway);
}

} // namespace

float ThreeHandleGeometry::fraction(int value) const
{
    if (span == 0)
        return 0.0F;
    const uint64_t distance = static_cast<uint64_t>(static_cast<int64_t>(value)) - minimum;
    return static_cast<float>(static_cast<double>(distance) / span);
}

int ThreeHandleGeometry::sideTrack() const
{
    return length - 2 * metrics.sideHandleWidth;
}

int ThreeHandleGeometry::lowerPosition() const
{
    const int track = mode == allHandles ? sideTrack() - metrics.centerHandleWidth : sideTrack();
    return toPixel(static_cast<float>(track) * fraction(lower));
}

int ThreeHandleGeometry::upperPosition() const
{
    const auto side = static_cast<float>(metrics.sideHandleWidth);
    if (mode != allHandles)
        return toPixel(static_cast<float>(sideTrack()) * fraction(upper) + side);
    const auto middle = static_cast<float>(metrics.centerHandleWidth);
    return toPixel(static_cast<float>(sideTrack() - metrics.centerHandleWidth) * fraction(upper) + middle
                   + side);
}

int ThreeHandleGeometry::centerPosition() const
{
    if (mode == allHandles) {
        const int track = sideTrack() - metrics.centerHandleWidth;
        return toPixel(static_cast<float>(track) * fraction(center)
                       + static_cast<float>(metrics.sideHandleWidth));
    }
    const int track = length - metrics.centerTrackMargin;
    return toPixel(static_cast<float>(track) * fraction(center)
                   + static_cast<float>(metrics.centerOutlineWidth));
}

QRect ThreeHandleGeometry::across(int position, int width, int height) const
{
    const int offset = (breadth - height) / 2;
    return horizontal ? QRect(position, offset, width, height) : QRect(offset, position, height, width);
}

QRect ThreeHandleGeometry::groove() const
{
    return across(0, length, metrics.grooveThickness);
}

QRect ThreeHandleGeometry::lowerHandle() const
{
    return across(lowerPosition(), metrics.sideHandleWidth, metrics.sideHandleHeight);
}

QRect ThreeHandleGeometry::upperHandle() const
{
    return across(upperPosition(), metrics.sideHandleWidth, metrics.sideHandleHeight);
}

QRect ThreeHandleGeometry::centerHandle() const
{
    return across(centerPosition(), metrics.centerHandleWidth, metrics.centerHandleHeight);
}

QRect ThreeHandleGeometry::range() const
{
    if (mode != allHandles)
        return groove();
    const int begin = lowerPosition() + metrics.sideHandleWidth;
    return across(begin, upperPosition() - begin, metrics.grooveThickness);
}

int ThreeHandleGeometry::valueAt(int position) const
{
    if ((mode & centerBit) != 0)
        position -= metrics.centerTrackMargin / 2;
    if (sideTrack() <= 0)
        return static_cast<int>(minimum);
    const double part = static_cast<double>(position) / sideTrack();
    return saturateToInt(static_cast<double>(minimum) + part * span);
}

int ThreeHandleGeometry::trackLength(int handleMode) const
{
    if (handleMode == centerBit)
        return length - metrics.centerTrackMargin;
    if ((handleMode & allHandles) == allHandles)
        return sideTrack();
    return length - metrics.sideHandleWidth;
}

int ThreeHandleGeometry::sideValueAt(int pixels) const
{
    const int track = trackLength(allHandles);
    if (track <= 0)
        return static_cast<int>(minimum);
    return saturateToInt(static_cast<double>(minimum) + static_cast<double>(span) * pixels / track);
}

int ThreeHandleGeometry::lowerValueAt(int position, int grip) const
{
    const int value = sideValueAt(position - metrics.sideHandleWidth / 2 - grip);
    // A drag a pixel past the left end gives a value below the minimum. Bounds are compared unsigned: below 0
    // it would count as larger than any, and the start handle would jump to the end.
    const bool representable = minimum <= static_cast<uint64_t>(std::numeric_limits<int>::max());
    return representable ? std::max(value, static_cast<int>(minimum)) : value;
}

int ThreeHandleGeometry::upperValueAt(int position, int grip) const
{
    return sideValueAt(position - metrics.sideHandleWidth / 2 - grip - metrics.sideHandleWidth);
}
