#pragma once

#include "camera/recording/evtdecoder.h"

#include <bit>
#include <cstdint>

namespace korvane::recording {

// The decoders by encoding and instruction set. "Wide" ones need hasWideInstructions(); they hand blocks that
// are out of the ordinary (time changes, triggers, steps back, pixels outside) to the portable ones.

void decodeEvt2Portable(EvtState& state, EvtPass& pass, EvtCounts& counts);
void decodeEvt21Portable(EvtState& state, EvtPass& pass, EvtCounts& counts);
void decodeEvt21LegacyPortable(EvtState& state, EvtPass& pass, EvtCounts& counts);
void decodeEvt3Portable(EvtState& state, EvtPass& pass, EvtCounts& counts);

void decodeEvt2Wide(EvtState& state, EvtPass& pass, EvtCounts& counts);
void decodeEvt21Wide(EvtState& state, EvtPass& pass, EvtCounts& counts);
void decodeEvt21LegacyWide(EvtState& state, EvtPass& pass, EvtCounts& counts);
void decodeEvt3Wide(EvtState& state, EvtPass& pass, EvtCounts& counts);

/// The pixels x, x + 1, ... of a mask that lie inside the sensor; the others are counted.
inline std::uint32_t insidePixels(const Geometry& geometry, EvtCounts& counts, unsigned x, unsigned y,
                                  std::uint32_t mask)
{
    const unsigned inside = y >= geometry.height || x >= geometry.width ? 0 : geometry.width - x;
    const std::uint32_t kept = inside >= 32 ? mask : mask & ((1u << inside) - 1);
    counts.outside += static_cast<unsigned>(std::popcount(mask ^ kept));
    return kept;
}

/// Whether this processor has the bit instructions that the wide decoders of EVT 2.1 are compiled for.
bool hasBitInstructions();
/// Whether this processor has the AVX-512 subsets that the wide decoders are compiled for.
bool hasWideInstructions();

} // namespace korvane::recording
