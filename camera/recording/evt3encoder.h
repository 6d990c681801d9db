#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evtencoding.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korvane::recording {

/// Writes events and triggers as words of EVT 3.0, such that decoding gives the same events in the same
/// order.
///
/// Runs of events with rising x and the same time, row and polarity become vectors where that is smaller:
/// always whole 12-12-8 triples, which every reader understands, and never past the sensor's right edge. One
/// thread.
class Evt3Encoder
{
public:
    explicit Evt3Encoder(Geometry geometry);

    /// Appends the words for these events and triggers to `out`, merged by time; a trigger comes before the
    /// events of its microsecond. Times are microseconds from the stream's start; one that steps back, within
    /// a call or from call to call, is held at the time before it. Events outside the sensor are dropped and
    /// counted.
    void encode(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers,
                std::vector<std::uint8_t>& out);
    /// Appends the time words of an idle stretch that lasts until `microseconds`.
    void encodeIdle(std::uint64_t microseconds, std::vector<std::uint8_t>& out);

    /// Events dropped because they lie outside the sensor.
    std::uint64_t droppedEvents() const { return dropped; }

private:
    class Writer;
    void putTime(Writer& writer, std::uint64_t microseconds);
    void putEvents(Writer& writer, std::span<const Event2D> events);
    void putRun(Writer& writer, const Event2D* begin, const Event2D* end);

    const Geometry geometry;
    bool started = false;
    bool hasRow = false;
    bool hasBase = false;
    std::uint8_t basePolarity = 0;
    std::uint16_t row = 0;
    std::uint16_t base = 0; ///< where the reader's vector base stands
    std::uint64_t time = 0; ///< of the last time word, microseconds
    std::uint64_t highTime = 0; ///< when the last time-high word was written, microseconds
    std::uint64_t dropped = 0;
};

} // namespace korvane::recording
