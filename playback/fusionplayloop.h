#pragma once

#include "camera/driver/apsfilereader.h"
#include "camera/driver/dvsfilereader.h"
#include "playback/dvsplayloop.h"
#include "playback/fusionpicture.h"

#include <QImage>

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

/// Where a fusion recording's playback goes; called on the play thread.
class FusionPlaybackOutput
{
public:
    FusionPlaybackOutput() = default;
    virtual ~FusionPlaybackOutput() = default;
    FusionPlaybackOutput(const FusionPlaybackOutput&) = delete;
    FusionPlaybackOutput& operator=(const FusionPlaybackOutput&) = delete;

    virtual void showImage(const QImage& image) = 0;
    virtual void showTimeStamp(std::uint64_t timestamp_us) = 0;
    virtual void showProgress(std::uint64_t cur_ts, std::uint64_t total_ts) = 0;
    virtual void fileFinished() = 0;
};

/// The two files of an open fusion recording.
struct FusionRecording
{
    std::shared_ptr<korvane::DvsFileReader> dvsReader;
    std::shared_ptr<korvane::ApsFileReader> apsReader;
    std::uint64_t startTimestamp = 0; ///< first event, microseconds
    std::uint64_t endTimestamp = 0; ///< last event, microseconds
};

/// Plays a fusion recording on a thread of its own: each 33333 us of wall time one intensity frame and the
/// events of 33333 us over it. start() and stop() belong to one thread, setReplay() to any.
class FusionPlayLoop
{
public:
    /// Microseconds of wall time a tick takes, and of recording it shows.
    static constexpr std::int64_t tickPeriod = 33333;

    FusionPlayLoop(FusionPicture& picture, FusionPlaybackOutput& output, PlaybackClock& clock);
    /// Stops and joins.
    ~FusionPlayLoop();
    FusionPlayLoop(const FusionPlayLoop&) = delete;
    FusionPlayLoop& operator=(const FusionPlayLoop&) = delete;

    /// Plays on from where the readers stand; a loop that runs is ended first. Both readers are there.
    void start(const FusionRecording& recording);
    /// Ends after the tick in work and joins. Calling it from the play thread is an error
    /// (std::errc::resource_deadlock_would_occur).
    void stop();
    /// At the end: begin again instead of ending.
    void setReplay(bool on) { replay = on; }
    bool isPlaying() const { return playing; }

private:
    void playLoop();
    void tick();
    bool drawNextFrame();
    bool drawNextEvents();
    void rewind();

    FusionPicture& picture;
    FusionPlaybackOutput& output;
    PlaybackClock& clock;
    FusionRecording recording; ///< the play thread's, while it runs
    std::weak_ptr<korvane::ApsFileReader> frameReader; ///< of whom `frame` is
    korvane::ApsFrame frame; ///< the play thread's: the frame read last
    std::atomic<bool> playing{false};
    std::atomic<bool> replay{false};
    std::thread playThread;
};
