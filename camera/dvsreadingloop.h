#pragma once

#include "camera/driver/dvscamera.h"
#include "display/displaytiming.h"
#include "display/pacedwait.h"
#include "display/sourcestate.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

/// Pulls event batches from an open DVS-only camera on a thread of its own, while SourceState::filePlaying is
/// set. start() and stop() belong to one thread; the hooks are called on the reading thread and only hand
/// over.
class DvsReadingLoop
{
public:
    struct Hooks
    {
        /// Takes a batch that is not empty.
        std::function<void(const korvane::Event2D* begin, const korvane::Event2D* end)> addEvents;
        /// There is a new picture to show: a hint.
        std::function<void()> eventsReady;
        /// The camera is gone, or its driver has thrown; the running flag is cleared and the loop ends. Gets
        /// the play session it ran in.
        std::function<void(std::uint64_t session)> connectionLost;
    };

    DvsReadingLoop(SourceState& state, const DisplayTiming& timing, Hooks hooks);
    /// Stops and joins.
    ~DvsReadingLoop();
    DvsReadingLoop(const DvsReadingLoop&) = delete;
    DvsReadingLoop& operator=(const DvsReadingLoop&) = delete;

    /// Starts reading; a thread that has ended by itself is joined first. Sets the running flag.
    void start(std::shared_ptr<korvane::DvsCamera> camera);
    /// Clears the running flag and joins: at once, whatever the loop waits for.
    void stop();

    /// Time of the last event painted, microseconds. Any thread.
    std::uint64_t lastTimestamp() const { return lastEventTimestamp.load(); }

private:
    void run(korvane::DvsCamera& camera, std::uint64_t session);
    /// Until it is stopped, or the camera is gone.
    void read(korvane::DvsCamera& camera);

    SourceState& state;
    const DisplayTiming& timing;
    const Hooks hooks;
    PacedWait wait;
    std::thread readingThread;
    std::atomic<std::uint64_t> lastEventTimestamp{0};
};
