#pragma once

#include "display/kernels/eventyuv.h"

#include <memory>

struct AVFrame;

namespace korvane::recording {

/// A picture in memory that videos are made of: 8-bit luma, chroma at half the width and height. Made once
/// and used again. One thread at a time.
class VideoPicture
{
public:
    /// A picture of this size, pixels; nothing when memory is short.
    static std::unique_ptr<VideoPicture> create(int width, int height);
    ~VideoPicture();
    VideoPicture(const VideoPicture&) = delete;
    VideoPicture& operator=(const VideoPicture&) = delete;

    /// The planes to draw a new picture on; what they held is lost. Null pointers when memory is short. Valid
    /// until the picture is written.
    kernels::YuvPlanes draw();
    AVFrame& frame() { return *held; }

private:
    explicit VideoPicture(AVFrame* frame) : held(frame) {}

    AVFrame* held;
};

} // namespace korvane::recording
