#pragma once

#include "camera/driver/event2d.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace korvane::simulation {

/// Cuts a stream of events into spans [k T, (k + 1) T) of sensor time and keeps the newest whole one for a
/// reader; one that nobody took is dropped when the next is complete. Vectors are swapped, not copied, so
/// that nothing is allocated once they have grown. append() belongs to the generating thread, the rest to
/// any.
class SpanAssembler
{
public:
    /// A span with more events than `mostEvents` is dropped: memory stays bounded whatever T is.
    explicit SpanAssembler(std::size_t mostEvents = std::size_t{1} << 26U);

    /// Sets T for what comes, microseconds; 0 is ignored. A complete span of the former length is dropped.
    void setSpan(std::uint64_t microseconds);
    /// Adds the events up to the time `until`, which never steps back.
    void append(std::span<const Event2D> events, std::uint64_t until);
    /// Swaps the newest whole span into `out`; false when none is complete since the last call.
    bool take(std::vector<Event2D>& out);
    /// Drops the span that waits to be taken.
    void dropWaiting();

private:
    void changeGrid();
    void collect(std::span<const Event2D> events, std::uint64_t from, std::uint64_t to);
    void publish();

    const std::size_t limit;
    std::atomic<std::uint64_t> wantedLength;

    // Of the generating thread.
    std::uint64_t length;
    std::uint64_t start = 0; // of the span being collected
    std::uint64_t covered = 0; // time up to which the stream has come
    bool overflowed = false;
    std::vector<Event2D> collected;

    std::mutex mutex;
    std::vector<Event2D> waiting; // guarded by mutex
    bool isWaiting = false; // guarded by mutex
};

} // namespace korvane::simulation
