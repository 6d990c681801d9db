#pragma once

#include "camera/driver/event2d.h"

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
    /// Times within a frame take 14 bits, columns 11.
    static constexpr std::uint32_t longestFrame = 16384;
    static constexpr int widestRow = 2048;

    explicit FrameEvents(int rowCount);

    void beginFrame();
    /// Rows begin in ascending order.
    void beginRow(int row);
    /// Makes room for so many more events; none is added without room.
    void reserve(std::size_t more)
    {
        if (packed.size() - count < more)
            packed.resize((count + more) * 2);
    }
    /// `time` in microseconds from the start of the frame, below longestFrame.
    void add(std::uint32_t time, std::uint32_t column, std::uint32_t polarity)
    {
        packed[count++] = time << 12U | column << 1U | polarity;
    }
    /// The frame's events with `start` added to their times; valid until the next call.
    std::span<const Event2D> inOrder(std::uint64_t start);

private:
    std::vector<std::uint32_t> packed;
    std::size_t count = 0;
    std::vector<std::size_t> rowStarts;
    std::size_t begunRows = 0;
    std::vector<std::uint32_t> places; // per microsecond: where its next event goes
    std::vector<Event2D> ordered;
};

} // namespace korvane::simulation
