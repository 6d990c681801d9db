#pragma once

#include "camera/driver/cameratool.h"
#include "camera/driver/event2d.h"
#include "camera/driver/recorderstate.h"
#include "camera/driver/tooltype.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace korvane {

/// An open camera that delivers change events. `getNextEventBatch` and `isConnected` are called from the
/// reading thread, everything else from the GUI thread; dropping the last pointer closes the camera.
class DvsCamera
{
public:
    DvsCamera() = default;
    virtual ~DvsCamera() = default;
    DvsCamera(const DvsCamera&) = delete;
    DvsCamera& operator=(const DvsCamera&) = delete;

    /// False once the camera is gone; it does not come back. Any thread.
    virtual bool isConnected() = 0;
    /// Ends the delivery of the stream with this handle, just before stop().
    virtual void releaseStream(int handle) = 0;
    /// Puts the newest whole span of events (see setBatchTime) into `out`, replacing what it held; false when
    /// no span is complete since the last call. Spans nobody fetched are dropped, from here only, never from
    /// a recording.
    virtual bool getNextEventBatch(std::vector<Event2D>& out) = 0;
    /// The time that one batch covers, in microseconds; 0 is ignored.
    virtual void setBatchTime(std::uint64_t microseconds) = 0;
    /// Starts streaming; 0 on success.
    virtual int start() = 0;
    virtual void stop() = 0;
    /// Records into a new file at `path` (local 8-bit encoding); begins with the next start when not
    /// streaming.
    virtual void startRecording(std::string path) = 0;
    /// Returns when the file is complete.
    virtual void stopRecording() = 0;
    /// Whether the recorder writes, and if it ended by itself, why.
    virtual RecorderState recorderState() = 0;

    /// The tool of this kind, empty when the camera has none.
    const std::shared_ptr<CameraTool> getTool(ToolType type) const;

protected:
    /// Called by a backend while it constructs the camera.
    void addTool(ToolType type, std::shared_ptr<CameraTool> tool);

private:
    std::map<ToolType, std::shared_ptr<CameraTool>> tools;
};

} // namespace korvane
