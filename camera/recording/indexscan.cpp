#include "camera/recording/indexscan.h"

#include "camera/recording/evtclock.h"
#include "camera/recording/evtwords.h"
#include "camera/recording/timehighscan.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

namespace korvane::recording {

namespace {

/// Where time does not advance for this many bytes, the state is found by decoding.
constexpr std::uint64_t overdue = 4 * 1024 * 1024;
constexpr std::size_t scratchEvents = 8192;

using enum Evt3Words::Type;

constexpr bool isRow(unsigned type)
{
    return type == AddressY || type == ForeignRow;
}

/// Whether a word of EVT 3.0 sets the base or moves it. By one comparison, for whole blocks are asked.
constexpr bool concernsBase(std::uint16_t word)
{
    static_assert(Vector12 == VectorBase + 1 && Vector8 == VectorBase + 2);
    return word - (Evt3Words::VectorBase << 12) < (3u << 12);
}

/// The pattern in file order: legacy words stand with their halves swapped.
template <typename Words>
TimeHighPattern<typename Words::Word> patternFor(const EvtState& state)
{
    using Word = typename Words::Word;
    TimeHighPattern<Word> pattern{Words::mask, Words::tag, Words::valueMask, 0};
    // A current value with a bit outside the mask lets every time-high word match: none has been seen yet.
    if (!state.started)
        pattern.current = static_cast<Word>(~pattern.valueMask);
    else if constexpr (sizeof(Word) == 8)
        pattern.current = static_cast<Word>(state.highWord) << 32;
    else
        pattern.current = static_cast<Word>(state.highWord);
    if constexpr (std::is_same_v<Words, Evt21LegacyWords>) {
        pattern.mask = std::rotl(pattern.mask, 32);
        pattern.tag = std::rotl(pattern.tag, 32);
        pattern.valueMask = std::rotl(pattern.valueMask, 32);
        pattern.current = std::rotl(pattern.current, 32);
    }
    return pattern;
}

} // namespace

IndexScan::IndexScan(const EvtDecoder& streamDecoder, Geometry sensor, std::span<const std::uint8_t> words,
                     EvtCounts& met, std::vector<IndexEntry>& entries)
    : decoder(streamDecoder), geometry(sensor), body(words), counts(met), places(entries),
      scratch(scratchEvents)
{
    const std::uint64_t budget = std::max<std::uint64_t>(RecordingIndex::minimumBudget, body.size() / 1000);
    limit = budget / sizeof(IndexEntry);
    spacing = std::max<std::uint64_t>(4096, body.size() / limit + 1);
    places.reserve(std::min<std::uint64_t>(limit, body.size() / spacing + 2));
}

void IndexScan::run()
{
    switch (decoder.encoding()) {
    case EvtEncoding::Evt2:
        scan<Evt2Words>();
        break;
    case EvtEncoding::Evt21:
        scan<Evt21Words>();
        break;
    case EvtEncoding::Evt21Legacy:
        scan<Evt21LegacyWords>();
        break;
    case EvtEncoding::Evt3:
        scan<Evt3Words>();
        break;
    }
}

void IndexScan::place(const IndexEntry& entry)
{
    known = entry;
    wildSinceKnown = 0;
    if (places.size() < limit && (places.empty() || entry.offset >= places.back().offset + spacing))
        places.push_back(entry);
}

void IndexScan::decodeTo(std::uint64_t offset)
{
    EvtPass pass;
    pass.next = body.data() + known.offset;
    pass.streamEnd = body.data() + body.size();
    pass.geometry = geometry;
    EvtCounts met;
    EvtState state = known.state;
    const std::uint64_t size = wordSize(decoder.encoding());
    std::uint64_t target = offset;
    do {
        pass.end = body.data() + target;
        while (pass.end - pass.next >= static_cast<std::ptrdiff_t>(size)) {
            pass.out = scratch.data();
            pass.outEnd = scratch.data() + scratch.size();
            decoder.decode(state, pass, met);
        }
        target = std::min<std::uint64_t>(body.size(), target + size);
    } while (state.stepOpen && static_cast<std::uint64_t>(pass.streamEnd - pass.next) >= size);
    counts.restarts += met.restarts;
    // The scan has counted the damaged words it passed; only what decoding found beyond them is new.
    counts.wildTimes += met.wildTimes - std::min(met.wildTimes, wildSinceKnown);
    wildSinceKnown = 0;
    known = {static_cast<std::uint64_t>(pass.next - body.data()), state};
}

unsigned IndexScan::wordBefore(std::uint64_t offset) const
{
    return loadWord<std::uint16_t>(body.data() + offset - 2);
}

void IndexScan::lookBackForRow(EvtState& state, std::uint64_t offset) const
{
    state.row = known.state.row;
    state.hasRow = known.state.hasRow;
    state.rowHidden = known.state.rowHidden;
    for (std::uint64_t at = offset; at > known.offset; at -= 2) {
        const unsigned word = wordBefore(at);
        if (!isRow(word >> 12))
            continue;
        state.rowHidden = word >> 12 == ForeignRow;
        if (!state.rowHidden) {
            state.row = static_cast<std::uint16_t>(word & 0x7FF);
            state.hasRow = true;
        }
        break;
    }
}

void IndexScan::lookBackForBase(EvtState& state, std::uint64_t offset) const
{
    state.base = known.state.base;
    state.basePolarity = known.state.basePolarity;
    state.hasBase = known.state.hasBase;
    unsigned advance = 0; // of the base since it was set
    // The same by vectors whose row has not been met yet: in a hidden one they do not count.
    unsigned open = 0;
    bool baseMet = false;
    std::uint64_t at = offset;
    while (at > known.offset && !(baseMet && open == 0)) {
        // Recordings without vectors hold no base for megabytes: step over blocks that have nothing to do
        // with it.
        constexpr std::uint64_t blockWords = 64;
        if (open == 0 && at - known.offset >= 2 * blockWords) {
            std::uint16_t block[blockWords];
            std::memcpy(block, body.data() + at - sizeof block, sizeof block);
            unsigned any = 0;
            for (const std::uint16_t word : block)
                any |= concernsBase(word) ? 1u : 0u;
            if (any == 0) {
                at -= sizeof block;
                continue;
            }
        }
        const std::uint64_t until = at - std::min<std::uint64_t>(at - known.offset, 2 * blockWords);
        for (; at > until && !(baseMet && open == 0); at -= 2) {
            const unsigned word = wordBefore(at);
            const unsigned type = word >> 12;
            if (isRow(type)) {
                if (type == AddressY)
                    advance = std::min(advance + open, vectorBaseLimit);
                open = 0;
            } else if (baseMet) {
                continue;
            } else if (type == Vector12 || type == Vector8) {
                open = std::min(open + (type == Vector12 ? 12u : 8u), vectorBaseLimit);
            } else if (type == VectorBase) {
                state.base = static_cast<std::uint16_t>(word & 0x7FF);
                state.basePolarity = static_cast<std::uint8_t>((word >> 11) & 1);
                state.hasBase = true;
                baseMet = true;
            }
        }
    }
    if (!known.state.rowHidden)
        advance += open;
    state.base = static_cast<std::uint16_t>(std::min(state.base + advance, vectorBaseLimit));
}

template <typename Words>
void IndexScan::scan()
{
    using Word = typename Words::Word;
    const std::uint64_t end = body.size() / sizeof(Word) * sizeof(Word);
    place({0, EvtState()});
    EvtState state; // what time-high words tell; `reached` bounds every time delivered so far
    std::uint64_t at = 0;
    while (at < end) {
        const std::uint64_t until = std::min(end, known.offset + overdue);
        if (at >= until) {
            decodeTo(at);
            place(known);
            at = known.offset;
            state = known.state;
            state.reached
                = std::max({state.reached, state.high + state.low, state.eventFloor, state.triggerFloor});
            continue;
        }
        const auto* const words = reinterpret_cast<const Word*>(body.data() + at);
        at += sizeof(Word) * findTimeHighChange(words, (until - at) / sizeof(Word), patternFor<Words>(state));
        if (at >= until)
            continue;
        const std::uint32_t value = Words::value(Words::load(body.data() + at));
        const std::uint64_t next = at + sizeof(Word);
        if (!state.started || EvtClock::stepsBetween(Words::rules, state.highWord, value) > 0) {
            const std::int64_t reached = std::max(state.reached, state.high + Words::rules.unit - 1);
            const bool first = !state.started;
            const std::uint64_t wild = counts.wildTimes;
            EvtClock::onTimeHigh(Words::rules, state, counts, value, [this, next] {
                return peekTimeHigh<Words>(body.data() + next, body.data() + body.size());
            });
            wildSinceKnown += counts.wildTimes - wild;
            const bool ahead = first || (state.highWord == value && state.high > reached);
            state.reached = first ? 0 : std::max(reached, state.high);
            if (first) {
                // Rows and bases before it are stale: nothing may look back beyond here.
                place({next, state});
            } else if (ahead && next >= places.back().offset + spacing) {
                EvtState entry = state;
                entry.reached = state.high;
                entry.eventFloor = state.high;
                entry.triggerFloor = state.high;
                if constexpr (std::is_same_v<Words, Evt3Words>) {
                    lookBackForRow(entry, at);
                    lookBackForBase(entry, at);
                }
                place({next, entry});
            }
            at = next;
        } else {
            decodeTo(next);
            at = known.offset;
            state = known.state;
            state.reached
                = std::max({state.reached, state.high + state.low, state.eventFloor, state.triggerFloor});
        }
    }
}

} // namespace korvane::recording
