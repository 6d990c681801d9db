#pragma once

#include "camera/recording/evtstate.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace korvane::recording {

/// How the time-high words of an encoding count.
struct EvtClockRules
{
    std::int64_t unit; ///< microseconds a step of one
    std::int64_t range; ///< number of values before they wrap
    bool wrapsFromTopToBottom; ///< a wrap is a step from the top 1/16 to the bottom 1/16, else one by half
                               ///< the range

    static constexpr EvtClockRules evt2() { return {64, std::int64_t(1) << 28, true}; }
    static constexpr EvtClockRules evt3() { return {4096, 4096, false}; }
};

/// Turns time-high words into a time that never runs backwards.
///
/// Time words are followed literally, wraps included. A step back under 10 ms is jitter between a camera's
/// sources: events and triggers are held until time has caught up. A longer one is a restart of the camera's
/// clock: time goes on from where it had got to. A jump forward, or a long step back, that the next time-high
/// word contradicts is a damaged word and is skipped.
namespace EvtClock {

constexpr std::int64_t jitter = 10000;

/// Steps from one time-high value to another, a wrap counted as forward.
constexpr std::int64_t stepsBetween(const EvtClockRules& rules, std::uint32_t from, std::uint32_t to)
{
    const std::int64_t steps = std::int64_t(to) - std::int64_t(from);
    const std::int64_t sixteenth = rules.range / 16;
    const bool wrap = rules.wrapsFromTopToBottom
        ? std::int64_t(from) >= rules.range - sixteenth && std::int64_t(to) < sixteenth
        : -steps >= rules.range / 2;
    return wrap ? steps + rules.range : steps;
}

inline void raiseFloors(EvtState& state)
{
    state.eventFloor = std::max(state.eventFloor, state.high);
    state.triggerFloor = std::max(state.triggerFloor, state.high);
}

inline void restart(EvtState& state, EvtCounts& counts)
{
    state.high = state.reached + 1;
    state.stepOpen = false;
    ++counts.restarts;
    raiseFloors(state);
}

/// Settles an open step back, once the time-low word that follows it is known.
inline void settleStep(EvtState& state, EvtCounts& counts, std::int64_t low)
{
    if (state.reached - (state.high + low) >= jitter)
        restart(state, counts);
    state.stepOpen = false;
}

/// Takes a time-high word. `peek` gives the value of the next time-high word of the stream, if there is one
/// near; it is asked only at a discontinuity.
template <typename Peek>
void onTimeHigh(const EvtClockRules& rules, EvtState& state, EvtCounts& counts, std::uint32_t value,
                Peek&& peek)
{
    if (!state.started) {
        state = EvtState();
        state.started = true;
        state.highWord = value;
        return;
    }
    if (value == state.highWord)
        return;
    const std::int64_t steps = stepsBetween(rules, state.highWord, value);
    const std::int64_t change = steps * rules.unit;
    if (change > jitter || change <= -jitter) {
        if (const std::optional<std::uint32_t> next = peek()) {
            const std::int64_t toNext = stepsBetween(rules, state.highWord, *next) * rules.unit;
            const bool contradicted
                = change > 0 ? toNext >= 0 && toNext < change : toNext >= 0 && toNext <= jitter;
            if (contradicted) {
                ++counts.wildTimes;
                return;
            }
        }
    }
    state.reached = std::max({state.reached, state.high + state.low, state.eventFloor, state.triggerFloor});
    if (state.stepOpen)
        settleStep(state, counts, 0);
    state.highWord = value;
    state.high += change;
    state.low = 0;
    if (change < 0) {
        const std::int64_t back = state.reached - state.high;
        if (back - (rules.unit - 1) >= jitter)
            restart(state, counts);
        else
            state.stepOpen = back >= jitter;
    }
    raiseFloors(state);
}

/// The time to deliver for so many events that literally happened at `time`.
inline std::int64_t deliver(std::int64_t& floor, EvtCounts& counts, std::int64_t time, unsigned events = 1)
{
    if (time < floor) {
        counts.clamped += events;
        return floor;
    }
    floor = time;
    return time;
}

} // namespace EvtClock

} // namespace korvane::recording
