#include "widgets/slidertrack.h"

#include "widgets/saturate.h"

int SliderTrack::valueAt(int position) const
{
    const int track = length - handleLength;
    if (track <= 0)
        return minimum;
    const double range = static_cast<double>(maximum) - minimum;
    return saturateToInt(minimum + range * (position - handleLength * 0.5) / track);
}
