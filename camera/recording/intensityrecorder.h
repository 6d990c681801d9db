#pragma once

#include "camera/driver/apsframe.h"
#include "camera/driver/event2d.h"
#include "camera/driver/recorderstate.h"
#include "camera/recording/apsvideowriter.h"

#include <QIODevice>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <utility>

namespace korvane::recording {

/// What a fusion camera records its intensity frames with: NAME.mp4 beside the NAME.raw of its events.
/// start() and stop() belong to one thread, noteEvents() to the events' and push() to the frames'; state()
/// may be called from any.
class IntensityRecorder
{
public:
    /// Opens a new file, readable and writable, at a path; nothing with the reason when it cannot be made.
    using OpenDevice = std::function<std::unique_ptr<QIODevice>(const QString& path, QString& error)>;

    /// Size of the frames, pixels, both even.
    IntensityRecorder(int frameWidth, int frameHeight, OpenDevice openDevice = openNewFile);
    /// Stops.
    ~IntensityRecorder();
    IntensityRecorder(const IntensityRecorder&) = delete;
    IntensityRecorder& operator=(const IntensityRecorder&) = delete;

    /// Of the videos that are started from now on; before the first one, by whoever makes this.
    void setEncoders(ApsVideoWriter::Encoders wanted) { encoders = std::move(wanted); }
    /// As setEncoders.
    void setOpenDevice(OpenDevice wanted) { openDevice = std::move(wanted); }
    /// Starts the video that belongs to the events recorded at `rawPath` (local 8-bit encoding). What goes
    /// wrong stands in state().
    void start(const std::string& rawPath);
    /// Completes the video, which then covers the events that were noted. Without an event, or
    /// without a frame, it is removed.
    void stop();
    /// Tells which events the recording holds: the first ones begin the video.
    void noteEvents(std::span<const Event2D> events);
    /// Records a frame. Never waits for the disk or the encoder.
    void push(const ApsFrame& frame);
    RecorderState state() const;
    /// What became of the slots and frames of the recording that runs or ran last. Any thread.
    ApsVideoWriter::Counts counts() const;

    static std::unique_ptr<QIODevice> openNewFile(const QString& path, QString& error);

private:
    void fail(const QString& path, const QString& reason);

    const int width;
    const int height;
    OpenDevice openDevice;
    ApsVideoWriter::Encoders encoders;
    std::mutex pushMutex; ///< held while a frame is taken: the video is completed after the last one
    mutable std::mutex mutex;
    std::shared_ptr<ApsVideoWriter> writer; ///< under mutex
    bool begun = false; ///< under mutex: an event was noted
    std::uint64_t lastEvent = 0; ///< under mutex, microseconds
    RecorderState recorderState; ///< under mutex
    ApsVideoWriter::Counts lastCounts; ///< under mutex: of the video that ended last
};

} // namespace korvane::recording
