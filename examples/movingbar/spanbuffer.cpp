#include "examples/movingbar/spanbuffer.h"

namespace movingbar {

namespace {

// A span of an hour must not take an hour's memory.
constexpr std::size_t maximumEvents = std::size_t(4) * 1024 * 1024;

} // namespace

void SpanBuffer::setLength(std::uint64_t microseconds)
{
    const std::lock_guard lock(mutex);
    if (microseconds == 0 || microseconds == length)
        return;
    length = microseconds;
    complete = false;
}

void SpanBuffer::restart(std::uint64_t time)
{
    const std::lock_guard lock(mutex);
    filling.clear();
    complete = false;
    start = time;
}

void SpanBuffer::add(const std::vector<korvane::Event2D>& events, std::uint64_t reached)
{
    const std::lock_guard lock(mutex);
    for (const korvane::Event2D& event : events) {
        closeSpansBefore(event.timestamp);
        if (filling.size() < maximumEvents)
            filling.push_back(event);
    }
    closeSpansBefore(reached);
}

bool SpanBuffer::take(std::vector<korvane::Event2D>& out)
{
    const std::lock_guard lock(mutex);
    if (!complete)
        return false;
    complete = false;
    out.swap(whole);
    return true;
}

void SpanBuffer::closeSpansBefore(std::uint64_t time)
{
    if (time < start + length)
        return;
    const std::uint64_t spans = (time - start) / length;
    whole.swap(filling);
    filling.clear();
    // One that was made shorter while it was filled may hold what lies behind its end.
    const std::uint64_t end = start + length;
    std::erase_if(whole, [end](const korvane::Event2D& event) { return event.timestamp >= end; });
    // Of several spans the newest counts, and nothing happened in it.
    if (spans > 1)
        whole.clear();
    complete = true;
    start += spans * length;
}

} // namespace movingbar
