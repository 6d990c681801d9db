#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/recorderstate.h"
#include "camera/recording/recordingwriter.h"

#include <QIODevice>
#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace korvane::recording {

/// What a camera records with: one recording after another, each in a new file. start() and stop() belong to
/// one thread, push() to the stream's; state() may be called from any.
class Recorder
{
public:
    /// Opens a new file at a path, or gives nothing and the reason.
    using OpenDevice = std::function<std::unique_ptr<QIODevice>(const QString& path, QString& error)>;

    Recorder(Geometry geometry, std::string serial, OpenDevice openDevice = openNewFile);
    /// Stops.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Starts a recording at `path` (local 8-bit encoding), or at NAME-1, NAME-2, ... where that name is
    /// taken; a missing folder is made. What goes wrong stands in state().
    void start(const std::string& path);
    /// Completes the recording. A file that got no event is removed.
    void stop();
    /// Records events, in time order; waits while the disk is behind. Does nothing when no recording runs.
    void push(const Event2D* begin, const Event2D* end);
    RecorderState state() const;

    static std::unique_ptr<QIODevice> openNewFile(const QString& path, QString& error);

private:
    std::shared_ptr<RecordingWriter> current() const;
    void fail(const QString& path, const QString& reason);

    const Geometry geometry;
    const std::string serial;
    const OpenDevice openDevice;
    mutable std::mutex mutex;
    std::shared_ptr<RecordingWriter> writer; ///< under mutex
    RecorderState recorderState; ///< under mutex
};

} // namespace korvane::recording
