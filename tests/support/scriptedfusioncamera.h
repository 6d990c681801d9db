#pragma once

#include "camera/driver/fusioncamera.h"
#include "tests/support/scriptedlog.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// A fusion camera that does what a test tells it. Notes what it is asked as "<name> <operation>
/// <arguments>", and its end as "<name> closed".
class ScriptedFusionCamera : public korvane::FusionCamera
{
public:
    ScriptedFusionCamera(std::string cameraName, ScriptedLog& callLog)
        : name(std::move(cameraName)), log(callLog)
    {
        dvsDescription.serial = name;
        dvsDescription.product = "Pellix";
    }
    ~ScriptedFusionCamera() override { note("closed"); }
    ScriptedFusionCamera(const ScriptedFusionCamera&) = delete;
    ScriptedFusionCamera& operator=(const ScriptedFusionCamera&) = delete;

    bool isConnected() override { return connected; }
    void addEventsStreamHandleCallback(EventsCallback callback) override
    {
        note("event callback");
        onEvents = std::move(callback);
    }
    void addApsFrameCallback(ApsFrameCallback callback) override
    {
        note("frame callback");
        onFrame = std::move(callback);
    }
    void start(korvane::STREAM_TYPE type) override { note("start " + std::to_string(type)); }
    void stop(korvane::STREAM_TYPE type) override { note("stop " + std::to_string(type)); }
    void startRecording(std::string path, korvane::STREAM_TYPE type) override
    {
        note("record " + path + ' ' + std::to_string(type));
        const std::lock_guard guard(mutex);
        recorder = {true, path, {}};
    }
    void stopRecording(korvane::STREAM_TYPE type) override
    {
        note("stop recording " + std::to_string(type));
        const std::lock_guard guard(mutex);
        recorder.writing = false;
    }
    bool getEventFrameAt(std::shared_ptr<korvane::EventCountFrame>& out, std::uint64_t timestamp) override
    {
        return onCounts && onCounts(out, timestamp);
    }
    korvane::RecorderState recorderState() override
    {
        const std::lock_guard guard(mutex);
        return recorder;
    }
    using FusionCamera::addTool;

    /// The recorder ends by itself.
    void failRecorder(const std::string& error)
    {
        const std::lock_guard guard(mutex);
        recorder.writing = false;
        recorder.error = error;
    }

    /// The frames are no longer recorded; the events are.
    void failRecorderInPart(const std::string& path, const std::string& error)
    {
        const std::lock_guard guard(mutex);
        recorder.path = path;
        recorder.error = error;
    }

    std::atomic<bool> connected{true};
    /// Answers getEventFrameAt. Set before use.
    std::function<bool(std::shared_ptr<korvane::EventCountFrame>& out, std::uint64_t timestamp)> onCounts;
    EventsCallback onEvents; ///< what was registered
    ApsFrameCallback onFrame; ///< what was registered

private:
    void note(const std::string& text) { log.add(name + ' ' + text); }

    const std::string name;
    ScriptedLog& log;
    std::mutex mutex;
    korvane::RecorderState recorder; ///< under mutex
};
