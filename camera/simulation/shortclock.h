#pragma once

#include "camera/driver/event2d.h"

#include <cstddef>
#include <cstdint>

namespace korvane::simulation {

/// Tells times of a stream in few bits, for what is kept per pixel. A short time counts ticks from a base
/// that moves on with the stream; 0 stands for never, and every time told is later than that by more than the
/// clock's memory, so that "never" needs no case of its own. One thread at a time.
class ShortClock
{
public:
    /// Ages of up to `longestMemory` ticks are told right for ever; short times have `bits` bits. A tick is
    /// 2^unitShift microseconds.
    ShortClock(std::uint32_t longestMemory, unsigned bits, unsigned unitShift = 0)
        : shift(unitShift), memory(longestMemory), span((std::uint64_t{1} << bits) - 1)
    {
    }

    /// How many of the events, from the first one, the present base can tell; 0 when the base must move.
    std::size_t reach(const Event2D* events, std::size_t count) const;
    /// Moves the base so that events from this time on can be told. Returns by how much every short time kept
    /// must be moved down, see moved().
    std::uint64_t moveTo(std::uint64_t timestamp);
    /// A kept short time after the base has moved; what has got older than the memory becomes never.
    static std::uint32_t moved(std::uint32_t kept, std::uint64_t by)
    {
        return kept > by ? static_cast<std::uint32_t>(kept - by) : 0;
    }

    /// Of an event within reach.
    std::uint32_t shortTime(std::uint64_t timestamp) const
    {
        return static_cast<std::uint32_t>((timestamp >> shift) - base);
    }

private:
    unsigned shift;
    std::uint32_t memory;
    std::uint64_t span;
    std::uint64_t base = 0; // ticks
    bool begun = false; // before the first move nothing is within reach
};

/// Filters events in stretches that a clock can tell: `move` gets the time of the first event that it cannot,
/// `run` a stretch, its length and where what it keeps goes, and returns how many it kept.
template <typename Move, typename Run>
std::size_t filterInReach(const ShortClock& clock, Event2D* events, std::size_t count, Move move, Run run)
{
    std::size_t kept = 0;
    for (std::size_t done = 0; done < count;) {
        const std::size_t reach = clock.reach(events + done, count - done);
        if (reach == 0)
            move(events[done].timestamp);
        else
            kept += run(events + done, reach, events + kept);
        done += reach;
    }
    return kept;
}

} // namespace korvane::simulation
