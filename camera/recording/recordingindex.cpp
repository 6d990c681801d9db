#include "camera/recording/recordingindex.h"

#include "camera/recording/indexscan.h"

#include <algorithm>

namespace korvane::recording {

namespace {

template <typename Floor>
const IndexEntry& lastBelow(const std::vector<IndexEntry>& places, std::int64_t time, Floor floor)
{
    const auto above = std::partition_point(
        places.begin(), places.end(), [&](const IndexEntry& entry) { return floor(entry.state) < time; });
    return above == places.begin() ? places.front() : *(above - 1);
}

} // namespace

const IndexEntry& RecordingIndex::entryForEvents(std::int64_t time) const
{
    return lastBelow(places, time, [](const EvtState& state) { return state.eventFloor; });
}

const IndexEntry& RecordingIndex::entryForTriggers(std::int64_t time) const
{
    return lastBelow(places, time, [](const EvtState& state) { return state.triggerFloor; });
}

RecordingIndex RecordingIndex::build(const EvtDecoder& decoder, Geometry geometry,
                                     std::span<const std::uint8_t> body, EvtCounts& counts)
{
    RecordingIndex index;
    IndexScan scan(decoder, geometry, body, counts, index.places);
    scan.run();
    return index;
}

} // namespace korvane::recording
