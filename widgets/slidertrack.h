#pragma once

/// The straight track of a one-handle slider: which value brings the handle's middle under a position. Any
/// thread.
struct SliderTrack
{
    int minimum = 0;
    int maximum = 0;
    int handleLength = 0; ///< pixels
    int length = 0; ///< of the widget along its axis, pixels

    /// position: pixels from the widget's begin. Beyond the track's ends the values go on past the bounds;
    /// the minimum when there is no track.
    int valueAt(int position) const;
};
