#pragma once

#include "camera/driver/apsframe.h"
#include "camera/driver/cameradescription.h"
#include "camera/driver/cameratool.h"
#include "camera/driver/event2d.h"
#include "camera/driver/recorderstate.h"
#include "camera/driver/streamtype.h"
#include "camera/driver/tooltype.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace korvane {

/// The change events between two intensity frames, counted per pixel.
struct EventCountFrame
{
    /// Two counters per pixel, polarity 0 then polarity 1, row-major at the DVS resolution.
    std::vector<std::uint16_t> counts;
};

/// An open camera with both a DVS and an APS sensor. Callbacks run on the driver's threads; `isConnected` and
/// `getEventFrameAt` may be called from them, callbacks and tools are set up by the worker that opens the
/// camera, everything else comes from the GUI thread. The last pointer may be dropped on a callback thread.
class FusionCamera
{
public:
    using EventsCallback = std::function<void(const Event2D* begin, const Event2D* end)>;
    using ApsFrameCallback = std::function<void(const ApsFrame& frame)>;

    FusionCamera() = default;
    virtual ~FusionCamera() = default;

    /// False once the camera is gone; it does not come back. Any thread.
    virtual bool isConnected() = 0;
    /// Called for each batch of events, in time order.
    virtual void addEventsStreamHandleCallback(EventsCallback callback) = 0;
    /// Called for each intensity frame.
    virtual void addApsFrameCallback(ApsFrameCallback callback) = 0;
    virtual void start(STREAM_TYPE type) = 0;
    virtual void stop(STREAM_TYPE type) = 0;
    /// Records into new files beside `path` (local 8-bit encoding, ending in .raw).
    virtual void startRecording(std::string path, STREAM_TYPE type) = 0;
    /// Returns when the files are complete.
    virtual void stopRecording(STREAM_TYPE type) = 0;
    /// Fills `out` with the counts that belong to the frame with this timestamp; false when there are none.
    virtual bool getEventFrameAt(std::shared_ptr<EventCountFrame>& out, std::uint64_t timestamp) = 0;
    /// Whether the recorder writes, and if it ended by itself, why.
    virtual RecorderState recorderState() = 0;

    /// The tool of this kind, empty when the camera has none.
    const std::shared_ptr<CameraTool> getTool(ToolType type) const;
    const CameraDescription getDvsDesc() const { return dvsDescription; }

protected:
    FusionCamera(const FusionCamera&) = default;
    FusionCamera(FusionCamera&&) = default;
    FusionCamera& operator=(const FusionCamera&) = default;
    FusionCamera& operator=(FusionCamera&&) = default;

    /// Called by a backend while it constructs the camera.
    void addTool(ToolType type, std::shared_ptr<CameraTool> tool);

    /// What a backend keeps for one of the camera's streams.
    struct StreamState
    {
        bool streaming = false;
    };

    CameraDescription dvsDescription;
    std::map<STREAM_TYPE, StreamState> streams;

private:
    std::map<ToolType, std::shared_ptr<CameraTool>> tools;
};

} // namespace korvane
