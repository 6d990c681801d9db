#include "camera/simulation/spanassembler.h"

#include <algorithm>

namespace korvane::simulation {

namespace {

constexpr std::uint64_t defaultSpan = 33333;

std::span<const Event2D> between(std::span<const Event2D> events, std::uint64_t from, std::uint64_t to)
{
    const auto before = [](const Event2D& event, std::uint64_t time) { return event.timestamp < time; };
    const auto first = std::lower_bound(events.begin(), events.end(), from, before);
    const auto end = std::lower_bound(first, events.end(), to, before);
    return {first, end};
}

} // namespace

SpanAssembler::SpanAssembler(std::size_t mostEvents)
    : limit(mostEvents), wantedLength(defaultSpan), length(defaultSpan)
{
}

void SpanAssembler::setSpan(std::uint64_t microseconds)
{
    if (microseconds == 0)
        return;
    const std::lock_guard lock(mutex);
    if (wantedLength.exchange(microseconds) == microseconds)
        return;
    // Room that long spans took is given back.
    waiting = {};
    isWaiting = false;
}

void SpanAssembler::append(std::span<const Event2D> events, std::uint64_t until)
{
    if (wantedLength != length)
        changeGrid();
    if (until < start || until - start < length) {
        collect(events, start, until);
    } else {
        // Only the newest of the spans that end here can still be taken.
        const std::uint64_t end = until / length * length;
        if (end - length != start) {
            collected.clear();
            overflowed = false;
            start = end - length;
        }
        collect(events, start, end);
        publish();
        start = end;
        collect(events, start, until);
    }
    covered = until;
}

void SpanAssembler::changeGrid()
{
    length = wantedLength;
    const std::uint64_t running = covered / length * length;
    if (running == covered || running >= start) {
        // The stream since the start of the running span is at hand.
        const auto kept = std::span<const Event2D>(collected);
        const std::span<const Event2D> part = between(kept, running, covered);
        collected = std::vector<Event2D>(part.begin(), part.end());
        start = running;
    } else {
        collected = {};
        start = running + length;
        overflowed = false;
    }
}

void SpanAssembler::collect(std::span<const Event2D> events, std::uint64_t from, std::uint64_t to)
{
    const std::span<const Event2D> part = between(events, from, to);
    if (overflowed || collected.size() + part.size() > limit) {
        overflowed = true;
        collected.clear();
        return;
    }
    collected.insert(collected.end(), part.begin(), part.end());
}

void SpanAssembler::publish()
{
    {
        const std::lock_guard lock(mutex);
        if (!overflowed && wantedLength == length) {
            waiting.swap(collected);
            isWaiting = true;
        }
    }
    collected.clear();
    overflowed = false;
}

bool SpanAssembler::take(std::vector<Event2D>& out)
{
    const std::lock_guard lock(mutex);
    if (!isWaiting)
        return false;
    waiting.swap(out);
    isWaiting = false;
    return true;
}

void SpanAssembler::dropWaiting()
{
    const std::lock_guard lock(mutex);
    isWaiting = false;
}

} // namespace korvane::simulation
