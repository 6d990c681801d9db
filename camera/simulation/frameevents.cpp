#include "camera/simulation/frameevents.h"

#include <algorithm>

namespace korvane::simulation {

namespace {

bool isAfter(const Event2D& event, std::uint64_t time, std::size_t row, std::uint16_t column)
{
    return event.timestamp == time && event.y == row && event.x > column;
}

} // namespace

FrameEvents::FrameEvents(int rowCount) : rowStarts(static_cast<std::size_t>(rowCount)), places(longestFrame)
{
}

void FrameEvents::beginFrame()
{
    count = 0;
    begunRows = 0;
}

void FrameEvents::beginRow(int row)
{
    // A row that was left out holds no event: it ends where it begins.
    while (begunRows <= static_cast<std::size_t>(row))
        rowStarts[begunRows++] = count;
}

std::span<const Event2D> FrameEvents::inOrder(std::uint64_t start)
{
    std::fill(places.begin(), places.end(), 0U);
    for (std::size_t i = 0; i < count; ++i)
        ++places[packed[i] >> 12U];
    std::uint32_t next = 0;
    for (std::uint32_t& place : places) {
        const std::uint32_t here = place;
        place = next;
        next += here;
    }
    if (ordered.size() < count)
        ordered.resize(std::max(count, ordered.size() * 2));
    for (std::size_t row = 0; row < begunRows; ++row) {
        const std::size_t end = row + 1 < begunRows ? rowStarts[row + 1] : count;
        for (std::size_t i = rowStarts[row]; i < end; ++i) {
            const std::uint32_t event = packed[i];
            const std::uint32_t time = event >> 12U;
            const auto column = static_cast<std::uint16_t>(event >> 1U & 0x7FFU);
            std::size_t place = places[time]++;
            // Few events of a row share a microsecond and come from right to left.
            while (place > 0 && isAfter(ordered[place - 1], start + time, row, column)) {
                ordered[place] = ordered[place - 1];
                --place;
            }
            ordered[place] = Event2D(column, static_cast<std::uint16_t>(row),
                                     static_cast<std::uint8_t>(event & 1U), start + time);
        }
    }
    return {ordered.data(), count};
}

} // namespace korvane::simulation
