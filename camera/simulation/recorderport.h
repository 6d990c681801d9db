#pragma once

#include "camera/driver/recorderstate.h"
#include "camera/recording/recorder.h"
#include "camera/simulation/eventsink.h"
#include "camera/simulation/eventstream.h"

#include <memory>
#include <mutex>
#include <string>

namespace korvane::simulation {

/// What a streamed camera records with, and where else its events can be had. start() and stop() belong to
/// one thread, deliver() to the stream's, the rest to any.
class RecorderPort
{
public:
    RecorderPort(recording::Geometry geometry, std::string serial);

    /// Every event from now on goes to `next` too; after the return no call into the former sink runs. May be
    /// empty.
    void setSink(std::shared_ptr<EventSink> next);
    /// Waits while the disk is behind: a recording loses nothing. A step that is not to be recorded goes to
    /// the sink only.
    void deliver(const StreamStep& step, bool recorded = true);

    void start(const std::string& path) { recorder.start(path); }
    void stop() { recorder.stop(); }
    RecorderState state() const { return recorder.state(); }

private:
    std::mutex sinkMutex;
    std::shared_ptr<EventSink> sink; // guarded by sinkMutex
    recording::Recorder recorder;
};

} // namespace korvane::simulation
