#pragma once

#include "camera/recording/evtdecoder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

/// Runs a decoder over a whole stream in passes of chosen size, as its users do.
namespace decoding {

struct Result
{
    std::vector<korvane::Event2D> events;
    std::vector<korvane::EventTriggerIn> triggers;
    korvane::recording::EvtCounts counts;
    korvane::recording::EvtState state;
};

/// How a stream is handed over: bytes a pass may look at (0: all of them) and places for its events.
struct Portions
{
    std::size_t bytes = 0;
    std::size_t places = 4096;
};

/// Decodes from `offset` in `state` to `end`. Throws when the decoder stops making progress, leaves its
/// bounds or stops elsewhere than before an incomplete word.
inline Result decodeFrom(const korvane::recording::EvtDecoder& decoder, std::span<const std::uint8_t> words,
                         korvane::recording::Geometry geometry, std::uint64_t offset, std::uint64_t end,
                         const korvane::recording::EvtState& state = {}, Portions portions = {})
{
    using korvane::Event2D;
    const Event2D untouched(0xABCD, 0xDCBA, 0xEE, 0x1122334455667788);
    const std::size_t guard = 16;
    const std::size_t size = korvane::recording::wordSize(decoder.encoding());
    std::vector<Event2D> places(portions.places + guard, untouched);
    Result result;
    result.state = state;
    korvane::recording::EvtPass pass;
    pass.next = words.data() + offset;
    pass.streamEnd = words.data() + words.size();
    pass.geometry = geometry;
    pass.triggers = &result.triggers;
    const std::uint8_t* const last = words.data() + end;
    while (last - pass.next >= static_cast<std::ptrdiff_t>(size)) {
        const auto rest = static_cast<std::size_t>(last - pass.next);
        const std::uint8_t* const before = pass.next;
        pass.end = pass.next + (portions.bytes == 0 ? rest : std::min(rest, std::max(portions.bytes, size)));
        pass.out = places.data();
        pass.outEnd = places.data() + portions.places;
        decoder.decode(result.state, pass, result.counts);
        if (pass.next <= before || pass.next > pass.end || (pass.next - before) % std::ptrdiff_t(size) != 0)
            throw std::logic_error("the decoder stands still or leaves its words");
        if (pass.out < places.data() || pass.out > pass.outEnd)
            throw std::logic_error("the decoder leaves its places");
        const bool full
            = pass.outEnd - pass.out < static_cast<std::ptrdiff_t>(korvane::recording::EvtDecoder::slack);
        if (!full && pass.end - pass.next >= static_cast<std::ptrdiff_t>(size))
            throw std::logic_error("the decoder stops although there is room");
        result.events.insert(result.events.end(), places.data(), pass.out);
    }
    if (!std::all_of(places.end() - std::ptrdiff_t(guard), places.end(),
                     [&untouched](const Event2D& place) { return place == untouched; }))
        throw std::logic_error("the decoder writes behind its places");
    return result;
}

inline Result decodeAll(korvane::recording::EvtEncoding encoding,
                        korvane::recording::InstructionSet instructions, std::span<const std::uint8_t> words,
                        korvane::recording::Geometry geometry, Portions portions = {})
{
    return decodeFrom(korvane::recording::EvtDecoder(encoding, instructions), words, geometry, 0,
                      words.size(), {}, portions);
}

} // namespace decoding
