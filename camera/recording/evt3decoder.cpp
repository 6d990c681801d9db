#include "camera/recording/evtclock.h"
#include "camera/recording/evtdecoders.h"
#include "camera/recording/evtwords.h"

#include <bit>

namespace korvane::recording {

namespace {

using enum Evt3Words::Type;

bool rowUsable(const EvtState& state, EvtCounts& counts, unsigned events)
{
    if (!state.hasRow || state.rowHidden) {
        counts.withoutRow += events;
        return false;
    }
    return true;
}

std::int64_t deliverTime(EvtState& state, EvtCounts& counts, unsigned events)
{
    if (state.stepOpen)
        EvtClock::settleStep(state, counts, state.low);
    return EvtClock::deliver(state.eventFloor, counts, state.high + state.low, events);
}

Event2D* takeSingle(EvtState& state, const EvtPass& pass, EvtCounts& counts, unsigned word, Event2D* out)
{
    if (!rowUsable(state, counts, 1))
        return out;
    const unsigned x = word & 0x7FF;
    if (x >= pass.geometry.width || state.row >= pass.geometry.height) {
        ++counts.outside;
        return out;
    }
    const auto time = static_cast<std::uint64_t>(deliverTime(state, counts, 1));
    *out = Event2D(static_cast<std::uint16_t>(x), state.row, static_cast<std::uint8_t>((word >> 11) & 1),
                   time);
    return out + 1;
}

Event2D* takeVector(EvtState& state, const EvtPass& pass, EvtCounts& counts, unsigned mask, unsigned width,
                    Event2D* out)
{
    // Vectors in another family's row are none of ours: they leave our base where it is.
    if (state.rowHidden) {
        counts.withoutRow += static_cast<unsigned>(std::popcount(mask));
        return out;
    }
    const unsigned base = state.base;
    state.base = static_cast<std::uint16_t>(std::min(base + width, vectorBaseLimit));
    if (mask == 0)
        return out;
    if (!state.hasBase) {
        counts.withoutBase += static_cast<unsigned>(std::popcount(mask));
        return out;
    }
    if (!rowUsable(state, counts, static_cast<unsigned>(std::popcount(mask))))
        return out;
    if (base + width > pass.geometry.width || state.row >= pass.geometry.height) {
        mask = insidePixels(pass.geometry, counts, base, state.row, mask);
        if (mask == 0)
            return out;
    }
    const auto time
        = static_cast<std::uint64_t>(deliverTime(state, counts, static_cast<unsigned>(std::popcount(mask))));
    for (; mask != 0; mask &= mask - 1) {
        *out++ = Event2D(static_cast<std::uint16_t>(base + static_cast<unsigned>(std::countr_zero(mask))),
                         state.row, state.basePolarity, time);
    }
    return out;
}

void takeTrigger(EvtState& state, EvtPass& pass, EvtCounts& counts, unsigned word)
{
    if (state.stepOpen)
        EvtClock::settleStep(state, counts, state.low);
    const std::int64_t time = EvtClock::deliver(state.triggerFloor, counts, state.high + state.low);
    if (pass.triggers) {
        pass.triggers->emplace_back(static_cast<std::int16_t>((word >> 8) & 0xF),
                                    static_cast<std::int16_t>(word & 1), static_cast<std::uint64_t>(time));
    }
}

/// Before the first time-high word nothing counts, rows and bases included: they may be stale.
void takeBeforeTime(const EvtPass& pass, EvtState& state, EvtCounts& counts, unsigned word)
{
    switch (word >> 12) {
    case TimeHigh:
        EvtClock::onTimeHigh(Evt3Words::rules, state, counts, word & 0xFFF,
                             [&pass] { return peekTimeHigh<Evt3Words>(pass.next, pass.streamEnd); });
        break;
    case AddressX:
        ++counts.beforeTime;
        break;
    case Vector12:
        counts.beforeTime += static_cast<unsigned>(std::popcount(word & 0xFFF));
        break;
    case Vector8:
        counts.beforeTime += static_cast<unsigned>(std::popcount(word & 0xFF));
        break;
    default:
        break;
    }
}

} // namespace

void decodeEvt3Portable(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    Event2D* out = pass.out;
    Event2D* const full = pass.outEnd - static_cast<std::ptrdiff_t>(EvtDecoder::slack);
    while (pass.end - pass.next >= 2 && out <= full) {
        const unsigned word = loadWord<std::uint16_t>(pass.next);
        pass.next += 2;
        if (!state.started) {
            takeBeforeTime(pass, state, counts, word);
            continue;
        }
        switch (word >> 12) {
        case AddressY:
            state.row = static_cast<std::uint16_t>(word & 0x7FF);
            state.hasRow = true;
            state.rowHidden = false;
            break;
        case ForeignRow:
            state.rowHidden = true;
            ++counts.reservedWords;
            break;
        case AddressX:
            out = takeSingle(state, pass, counts, word, out);
            break;
        case VectorBase:
            state.base = static_cast<std::uint16_t>(word & 0x7FF);
            state.basePolarity = static_cast<std::uint8_t>((word >> 11) & 1);
            state.hasBase = true;
            break;
        case Vector12:
            out = takeVector(state, pass, counts, word & 0xFFF, 12, out);
            break;
        case Vector8:
            out = takeVector(state, pass, counts, word & 0xFF, 8, out);
            break;
        case TimeLow:
            state.low = static_cast<std::uint16_t>(word & 0xFFF);
            if (state.stepOpen)
                EvtClock::settleStep(state, counts, state.low);
            break;
        case TimeHigh:
            EvtClock::onTimeHigh(Evt3Words::rules, state, counts, word & 0xFFF,
                                 [&pass] { return peekTimeHigh<Evt3Words>(pass.next, pass.streamEnd); });
            break;
        case Trigger:
            takeTrigger(state, pass, counts, word);
            break;
        case Continued4:
        case Others:
        case Continued12:
            break;
        default:
            ++counts.reservedWords;
            break;
        }
    }
    pass.out = out;
}

} // namespace korvane::recording
