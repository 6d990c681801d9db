#pragma once

#include "camera/driver/apsframe.h"

#include <cstdint>

namespace korvane::simulation {

/// Where a camera's intensity frames come from. One thread at a time.
class FrameSource
{
public:
    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;

    /// The frame of the slot that ends at `time`, microseconds of the stream's life, a multiple of
    /// FrameCounts::period and later than the one before. Its own time lies in the slot. Valid until the next
    /// call; without pixels when there is none.
    virtual ApsFrame frameAt(std::uint64_t time) = 0;
};

} // namespace korvane::simulation
