#include "camera/recording/evtclock.h"
#include "camera/recording/evtdecoders.h"
#include "camera/recording/evtwords.h"

#include <algorithm>
#include <bit>

namespace korvane::recording {

namespace {

using enum Evt2Words::Type;

void takeTrigger(EvtState& state, EvtPass& pass, EvtCounts& counts, std::uint32_t word)
{
    if (!state.started)
        return;
    const std::int64_t bits = (word >> 22) & 0x3F;
    if (state.stepOpen)
        EvtClock::settleStep(state, counts, bits);
    const std::int64_t time = EvtClock::deliver(state.triggerFloor, counts, state.high + bits);
    if (pass.triggers) {
        pass.triggers->emplace_back(static_cast<std::int16_t>((word >> 8) & 0x1F),
                                    static_cast<std::int16_t>(word & 1), static_cast<std::uint64_t>(time));
    }
}

template <typename Words>
void takeTimeHigh(EvtState& state, const EvtPass& pass, EvtCounts& counts, typename Words::Word word)
{
    EvtClock::onTimeHigh(Words::rules, state, counts, Words::value(word),
                         [&pass] { return peekTimeHigh<Words>(pass.next, pass.streamEnd); });
}

/// Everything of EVT 2.1 that is no pixel.
template <typename Words>
void takeOtherWord(EvtState& state, EvtPass& pass, EvtCounts& counts, std::uint64_t word)
{
    const auto upper = static_cast<std::uint32_t>(word >> 32);
    const unsigned type = upper >> 28;
    if (type == TimeHigh)
        takeTimeHigh<Words>(state, pass, counts, word);
    else if (type == Trigger)
        takeTrigger(state, pass, counts, upper);
    else if (type != Others && type != Continued)
        ++counts.reservedWords;
}

/// Writes an event for every bit of `mask`; up to three places behind them are written too.
[[gnu::always_inline]] inline Event2D* storePixels(Event2D* out, std::uint32_t mask, std::uint64_t first,
                                                   std::uint64_t time)
{
    Event2D* const after = out + std::popcount(mask);
    // Most words hold a few pixels: write four without asking, then see whether there are more.
    do {
        for (int i = 0; i < 4; ++i) {
            storeEvent(out + i, first + static_cast<unsigned>(std::countr_zero(mask)), time);
            mask &= mask - 1;
        }
        out += 4;
    } while (mask != 0);
    return after;
}

/// The 2.1 word's upper half is an EVT 2.0 word, its lower half the mask of the pixels x .. x + 31.
template <typename Words>
[[gnu::always_inline]] inline void decodeEvt21(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    // Events are written through bytes, which may alias anything: what the loop needs stands in locals.
    const std::uint8_t* next = pass.next;
    const std::uint8_t* const end = pass.end;
    const Geometry geometry = pass.geometry;
    Event2D* out = pass.out;
    Event2D* const full = pass.outEnd - static_cast<std::ptrdiff_t>(EvtDecoder::slack);
    std::int64_t high = state.high;
    std::int64_t floor = state.eventFloor;
    bool plain = state.started && !state.stepOpen;
    while (end - next >= 8 && out <= full) {
        const std::uint64_t word = Words::load(next);
        next += 8;
        const auto upper = static_cast<std::uint32_t>(word >> 32);
        const unsigned type = upper >> 28;
        if (type > On) {
            if ((word & Words::mask) == Words::tag && state.started && Words::value(word) == state.highWord)
                continue;
            pass.next = next;
            state.eventFloor = floor;
            takeOtherWord<Words>(state, pass, counts, word);
            high = state.high;
            floor = state.eventFloor;
            plain = state.started && !state.stepOpen;
            continue;
        }
        auto mask = static_cast<std::uint32_t>(word);
        if (mask == 0)
            continue;
        const std::int64_t bits = (upper >> 22) & 0x3F;
        if (!plain) {
            if (!state.started) {
                counts.beforeTime += static_cast<unsigned>(std::popcount(mask));
                continue;
            }
            state.eventFloor = floor;
            EvtClock::settleStep(state, counts, bits);
            high = state.high;
            floor = state.eventFloor;
            plain = true;
        }
        const unsigned x = (upper >> 11) & 0x7FF;
        const unsigned y = upper & 0x7FF;
        if (x + 32 > geometry.width || y >= geometry.height) {
            mask = insidePixels(geometry, counts, x, y, mask);
            if (mask == 0)
                continue;
        }
        if (high + bits < floor)
            counts.clamped += static_cast<unsigned>(std::popcount(mask));
        floor = std::max(floor, high + bits);
        out = storePixels(out, mask, x | (y << 16) | (static_cast<std::uint64_t>(type) << 32),
                          static_cast<std::uint64_t>(floor));
    }
    state.eventFloor = floor;
    pass.next = next;
    pass.out = out;
}

} // namespace

void decodeEvt2Portable(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    Event2D* out = pass.out;
    Event2D* const full = pass.outEnd - static_cast<std::ptrdiff_t>(EvtDecoder::slack);
    while (pass.end - pass.next >= 4 && out <= full) {
        const auto word = loadWord<std::uint32_t>(pass.next);
        pass.next += 4;
        const unsigned type = word >> 28;
        if (type > On) {
            if (type == TimeHigh)
                takeTimeHigh<Evt2Words>(state, pass, counts, word);
            else if (type == Trigger)
                takeTrigger(state, pass, counts, word);
            else if (type != Others && type != Continued)
                ++counts.reservedWords;
            continue;
        }
        if (!state.started) {
            ++counts.beforeTime;
            continue;
        }
        const std::int64_t bits = (word >> 22) & 0x3F;
        if (state.stepOpen)
            EvtClock::settleStep(state, counts, bits);
        const unsigned x = (word >> 11) & 0x7FF;
        const unsigned y = word & 0x7FF;
        if (x >= pass.geometry.width || y >= pass.geometry.height) {
            ++counts.outside;
            continue;
        }
        const std::int64_t time = EvtClock::deliver(state.eventFloor, counts, state.high + bits);
        *out++ = Event2D(static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y),
                         static_cast<std::uint8_t>(type), static_cast<std::uint64_t>(time));
    }
    pass.out = out;
}

void decodeEvt21Portable(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    decodeEvt21<Evt21Words>(state, pass, counts);
}

void decodeEvt21LegacyPortable(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    decodeEvt21<Evt21LegacyWords>(state, pass, counts);
}

#if defined(__x86_64__)

__attribute__((target("bmi,bmi2,lzcnt,popcnt"))) void decodeEvt21Wide(EvtState& state, EvtPass& pass,
                                                                      EvtCounts& counts)
{
    decodeEvt21<Evt21Words>(state, pass, counts);
}

__attribute__((target("bmi,bmi2,lzcnt,popcnt"))) void decodeEvt21LegacyWide(EvtState& state, EvtPass& pass,
                                                                            EvtCounts& counts)
{
    decodeEvt21<Evt21LegacyWords>(state, pass, counts);
}

#else

void decodeEvt21Wide(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    decodeEvt21Portable(state, pass, counts);
}

void decodeEvt21LegacyWide(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    decodeEvt21LegacyPortable(state, pass, counts);
}

#endif

} // namespace korvane::recording
