#include "tests/support/scriptedcamera.h"

#include <algorithm>

#include <utility>

ScriptedCamera::ScriptedCamera(std::string cameraName, ScriptedLog& callLog)
    : name(std::move(cameraName)), log(callLog)
{
}

ScriptedCamera::~ScriptedCamera()
{
    note("closed");
}

bool ScriptedCamera::isConnected()
{
    if (logsReading)
        note("isConnected");
    return connected;
}

void ScriptedCamera::releaseStream(int handle)
{
    note("releaseStream " + std::to_string(handle));
}

bool ScriptedCamera::getNextEventBatch(std::vector<korvane::Event2D>& out)
{
    if (logsReading)
        note("getNextEventBatch");
    if (onRead)
        onRead();
    const std::lock_guard guard(mutex);
    if (batches.empty())
        return false;
    out = std::move(batches.front());
    batches.pop_front();
    return true;
}

void ScriptedCamera::setBatchTime(std::uint64_t microseconds)
{
    note("setBatchTime " + std::to_string(microseconds));
}

int ScriptedCamera::start()
{
    note("start");
    return startResult;
}

void ScriptedCamera::stop()
{
    note("stop");
}

void ScriptedCamera::startRecording(std::string path)
{
    note("startRecording " + path);
    const std::lock_guard guard(mutex);
    recorder = {errorAtStart.empty(), std::move(path), errorAtStart};
}

void ScriptedCamera::stopRecording()
{
    note("stopRecording");
    const std::lock_guard guard(mutex);
    if (recorder.writing)
        recorder.error = errorAtStop;
    recorder.writing = false;
}

korvane::RecorderState ScriptedCamera::recorderState()
{
    const std::lock_guard guard(mutex);
    return recorder;
}

void ScriptedCamera::push(std::vector<korvane::Event2D> batch)
{
    const std::lock_guard guard(mutex);
    batches.push_back(std::move(batch));
}

void ScriptedCamera::failRecorder(const std::string& error)
{
    const std::lock_guard guard(mutex);
    recorder.writing = false;
    recorder.error = error;
}

void ScriptedCamera::failRecorderAtStart(const std::string& error)
{
    const std::lock_guard guard(mutex);
    errorAtStart = error;
}

void ScriptedCamera::failRecorderAtStop(const std::string& error)
{
    const std::lock_guard guard(mutex);
    errorAtStop = error;
}

std::vector<korvane::CameraDescription> ScriptedBackend::cameraDescriptions()
{
    const std::lock_guard guard(mutex);
    return descriptions;
}

std::shared_ptr<korvane::DvsCamera> ScriptedBackend::openCamera(const std::string& serial)
{
    log.add("open " + serial);
    auto camera = std::make_shared<ScriptedCamera>(serial, log);
    if (onOpen && !onOpen(*camera))
        return nullptr;
    const std::lock_guard guard(mutex);
    cameras.emplace_back(serial, camera);
    return camera;
}

std::shared_ptr<korvane::FusionCamera> ScriptedBackend::openFusionCamera(const std::string& serial)
{
    {
        const std::lock_guard guard(mutex);
        if (std::none_of(descriptions.begin(), descriptions.end(),
                         [&serial](const auto& description) { return description.serial == serial; }))
            return nullptr;
    }
    log.add("open fusion " + serial);
    auto camera = std::make_shared<ScriptedFusionCamera>(serial, log);
    if (onOpenFusion && !onOpenFusion(*camera))
        return nullptr;
    const std::lock_guard guard(mutex);
    fusionCamera = camera;
    return camera;
}

std::shared_ptr<ScriptedFusionCamera> ScriptedBackend::openedFusion() const
{
    const std::lock_guard guard(mutex);
    return fusionCamera.lock();
}

void ScriptedBackend::offer(const std::string& serial, const std::string& product)
{
    const std::lock_guard guard(mutex);
    descriptions.push_back({serial, product, {}});
}

std::shared_ptr<ScriptedCamera> ScriptedBackend::opened(const std::string& serial) const
{
    const std::lock_guard guard(mutex);
    for (auto camera = cameras.rbegin(); camera != cameras.rend(); ++camera) {
        if (camera->first == serial)
            return camera->second.lock();
    }
    return nullptr;
}
