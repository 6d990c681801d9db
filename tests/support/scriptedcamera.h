#pragma once

#include "camera/driver/backend.h"
#include "camera/driver/dvscamera.h"
#include "tests/support/scriptedfusioncamera.h"
#include "tests/support/scriptedlog.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// A DVS-only camera that does what a test tells it. Notes what it is asked as "<name> <operation>
/// <arguments>", and its end as "<name> closed"; not what a reading loop asks, unless told so.
class ScriptedCamera : public korvane::DvsCamera
{
public:
    ScriptedCamera(std::string cameraName, ScriptedLog& callLog);
    ~ScriptedCamera() override;

    bool isConnected() override;
    void releaseStream(int handle) override;
    bool getNextEventBatch(std::vector<korvane::Event2D>& out) override;
    void setBatchTime(std::uint64_t microseconds) override;
    int start() override;
    void stop() override;
    void startRecording(std::string path) override;
    void stopRecording() override;
    korvane::RecorderState recorderState() override;

    using DvsCamera::addTool;

    /// Hands a batch to the reading loop, after those handed before; perhaps an empty one.
    void push(std::vector<korvane::Event2D> batch);
    /// The recorder ends by itself: now, or from then on when it is started or stopped.
    void failRecorder(const std::string& error);
    void failRecorderAtStart(const std::string& error);
    void failRecorderAtStop(const std::string& error);

    std::atomic<bool> connected{true};
    std::atomic<int> startResult{0};
    /// Called by getNextEventBatch on the reading thread. Set before use.
    std::function<void()> onRead;
    /// Notes getNextEventBatch and isConnected as well. Set before use.
    bool logsReading = false;

private:
    void note(const std::string& text) { log.add(name + ' ' + text); }

    const std::string name;
    ScriptedLog& log;
    std::mutex mutex;
    std::deque<std::vector<korvane::Event2D>> batches; ///< under mutex
    korvane::RecorderState recorder; ///< under mutex
    std::string errorAtStart; ///< under mutex
    std::string errorAtStop; ///< under mutex
};

/// Offers scripted cameras. A camera opened is owned by its user only, as with any backend. Notes
/// "open <serial>".
class ScriptedBackend : public korvane::Backend
{
public:
    explicit ScriptedBackend(ScriptedLog& callLog) : log(callLog) {}

    std::string name() const override { return "scripted"; }
    std::vector<korvane::CameraDescription> cameraDescriptions() override;
    std::shared_ptr<korvane::DvsCamera> openCamera(const std::string& serial) override;
    std::shared_ptr<korvane::FusionCamera> openFusionCamera(const std::string& serial) override;

    /// Offers a camera more.
    void offer(const std::string& serial, const std::string& product);
    /// The camera opened last with this serial, empty once it is closed.
    std::shared_ptr<ScriptedCamera> opened(const std::string& serial) const;

    /// The fusion camera opened last, empty once it is closed.
    std::shared_ptr<ScriptedFusionCamera> openedFusion() const;

    /// Called for a camera before it is handed out, on the opening thread; false refuses it. Set before use.
    std::function<bool(ScriptedCamera& camera)> onOpen;
    std::function<bool(ScriptedFusionCamera& camera)> onOpenFusion;

private:
    ScriptedLog& log;
    mutable std::mutex mutex;
    std::vector<korvane::CameraDescription> descriptions; ///< under mutex
    std::vector<std::pair<std::string, std::weak_ptr<ScriptedCamera>>> cameras; ///< under mutex
    std::weak_ptr<ScriptedFusionCamera> fusionCamera; ///< under mutex
};
