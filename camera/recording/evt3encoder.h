#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evtencoding.h"

#include <cstdint>
#include <span>
#include <vector>

namespace korvane::recording {

/// Writes events and triggers as words of EVT 3.0, such that decoding gives the same events in the same
/// order.
///
/// Runs of events with rising x and the same time, row and polarity become vectors where that is smaller:
/// always whole 12-12-8 triples, which every reader understands, and never past the sensor's right edge. The
/// first word is a time-high; they are repeated every 16 us while something happens, as cameras do, and every
/// 4 s while nothing does, so that readers count the wraps of time. One thread.
class Evt3Encoder
{
public:
    /// Words name channels 0 to 15.
    static constexpr int triggerChannels = 16;

    explicit Evt3Encoder(Geometry geometry);

    /// Appends the words for these events and triggers to `out`, merged by time; a trigger comes before the
    /// events of its microsecond. Times are microseconds from the stream's start; one that steps back, within
    /// a call or from call to call, is held at the time before it. Events outside the sensor, or beyond the
    /// 2048 columns and rows that words can name, and triggers on channels that no word can name are dropped
    /// and counted.
    void encode(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers,
                std::vector<std::uint8_t>& out);

    /// Appends the words of the idle time up to here, microseconds, as encode() does for what comes behind a
    /// gap: for gaps whose words should not be made at once. Nothing before the stream has begun.
    void encodeIdle(std::uint64_t until, std::vector<std::uint8_t>& out);

    std::uint64_t encodedEvents() const { return encoded; }
    /// Events dropped because they lie outside the sensor or where no word can name them.
    std::uint64_t droppedEvents() const { return dropped; }
    /// Triggers dropped because no word can name their channel.
    std::uint64_t droppedTriggers() const { return nameless; }

    static bool canName(const EventTriggerIn& trigger)
    {
        return trigger.id >= 0 && trigger.id < triggerChannels;
    }

private:
    std::uint16_t* putTimeHigh(std::uint16_t* at, std::uint64_t microseconds);
    void putTrigger(const EventTriggerIn& trigger, std::vector<std::uint8_t>& out);
    /// Encodes events up to the first that comes after a gap in time; how many those are.
    std::size_t putEvents(std::span<const Event2D> events, std::vector<std::uint8_t>& out);

    const Geometry geometry;
    std::uint64_t time = 0; ///< of the last time-low word, microseconds
    std::uint64_t highTime = 0; ///< when the last time-high word was written, microseconds
    std::uint64_t encoded = 0;
    std::uint64_t dropped = 0;
    std::uint64_t nameless = 0;
    unsigned row = noRow;
    unsigned base = noBase; ///< the vector base word that the reader's base stands at
    bool started = false;

    static constexpr unsigned noRow = 0xFFFF;
    static constexpr unsigned noBase = 0xFFFF;
};

} // namespace korvane::recording
