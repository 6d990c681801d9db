#pragma once

#include "camera/recording/evtdecoder.h"

#include <cstdint>
#include <span>
#include <vector>

namespace korvane::recording {

/// A place to resume decoding from: the state before the word at `offset`.
struct IndexEntry
{
    std::uint64_t offset = 0; ///< bytes from the body's start
    EvtState state;
};

/// A sparse index of a recording, in steps of bytes: bounded by the file's size whatever its times say.
/// Immutable once built; any thread may ask it.
class RecordingIndex
{
public:
    /// The index takes at most 1/1000 of the file or this many bytes, whichever is more.
    static constexpr std::uint64_t minimumBudget = 256 * 1024;

    /// Scans a whole body. Counts what it meets on the way: damaged time words and restarts of the clock.
    static RecordingIndex build(const EvtDecoder& decoder, Geometry geometry,
                                std::span<const std::uint8_t> body, EvtCounts& counts);

    /// The last entry before which no event (no trigger) is as late as `time`; the first entry when there is
    /// none.
    const IndexEntry& entryForEvents(std::int64_t time) const;
    const IndexEntry& entryForTriggers(std::int64_t time) const;

    const std::vector<IndexEntry>& entries() const { return places; }
    /// Bytes that the entries take.
    std::uint64_t memory() const { return places.capacity() * sizeof(IndexEntry); }

private:
    friend class IndexScan;
    std::vector<IndexEntry> places;
};

} // namespace korvane::recording
