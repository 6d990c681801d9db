#pragma once

#include "display/kernels/apsalignment.h"
#include "display/kernels/eventyuv.h"

namespace korvane::kernels {

/// Turns an image into a picture as videos hold it, BT.709 in limited range (see YuvColour). Both sides are
/// even numbers of pixels. The chroma of a pixel is that of the mean of the four it stands for. Every value
/// is within 0.53 of the exact one.
void bgrToYuv(const BgrView& image, const YuvPlanes& picture);

} // namespace korvane::kernels
