#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

/// Maps the times of a recording to the timeline, which counts in `int`: exact up to 2^31 - 1 us, above it
/// divided by the smallest power of two that makes the end fit. Both ends come back exactly. A value; copy it
/// freely.
class TimelineScale
{
public:
    TimelineScale() = default;
    /// Times in microseconds, start <= end.
    TimelineScale(std::uint64_t startTime, std::uint64_t endTime) : start(startTime), end(endTime)
    {
        while ((end >> shift) > std::uint64_t(std::numeric_limits<int>::max()))
            ++shift;
    }

    int toTimeline(std::uint64_t time) const
    {
        return static_cast<int>(std::min<std::uint64_t>(time >> shift, std::numeric_limits<int>::max()));
    }

    std::uint64_t fromTimeline(int value) const
    {
        if (shift == 0)
            return static_cast<std::uint64_t>(std::max(value, 0));
        if (value <= toTimeline(start))
            return start;
        if (value >= toTimeline(end))
            return end;
        return std::clamp(static_cast<std::uint64_t>(value) << shift, start, end);
    }

private:
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    int shift = 0;
};
