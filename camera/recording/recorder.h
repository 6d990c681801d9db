#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/driver/recorderstate.h"
#include "camera/recording/evtencoding.h"
#include "camera/recording/outputfile.h"

#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>

namespace korvane::recording {

class RecordingWriter;

/// What a camera records with: one recording after another, each in a new file. start() and stop() belong to
/// one thread, push() to the stream's; state() may be called from any.
class Recorder
{
public:
    /// A new file at a path; nothing with the reason when it cannot be made, and with `taken` when only the
    /// name is in the way.
    using OpenFile
        = std::function<std::unique_ptr<OutputFile>(const QString& path, QString& error, bool& taken)>;

    Recorder(Geometry geometry, std::string serial, OpenFile openFile = openNewFile);
    /// Stops.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Starts a recording at `path` (local 8-bit encoding), or at NAME-1, NAME-2, ... where that name is
    /// taken; a missing folder is made. What goes wrong stands in state().
    void start(const std::string& path);
    /// Completes the recording. A file that got no event is removed.
    void stop();
    /// Records events and triggers, each in time order; waits while the disk is behind. Does nothing when no
    /// recording runs.
    void push(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers = {});
    void push(const Event2D* begin, const Event2D* end) { push(std::span(begin, end)); }
    RecorderState state() const;

    static std::unique_ptr<OutputFile> openNewFile(const QString& path, QString& error, bool& taken);

private:
    std::shared_ptr<RecordingWriter> current() const;
    void fail(const QString& path, const QString& reason);

    const Geometry geometry;
    const std::string serial;
    const OpenFile openFile;
    mutable std::mutex mutex;
    std::shared_ptr<RecordingWriter> writer; ///< under mutex
    RecorderState recorderState; ///< under mutex
};

} // namespace korvane::recording
