#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

/// The whole part of a number, held at the limits of int; 0 for what is not a number. Any thread.
constexpr int saturateToInt(double value)
{
    constexpr double edge = 9223372036854775808.0; // 2^63: the first value a 64-bit integer cannot hold
    int64_t wide = 0;
    if (value >= edge)
        wide = std::numeric_limits<int64_t>::max();
    else if (value < -edge)
        wide = std::numeric_limits<int64_t>::min();
    else if (value == value)
        wide = static_cast<int64_t>(value);
    constexpr auto lowest = static_cast<int64_t>(std::numeric_limits<int>::min());
    constexpr auto highest = static_cast<int64_t>(std::numeric_limits<int>::max());
    return static_cast<int>(std::clamp(wide, lowest, highest));
}
