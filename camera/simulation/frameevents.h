#pragma once

#include "camera/driver/event2d.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace korvane::simulation {

/// Collects the events of one frame row by row, in any order within a row, and puts them into the order of a
/// sensor's read-out: by time, then by row, then by column. The work is linear in the events, as long as
/// those of a row come about from left to right; memory is kept from frame to frame. One thread at a time.
class FrameEvents
{
public:
    static constexpr std::uint32_t longestFrame = 16384; ///< microseconds

    void beginFrame();
    /// Rows begin in ascending order.
    void beginRow(int row) { rowBits = static_cast<std::uint64_t>(row) << rowShift; }
    /// Makes room for so many more events; none is added without room.
    void reserve(std::size_t more)
    {
        if (room < more)
            makeRoom(more);
        room -= more;
    }
    /// `time` in microseconds from the start of the frame, below longestFrame.
    void add(std::uint32_t time, std::uint32_t column, std::uint32_t polarity)
    {
        *ends[time / sliceUs]++ = rowBits | column << columnShift | polarity << timeBits | time;
    }
    /// The frame's events with `start` added to their times; valid until the next call.
    std::span<const Event2D> inOrder(std::uint64_t start);

private:
    // Sorting slice by slice keeps what is written at random within a fast cache.
    static constexpr std::uint32_t sliceUs = 1024;
    static constexpr std::size_t slices = longestFrame / sliceUs;
    static constexpr int timeBits = 15;
    static constexpr int columnShift = 16;
    static constexpr int rowShift = 32;

    std::size_t sizeOf(std::size_t slice) const;
    void makeRoom(std::size_t more);
    void sortSlice(std::size_t slice, std::uint64_t start, Event2D* out);

    std::array<std::vector<std::uint64_t>, slices> packed; // all of one size
    std::array<std::uint64_t*, slices> ends{};
    std::size_t room = 0; // that every slice has at least
    std::uint64_t rowBits = 0;
    std::array<std::uint32_t, sliceUs> places{}; // per microsecond: where its next event goes
    std::vector<Event2D> ordered;
};

} // namespace korvane::simulation
