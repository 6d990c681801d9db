#pragma once

#include <QRect>

#include <cstdint>

/// Sizes of a three-handle slider's parts, in pixels.
struct ThreeHandleMetrics
{
    int grooveThickness = 10;
    int rangeCornerRadius = 5;
    int sideHandleWidth = 6;
    int sideHandleHeight = 27;
    int sideHandleCornerRadius = 3;
    int centerHandleWidth = 20;
    int centerHandleHeight = 20;
    int centerHandleCornerRadius = 10;
    int centerOutlineWidth = 3; ///< also the centre handle's inset when it is the only handle
    int centerTrackMargin = 26;
};

/// Maps the values of a three-handle slider to pixels and pixels to values, apart from any window.
///
/// Bounds are unsigned 64-bit, so a value below the minimum lies far beyond every position. Positions
/// saturate far outside any screen, values at the limits of int. Any thread: plain data.
struct ThreeHandleGeometry
{
    static constexpr int centerBit = 1;
    static constexpr int sidesBit = 2;
    static constexpr int allHandles = centerBit | sidesBit;

    ThreeHandleMetrics metrics;
    uint64_t minimum = 0;
    int span = 0; ///< maximum - minimum
    int lower = 0;
    int upper = 0;
    int center = 0;
    int mode = centerBit;
    bool horizontal = true;
    int length = 0; ///< the widget's size along the axis, pixels
    int breadth = 0; ///< the widget's size across the axis, pixels

    /// Where a value lies between minimum (0) and maximum (1); 0 when the range is empty.
    float fraction(int value) const;

    /// Positions of the handles' near edges along the axis, pixels.
    int lowerPosition() const;
    int upperPosition() const;
    int centerPosition() const;

    /// Rectangles in the widget's coordinates.
    QRect groove() const;
    QRect lowerHandle() const;
    QRect upperHandle() const;
    QRect centerHandle() const;
    /// The part of the groove that is filled: between the side handles when they are shown, else all of it.
    QRect range() const;

    /// The value under a position along the axis. The minimum when there is no track.
    int valueAt(int position) const;

    /// Pixels that the range spans for a handle mode.
    int trackLength(int handleMode) const;

    /// The value of a side handle that is dragged to a position; grip is where it was taken, from its middle.
    int lowerValueAt(int position, int grip) const;
    int upperValueAt(int position, int grip) const;

private:
    int sideTrack() const;
    int sideValueAt(int pixels) const;
    QRect across(int position, int width, int height) const;
};
