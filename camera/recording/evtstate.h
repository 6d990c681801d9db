#pragma once

#include <cstdint>

namespace korvane::recording {

/// Everything a decoder carries from one word to the next. Plain data: a copy of it with a position in the
/// file is a place to resume from. Times are microseconds from the recording's first time-high word.
struct EvtState
{
    /// The time that the current time-high word stands for.
    std::int64_t high = 0;
    /// The largest time that any time word stood for so far.
    std::int64_t reached = 0;
    /// No later event, no later trigger may be earlier than this.
    std::int64_t eventFloor = 0;
    std::int64_t triggerFloor = 0;
    std::uint32_t highWord = 0; ///< value of the current time-high word
    std::uint16_t low = 0; ///< EVT 3.0: time bits 11..0
    std::uint16_t row = 0; ///< EVT 3.0: y of the words to come
    std::uint16_t base = 0; ///< EVT 3.0: x that the next vector word starts at
    std::uint8_t basePolarity = 0; ///< EVT 3.0: polarity of vector words
    bool started = false; ///< a time-high word has been seen; nothing before it counts
    bool hasRow = false;
    bool hasBase = false;
    /// EVT 3.0: the row belongs to another family of events, whose pixels are not ours.
    bool rowHidden = false;
    /// EVT 3.0: time-high stepped back by an amount that the next time-low word has to settle (see EvtClock).
    bool stepOpen = false;

    friend bool operator==(const EvtState&, const EvtState&) = default;
};

/// What a decoder met and did not deliver as it stood.
struct EvtCounts
{
    std::uint64_t reservedWords = 0; ///< unknown or reserved types, skipped
    std::uint64_t beforeTime = 0; ///< events before the first time-high word
    std::uint64_t withoutRow = 0; ///< EVT 3.0: events before a row, or in a hidden one
    std::uint64_t withoutBase = 0; ///< EVT 3.0: vectors before a base
    std::uint64_t outside = 0; ///< events outside the sensor
    std::uint64_t clamped = 0; ///< events and triggers whose time stepped back and was held
    std::uint64_t restarts = 0; ///< the camera's clock started again
    std::uint64_t wildTimes = 0; ///< time-high words that the next one contradicted

    friend bool operator==(const EvtCounts&, const EvtCounts&) = default;
};

} // namespace korvane::recording
