#pragma once

#include "camera/recording/rawfilereader.h"
#include "camera/simulation/eventstream.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace korvane::simulation {

/// The stream of a recording, over and over: its first event comes at time 0, or its first trigger, if that
/// is earlier; after its last one it starts again and time goes on. Reads what a step needs and keeps no
/// more. A file that shrinks meanwhile ends where it now does.
class ReplayStream : public EventStream
{
public:
    /// A step of the stream, microseconds. A shorter recording still takes as long for a round.
    static constexpr std::uint64_t stepUs = 16000;
    /// Of more events in one step the rest is left out, with a log line: a damaged file may claim any number.
    static constexpr std::size_t mostEvents = std::size_t{1} << 23U;

    /// Triggers that come earlier than this before the first event are left out, microseconds: nobody is to
    /// wait long for a picture.
    static constexpr std::uint64_t longestLead = 1000000;

    /// How long a recording takes from one start to the next at least, and what it takes a multiple of;
    /// microseconds.
    struct Round
    {
        std::uint64_t shortest = stepUs;
        std::uint64_t multipleOf = 1;
    };

    /// `recording` is loaded; `path` is for the log.
    ReplayStream(std::unique_ptr<recording::RawFileReader> recording, QString path, Round round);
    ReplayStream(std::unique_ptr<recording::RawFileReader> recording, QString path)
        : ReplayStream(std::move(recording), std::move(path), Round())
    {
    }

    recording::Geometry geometry() const override { return reader->sensorGeometry(); }
    std::uint64_t time() const override { return now; }
    std::uint64_t nextTime() const override { return now + stepUs; }
    StreamStep generateStep() override;

    /// Time from one start of the recording to the next, microseconds.
    std::uint64_t roundTime() const { return length; }
    /// Time from a start of the recording to its first event, microseconds.
    std::uint64_t lead() const { return leadTime; }
    /// How often the stream has read in the file, for tests: idle stretches are passed over.
    std::uint64_t reads() const { return readCount; }

private:
    bool read(std::uint64_t from, std::uint64_t to);
    void addTriggers(std::uint64_t from, std::uint64_t to);
    std::vector<EventTriggerIn>::const_iterator tailFrom(std::uint64_t fileTime) const;
    void lookAhead(std::uint64_t from);
    void startAgain();

    const std::unique_ptr<recording::RawFileReader> reader;
    const QString filePath;
    std::vector<EventTriggerIn> tail; // what comes after the last event, in the file's time
    // Microseconds of the file's time.
    std::uint64_t first = 0; // what comes at the start
    std::uint64_t lastEvent = 0;
    std::uint64_t leadTime = 0;
    std::uint64_t length = 0;
    // Microseconds of the stream's time.
    std::uint64_t now = 0;
    std::uint64_t roundStart = 0;
    std::uint64_t quietUntil = 0; // nothing comes before

    std::vector<Event2D> events;
    std::vector<EventTriggerIn> triggers;
    std::uint64_t readCount = 0;
    bool endTold = false;
    bool overflowTold = false;
};

} // namespace korvane::simulation
