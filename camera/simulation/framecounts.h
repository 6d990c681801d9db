#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/fusioncamera.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace korvane::simulation {

/// Counts a fusion camera's events per pixel for each of its intensity frames: those after the frame before
/// up to and including the frame's own time. Columns are mirrored, for the event sensor sees the scene so: x
/// counts at column 1280 - x, x = 0 nowhere. Any thread.
class FrameCounts
{
public:
    /// Frames that counts are kept for, so that one may be asked for late or twice.
    static constexpr std::size_t framesKept = 8;
    /// Time from a frame's slot to the next, microseconds: slot k ends with time k x period.
    static constexpr std::uint64_t period = 33333;

    /// Events in time order.
    void count(std::span<const Event2D> events);
    /// A frame of this time, a multiple of `period`, is made of what was counted since the frame before. All
    /// events up to it have been counted.
    void closeFrame(std::uint64_t time);
    /// The frame closed last was not made after all: its events belong to the next one.
    void reopenLast();
    /// The counts of the frame whose slot this time, its own, lies in. False when there is no such frame any
    /// more.
    bool get(std::shared_ptr<EventCountFrame>& out, std::uint64_t time) const;
    /// Forgets everything: the stream begins anew.
    void clear();

private:
    struct Slot
    {
        std::uint64_t end = 0; ///< microseconds
        std::shared_ptr<EventCountFrame> counts;
    };
    std::shared_ptr<EventCountFrame> emptyCounts();
    Slot& slotFor(std::uint64_t time);

    mutable std::mutex mutex;
    std::deque<Slot> open; ///< under mutex: counted for frames that have not come
    std::deque<Slot> closed; ///< under mutex: of frames
    std::vector<std::shared_ptr<EventCountFrame>> spare; ///< under mutex: used again once nobody holds them
};

} // namespace korvane::simulation
