#pragma once

#include "camera/recording/recordingindex.h"

#include <cstdint>
#include <span>
#include <vector>

namespace korvane::recording {

/// The scan that fills an index. It looks at time-high words only, at the speed of memory, and knows the rest
/// of the decoder's state at a place by looking back from it. Where that is not enough (time steps back, or
/// does not advance for megabytes), it decodes from the last place whose state is known.
class IndexScan
{
public:
    IndexScan(const EvtDecoder& decoder, Geometry geometry, std::span<const std::uint8_t> body,
              EvtCounts& counts, std::vector<IndexEntry>& places);

    void run();

private:
    template <typename Words>
    void scan();
    /// Decodes from the known place to `offset` at least, and on until time has settled; that is the known
    /// place then.
    void decodeTo(std::uint64_t offset);
    void place(const IndexEntry& entry);
    /// Completes the state at a time-high word of EVT 3.0 with the row that holds there, and with the base.
    void lookBackForRow(EvtState& state, std::uint64_t offset) const;
    void lookBackForBase(EvtState& state, std::uint64_t offset) const;
    /// The word of EVT 3.0 that ends at `offset`.
    unsigned wordBefore(std::uint64_t offset) const;

    const EvtDecoder& decoder;
    Geometry geometry;
    std::span<const std::uint8_t> body;
    EvtCounts& counts;
    std::vector<IndexEntry>& places;
    std::vector<Event2D> scratch;
    IndexEntry known; ///< the last place whose state is known exactly
    std::uint64_t wildSinceKnown = 0; ///< damaged time words counted behind it
    std::uint64_t spacing = 0; ///< bytes between entries, at least
    std::uint64_t limit = 0; ///< entries
};

} // namespace korvane::recording
