#include "camera/simulation/simulatedfusioncamera.h"

#include "camera/simulation/biases.h"
#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/fusionscene.h"

#include <QtGlobal>

#include <exception>
#include <system_error>
#include <utility>

namespace korvane::simulation {

namespace {

using Clock = std::chrono::steady_clock;

/// The camera whose callback runs on this thread.
thread_local const void* deliveringCamera = nullptr;

class Delivering
{
public:
    explicit Delivering(const void* camera) : before(std::exchange(deliveringCamera, camera)) {}
    ~Delivering() { deliveringCamera = before; }
    Delivering(const Delivering&) = delete;
    Delivering& operator=(const Delivering&) = delete;

private:
    const void* before;
};

/// Ends cameras whose last pointer was dropped by their own callback: their threads cannot wait for
/// themselves.
class Undertaker
{
public:
    ~Undertaker()
    {
        for (std::thread& thread : threads)
            thread.join();
    }
    void run(std::function<void()> task)
    {
        const std::lock_guard lock(mutex);
        threads.emplace_back(std::move(task));
    }

private:
    std::mutex mutex;
    std::vector<std::thread> threads; // guarded by mutex
};

Undertaker& undertaker()
{
    static Undertaker instance;
    return instance;
}

} // namespace

std::shared_ptr<SimulatedFusionCamera> SimulatedFusionCamera::make(const SimulatedCameraConfig& config)
{
    undertaker(); // made before the camera, gone after it
    return {new SimulatedFusionCamera(config, std::make_shared<const FusionStage>(config.seed)), &release};
}

void SimulatedFusionCamera::release(SimulatedFusionCamera* camera)
{
    if (deliveringCamera == camera)
        undertaker().run([camera] { delete camera; });
    else
        delete camera;
}

SimulatedFusionCamera::SimulatedFusionCamera(const SimulatedCameraConfig& config,
                                             std::shared_ptr<const FusionStage> stage)
    : serial(config.serial), startFails(config.failStart),
      sensor(std::make_unique<FusionScene>(stage), config.sensor, config.seed), tools(sensor.geometry()),
      recorder(sensor.geometry(), config.serial),
      intensityRecorder(fusiongeometry::apsWidth, fusiongeometry::apsHeight), renderer(stage),
      pacer(config.serial, sensor, [this](const StreamStep& step) { take(step); })
{
    dvsDescription.serial = config.serial;
    dvsDescription.product = config.product;
    tools.add(ToolType::Biases, makeBiasesTool(sensor.parameters(), sensor.parameterHandover()));
    // The intensity sensor tells when a frame begins.
    tools.addTriggerInput(framePeriod);
    for (const auto& [type, tool] : tools.all())
        addTool(type, tool);
}

SimulatedFusionCamera::~SimulatedFusionCamera()
{
    const std::lock_guard control(controlMutex);
    pacer.stop();
    endFrames();
    recorder.stop();
    intensityRecorder.stop();
}

bool SimulatedFusionCamera::isConnected()
{
    return pacer.isConnected();
}

void SimulatedFusionCamera::addEventsStreamHandleCallback(EventsCallback callback)
{
    const std::lock_guard lock(callbackMutex);
    eventsCallbacks.push_back(std::move(callback));
}

void SimulatedFusionCamera::addApsFrameCallback(ApsFrameCallback callback)
{
    const std::lock_guard lock(callbackMutex);
    frameCallbacks.push_back(std::move(callback));
}

void SimulatedFusionCamera::start(STREAM_TYPE type)
{
    const std::lock_guard control(controlMutex);
    if (startFails || pacer.isRunning() || !pacer.isConnected())
        return;
    endFrames();
    counts.clear();
    {
        const std::lock_guard lock(mutex);
        ending = false;
        coveredUntil = sensor.time();
        coveredAt = Clock::now();
    }
    if (type != STREAM_DVS) {
        try {
            frameThread = std::thread([this] { runFrames(); });
        } catch (const std::system_error& error) {
            qWarning("Camera %s cannot make intensity frames: %s", serial.c_str(), error.what());
        }
    }
    pacer.start();
}

void SimulatedFusionCamera::stop(STREAM_TYPE)
{
    const std::lock_guard control(controlMutex);
    pacer.stop();
    endFrames();
}

void SimulatedFusionCamera::endFrames()
{
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
    if (frameThread.joinable())
        frameThread.join();
}

void SimulatedFusionCamera::pull()
{
    pacer.pull();
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
}

void SimulatedFusionCamera::startRecording(std::string path, STREAM_TYPE)
{
    const std::lock_guard lock(recordingMutex);
    recorder.start(path);
    const RecorderState state = recorder.state();
    if (state.writing)
        intensityRecorder.start(state.path);
}

void SimulatedFusionCamera::stopRecording(STREAM_TYPE)
{
    const std::lock_guard lock(recordingMutex);
    recorder.stop();
    intensityRecorder.stop();
}

RecorderState SimulatedFusionCamera::recorderState()
{
    const RecorderState events = recorder.state();
    if (!events.error.empty())
        return events;
    const RecorderState frames = intensityRecorder.state();
    return frames.error.empty() ? events : frames;
}

bool SimulatedFusionCamera::getEventFrameAt(std::shared_ptr<EventCountFrame>& out, std::uint64_t timestamp)
{
    return counts.get(out, timestamp);
}

ApsParameters SimulatedFusionCamera::apsParameters() const
{
    const std::lock_guard lock(mutex);
    return intensity;
}

void SimulatedFusionCamera::setApsParameters(const ApsParameters& parameters)
{
    const std::lock_guard lock(mutex);
    intensity = parameters;
}

void SimulatedFusionCamera::setEventSink(std::shared_ptr<EventSink> sink)
{
    recorder.setSink(std::move(sink));
}

/// On the pacer's thread.
void SimulatedFusionCamera::take(const StreamStep& made)
{
    const Delivering delivering(this);
    const StreamStep step = tools.process(made);
    {
        const std::lock_guard lock(recordingMutex);
        recorder.deliver(step);
        intensityRecorder.noteEvents(step.events);
    }
    counts.count(step.events);
    std::vector<EventsCallback> callbacks;
    {
        const std::lock_guard lock(callbackMutex);
        callbacks = eventsCallbacks;
    }
    for (const EventsCallback& callback : callbacks)
        callback(step.events.data(), step.events.data() + step.events.size());
    {
        const std::lock_guard lock(mutex);
        coveredUntil = step.until;
        coveredAt = Clock::now();
    }
    wake.notify_all();
}

void SimulatedFusionCamera::runFrames()
{
    const Delivering delivering(this);
    try {
        makeFrames();
    } catch (const std::exception& error) {
        qWarning("Camera %s stops: %s", serial.c_str(), error.what());
        pacer.pull();
    }
}

/// Waits until all events up to a frame's time have come, and then for the moment that spaces frames evenly:
/// events come in steps. Returns the time of the newest frame that can be made, or 0 when the stream ends.
std::uint64_t SimulatedFusionCamera::awaitFrame(std::uint64_t next)
{
    std::unique_lock lock(mutex);
    wake.wait(lock, [this, next] { return ending || coveredUntil > next; });
    if (ending)
        return 0;
    const std::uint64_t newest = (coveredUntil - 1) / framePeriod * framePeriod;
    const std::chrono::microseconds ahead(static_cast<std::int64_t>(newest + EventGenerator::stepUs)
                                          - static_cast<std::int64_t>(coveredUntil));
    wake.wait_until(lock, coveredAt + ahead, [this] { return ending; });
    return ending ? 0 : newest;
}

void SimulatedFusionCamera::makeFrames()
{
    std::uint64_t next = 0;
    {
        const std::lock_guard lock(mutex);
        next = (coveredUntil / framePeriod + 1) * framePeriod;
    }
    bool told = false;
    while (const std::uint64_t time = awaitFrame(next)) {
        if (time > next && !told) {
            told = true;
            qWarning("Camera %s makes fewer than 30 intensity frames a second on this machine.",
                     serial.c_str());
        }
        // Before the picture is drawn, which takes its time: the events that come meanwhile are the next
        // one's.
        counts.closeFrame(time);
        renderer.setParameters(apsParameters());
        const ApsFrame frame = renderer.render(time);
        intensityRecorder.push(frame);
        std::vector<ApsFrameCallback> callbacks;
        {
            const std::lock_guard lock(callbackMutex);
            callbacks = frameCallbacks;
        }
        for (const ApsFrameCallback& callback : callbacks)
            callback(frame);
        next = time + framePeriod;
    }
}

} // namespace korvane::simulation
