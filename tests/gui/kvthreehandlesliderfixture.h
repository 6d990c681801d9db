#pragma once

#include "widgets/kvthreehandleslider.h"

#include <memory>

constexpr int sliderLength = 412; ///< side track 400: with a range of 400 a pixel is a value

/// A slider of 0 to 400 in which a click at position p asks for value p - 13.
inline std::unique_ptr<KvThreeHandleSlider> sliderOf(int mode, int lower = 0, int center = 0, int upper = 400)
{
    auto slider = std::make_unique<KvThreeHandleSlider>(nullptr, 1, mode);
    slider->resize(sliderLength, 30);
    slider->setMaximum(400);
    slider->setMinimum(0);
    slider->setCenterValue(center);
    slider->setLowerValue(lower);
    slider->setUpperValue(upper);
    slider->setCenterValue(center);
    return slider;
}
