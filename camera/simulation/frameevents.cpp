#include "camera/simulation/frameevents.h"

#include <algorithm>

namespace korvane::simulation {

namespace {

bool isAfter(const Event2D& event, std::uint64_t time, std::uint16_t row, std::uint16_t column)
{
    return event.timestamp == time && event.y == row && event.x > column;
}

} // namespace

void FrameEvents::beginFrame()
{
    for (std::size_t slice = 0; slice < slices; ++slice)
        ends[slice] = packed[slice].data();
    room = packed.front().size();
}

std::size_t FrameEvents::sizeOf(std::size_t slice) const
{
    return static_cast<std::size_t>(ends[slice] - packed[slice].data());
}

void FrameEvents::makeRoom(std::size_t more)
{
    // Most of what was reserved so far was not used.
    std::size_t largest = 0;
    for (std::size_t slice = 0; slice < slices; ++slice)
        largest = std::max(largest, sizeOf(slice));
    room = packed.front().size() - largest;
    if (room >= more)
        return;
    const std::size_t size = std::max<std::size_t>((largest + more) * 2, 4096);
    for (std::size_t slice = 0; slice < slices; ++slice) {
        const std::size_t used = sizeOf(slice);
        packed[slice].resize(size);
        ends[slice] = packed[slice].data() + used;
    }
    room = size - largest;
}

std::span<const Event2D> FrameEvents::inOrder(std::uint64_t start)
{
    std::size_t count = 0;
    for (std::size_t slice = 0; slice < slices; ++slice)
        count += sizeOf(slice);
    if (ordered.size() < count)
        ordered.resize(std::max(count, ordered.size() * 2));
    Event2D* out = ordered.data();
    for (std::size_t slice = 0; slice < slices; ++slice) {
        sortSlice(slice, start, out);
        out += sizeOf(slice);
    }
    return {ordered.data(), count};
}

void FrameEvents::sortSlice(std::size_t slice, std::uint64_t start, Event2D* out)
{
    const std::span<const std::uint64_t> events(packed[slice].data(), sizeOf(slice));
    places.fill(0);
    for (const std::uint64_t event : events)
        ++places[event % sliceUs];
    std::uint32_t next = 0;
    for (std::uint32_t& place : places) {
        const std::uint32_t here = place;
        place = next;
        next += here;
    }
    for (const std::uint64_t event : events) {
        const std::uint64_t time = start + event % (1U << timeBits);
        const auto row = static_cast<std::uint16_t>(event >> rowShift);
        const auto column = static_cast<std::uint16_t>(event >> columnShift);
        std::size_t place = places[event % sliceUs]++;
        // Few events of a row share a microsecond and come from right to left.
        while (place > 0 && isAfter(out[place - 1], time, row, column)) {
            out[place] = out[place - 1];
            --place;
        }
        out[place] = Event2D(column, row, static_cast<std::uint8_t>(event >> timeBits & 1U), time);
    }
}

} // namespace korvane::simulation
