#pragma once

#include <cstdint>

namespace korvane {

/// One change event of a dynamic vision sensor.
struct Event2D
{
    std::uint16_t x = 0; ///< column, 0 <= x < sensor width
    std::uint16_t y = 0; ///< row from the top, 0 <= y < sensor height
    std::uint8_t polarity = 0; ///< 1: brighter (ON), 0: darker (OFF)
    std::uint64_t timestamp = 0; ///< microseconds on the camera's clock

    Event2D() = default;
    Event2D(std::uint16_t column, std::uint16_t row, std::uint8_t direction, std::uint64_t microseconds)
        : x(column), y(row), polarity(direction), timestamp(microseconds)
    {
    }

    friend bool operator==(const Event2D&, const Event2D&) = default;
};

} // namespace korvane
