#pragma once

#include "camera/driver/dvsfilereader.h"
#include "display/displaytiming.h"
#include "display/pacedwait.h"
#include "display/sourcestate.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>

/// What a play loop needs of the window. The functions that read may be called from any thread; those that
/// post return at once, and what they post happens later on the GUI thread, in the order of the calls.
class PlaybackView
{
public:
    PlaybackView() = default;
    virtual ~PlaybackView() = default;
    PlaybackView(const PlaybackView&) = delete;
    PlaybackView& operator=(const PlaybackView&) = delete;

    /// The range that playback is confined to, microseconds.
    virtual std::uint64_t rangeStart() const = 0;
    virtual std::uint64_t rangeEnd() const = 0;
    virtual bool isLooping() const = 0;

    /// Paints a batch, perhaps an empty one.
    virtual void addEvents(const korvane::Event2D* begin, const korvane::Event2D* end) = 0;
    /// Takes the picture that the events made and has it shown.
    virtual void postPicture() = 0;
    /// Shows a position, unless the user has sought (see PlayPosition::seeks) since `seek`.
    virtual void postPosition(std::uint64_t position, std::uint64_t seek) = 0;
    /// Presses pause, unless play session `session` is over.
    virtual void postEnd(std::uint64_t session) = 0;
};

/// The clock that a play loop paces itself by.
class PlaybackClock
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    PlaybackClock() = default;
    virtual ~PlaybackClock() = default;
    PlaybackClock(const PlaybackClock&) = delete;
    PlaybackClock& operator=(const PlaybackClock&) = delete;

    virtual TimePoint now() = 0;
    /// Waits for this long, or until `running` is false and wake() was called.
    virtual void waitFor(std::chrono::microseconds duration, const std::atomic<bool>& running) = 0;
    virtual void wake() = 0;
};

/// The steady clock.
class SteadyPlaybackClock : public PlaybackClock
{
public:
    TimePoint now() override { return std::chrono::steady_clock::now(); }
    void waitFor(std::chrono::microseconds duration, const std::atomic<bool>& running) override
    {
        wait.waitFor(duration, running);
    }
    void wake() override { wait.wake(); }

private:
    PacedWait wait;
};

/// An open DVS-only recording and the position in it, shared by the play loop and the GUI thread.
struct PlayPosition
{
    std::shared_ptr<korvane::DvsFileReader> fileReader; ///< set while nothing plays
    std::mutex readerMutex; ///< serialises fileReader between a tick and the steps
    std::atomic<std::uint64_t> fileCurTs{0}; ///< microseconds
    std::atomic<std::uint64_t> seeks{0}; ///< changes with every move by the user

    /// Moves the position by the user's hand: what a tick in work has is dropped. GUI thread.
    void seek(std::uint64_t time)
    {
        // Counted on both sides: whatever a tick reads in between, its number is over by the time it posts.
        ++seeks;
        fileCurTs = time;
        ++seeks;
    }
};

/// Plays a DVS-only recording on a thread of its own: one picture each 33333 us of wall time, while
/// SourceState::filePlaying is set. start() and stop() belong to one thread.
class DvsPlayLoop
{
public:
    /// Microseconds of wall time from one picture to the next.
    static constexpr std::int64_t tickPeriod = 33333;

    DvsPlayLoop(SourceState& state, const DisplayTiming& timing, PlayPosition& position, PlaybackView& view,
                PlaybackClock& clock);
    /// Stops and joins.
    ~DvsPlayLoop();
    DvsPlayLoop(const DvsPlayLoop&) = delete;
    DvsPlayLoop& operator=(const DvsPlayLoop&) = delete;

    /// Sets the running flag and starts; a thread that has ended by itself is joined first.
    void start();
    /// Clears the running flag and joins, after the tick in work at most.
    void stop();

private:
    enum class Tick {
        Goes, ///< on with the next one
        Ended, ///< the end of the range, not looping
    };

    void run(std::uint64_t session);
    void dvsPlayLoop(std::uint64_t session);
    Tick tick(std::uint64_t session);
    Tick endOfRange(std::uint64_t session, std::uint64_t reached, std::uint64_t seek);

    SourceState& state;
    const DisplayTiming& timing;
    PlayPosition& position;
    PlaybackView& view;
    PlaybackClock& clock;
    std::thread filePlayThread;
};
