#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evt3encoder.h"
#include "camera/recording/evtencoding.h"

#include <QDateTime>
#include <QIODevice>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace korvane::recording {

/// What the header of a recording tells.
struct RecordingHead
{
    Geometry geometry;
    std::string serial; ///< empty when it is not known
    QDateTime date; ///< local time of the recording's start
};

/// The header of an EVT 3.0 recording, as readers of every kind understand it.
QByteArray recordingHeader(const RecordingHead& head);

/// Writes one EVT 3.0 recording from a bounded queue, on a thread of its own. One thread pushes; it waits
/// while the queue is full, for a recording loses nothing. What was pushed reaches the device within a
/// second. After an error of the device nothing more is written: what stands there is a whole recording up to
/// that place.
class RecordingWriter
{
public:
    /// Events the queue holds at most: 64 MB, half a second at the highest rates.
    static constexpr std::size_t queueEvents = 4 * 1024 * 1024;

    /// `device` is open for writing and unbuffered.
    RecordingWriter(std::unique_ptr<QIODevice> device, const RecordingHead& head);
    /// Finishes.
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    /// Appends events and triggers, each in time order, none earlier than those pushed before.
    void push(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers = {});
    /// Writes what was pushed, closes the device and ends the thread. False when an error came between. May
    /// be called while another thread pushes; what that one pushes from then on is dropped.
    bool finish();

    bool failed() const { return failure.load(); }
    /// Why writing ended; empty without an error. Any thread.
    QString error() const;
    std::uint64_t eventsWritten() const { return written.load(); }

private:
    struct Batch
    {
        std::vector<Event2D> events;
        std::vector<EventTriggerIn> triggers;
    };

    void run();
    bool flush();
    void fail(const QString& reason);

    std::unique_ptr<QIODevice> device; ///< the writing thread's
    Evt3Encoder encoder; ///< the writing thread's
    std::vector<std::uint8_t> bytes; ///< the writing thread's: encoded and not yet written
    std::uint64_t encodedEvents = 0; ///< the writing thread's: in `bytes`

    mutable std::mutex mutex;
    std::condition_variable pushed;
    std::condition_variable taken;
    std::deque<Batch> queue; ///< under mutex
    std::vector<Batch> spare; ///< under mutex: emptied batches, with the room they had
    std::size_t queued = 0; ///< under mutex: events in the queue
    bool closing = false; ///< under mutex
    QString reason; ///< under mutex

    std::atomic<bool> failure{false};
    std::atomic<std::uint64_t> written{0};
    std::thread thread;
};

} // namespace korvane::recording
