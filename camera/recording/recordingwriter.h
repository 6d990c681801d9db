#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evt3encoder.h"
#include "camera/recording/outputfile.h"
#include "camera/recording/recordingheader.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace korvane::recording {

/// Writes one EVT 3.0 recording from a bounded queue, on a thread of its own. One thread pushes; it waits
/// while the queue is full, for a recording loses nothing. What was pushed reaches the file within a second.
/// After an error nothing more is written: what stands there is a whole recording up to that place.
class RecordingWriter
{
public:
    /// Events and triggers the queue holds at most: 64 MB, a fifth of a second at the highest rates.
    static constexpr std::size_t queueRecords = 4 * 1024 * 1024;

    /// Events and triggers that emptied batches, kept for reuse, have room for at most.
    static constexpr std::size_t mostSpare = 512 * 1024;

    /// Microseconds without an event that a recording takes: thirty days, in 1.3 MB of time words. A clock
    /// that leaps further is broken, and the words of that time could fill memory and disk.
    static constexpr std::uint64_t longestIdle = 2'592'000'000'000;

    /// `name` is what log lines call the file. Throws when no thread can be had; then the file is gone.
    RecordingWriter(std::unique_ptr<OutputFile> file, const RecordingHead& head, QString name);
    /// Finishes.
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    /// Appends events and triggers, each in time order, none earlier than those pushed before.
    void push(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers = {});
    /// Writes what was pushed, closes the file and ends the thread; a file that holds no event goes. False
    /// when an error came between. May be called while another thread pushes; what that one pushes from then
    /// on is dropped.
    bool finish();

    /// Ends the recording behind what was pushed so far; only the first reason counts. Any thread.
    void abandon(const QString& why);

    /// Events and triggers that the batches kept for reuse have room for. Any thread.
    std::size_t roomKept() const;
    bool failed() const { return failure.load(); }
    /// Why writing ended; empty without an error. Any thread.
    QString error() const;

private:
    struct Batch
    {
        std::vector<Event2D> events;
        std::vector<EventTriggerIn> triggers;
        std::size_t size() const { return events.size() + triggers.size(); }
        std::size_t room() const { return events.capacity() + triggers.capacity(); }
    };

    void run();
    void write();
    /// Whether times in the batch lie so far behind the ones before that they cannot be true.
    bool leaps(const Batch& batch);
    /// Waits for the next batch, or until what is encoded has to be written. False at the end.
    bool take(Batch& batch, std::chrono::steady_clock::time_point until);
    bool flush();
    void end();

    const QString name;
    std::unique_ptr<OutputFile> file; ///< the writing thread's
    Evt3Encoder encoder; ///< the writing thread's
    std::vector<std::uint8_t> bytes; ///< the writing thread's: encoded and not yet written
    const std::uint64_t headerBytes;
    std::optional<std::uint64_t> latest; ///< the writing thread's: of the times so far, microseconds

    mutable std::mutex mutex;
    std::condition_variable pushed;
    std::condition_variable taken;
    std::deque<Batch> queue; ///< under mutex
    std::vector<Batch> spare; ///< under mutex: emptied batches, with the room they had
    std::size_t spareRecords = 0; ///< under mutex: events and triggers that `spare` has room for
    std::size_t queued = 0; ///< under mutex: events and triggers in the queue
    bool closing = false; ///< under mutex
    QString reason; ///< under mutex

    std::atomic<bool> failure{false};
    std::thread thread;
};

} // namespace korvane::recording
