#pragma once

#include "camera/driver/event2d.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace movingbar {

/// Cuts a stream into spans of equal length and keeps the newest whole one. Any thread.
class SpanBuffer
{
public:
    /// Microseconds; 0 is ignored.
    void setLength(std::uint64_t microseconds);
    /// Forgets everything; the first span starts at `time`.
    void restart(std::uint64_t time);
    /// Adds events in time order; none of those to come will be earlier than `reached`.
    void add(const std::vector<korvane::Event2D>& events, std::uint64_t reached);
    /// Swaps the newest whole span into `out`; false when there is none since the last call.
    bool take(std::vector<korvane::Event2D>& out);

private:
    void closeSpansBefore(std::uint64_t time);

    std::mutex mutex;
    std::uint64_t length = 33333; ///< microseconds
    std::uint64_t start = 0; ///< of the span being filled
    std::vector<korvane::Event2D> filling;
    std::vector<korvane::Event2D> whole;
    bool complete = false;
};

} // namespace movingbar
