#pragma once

#include <cstdint>

namespace korvane {

/// One intensity frame of an active pixel sensor. It views pixels that its source owns: a frame handed to a
/// callback is valid during the call, a frame from a reader until the reader's next call.
struct ApsFrame
{
    /// 8-bit blue, green, red per pixel, row after row, each row starting on a multiple of 4 bytes.
    const std::uint8_t* pixels = nullptr;
    std::uint16_t width = 0; ///< pixels
    std::uint16_t height = 0; ///< pixels
    std::uint64_t timestamp = 0; ///< microseconds on the clock of the events
};

} // namespace korvane
