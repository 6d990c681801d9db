#include "camera/simulation/streamedfusioncamera.h"

#include "camera/simulation/fusionstage.h"

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

std::shared_ptr<StreamedFusionCamera> StreamedFusionCamera::make(const CameraDescription& description,
                                                                 std::unique_ptr<EventStream> events,
                                                                 std::unique_ptr<FrameSource> frames)
{
    return share(new StreamedFusionCamera(description, std::move(events), std::move(frames)));
}

void StreamedFusionCamera::prepareRelease()
{
    undertaker(); // made before the camera can be dropped, gone after it
}

void StreamedFusionCamera::release(StreamedFusionCamera* camera)
{
    if (deliveringCamera == camera)
        undertaker().run([camera] { delete camera; });
    else
        delete camera;
}

StreamedFusionCamera::StreamedFusionCamera(const CameraDescription& description,
                                           std::unique_ptr<EventStream> events,
                                           std::unique_ptr<FrameSource> frames)
    : serial(description.serial), stream(std::move(events)), stepUs(stream->nextTime() - stream->time()),
      tools(stream->geometry()), recorder(stream->geometry(), serial),
      intensityRecorder(fusiongeometry::apsWidth, fusiongeometry::apsHeight), frameSource(std::move(frames)),
      pacer(serial, *stream, [this](const StreamStep& step) { take(step); })
{
    dvsDescription = description;
    offerTools();
}

void StreamedFusionCamera::offerTools()
{
    for (const auto& [type, tool] : tools.all())
        addTool(type, tool);
}

StreamedFusionCamera::~StreamedFusionCamera()
{
    const std::lock_guard control(controlMutex);
    pacer.stop();
    endFrames();
    recorder.stop();
    intensityRecorder.stop();
}

bool StreamedFusionCamera::isConnected()
{
    return pacer.isConnected();
}

void StreamedFusionCamera::addEventsStreamHandleCallback(EventsCallback callback)
{
    const std::lock_guard lock(callbackMutex);
    eventsCallbacks.push_back(std::move(callback));
}

void StreamedFusionCamera::addApsFrameCallback(ApsFrameCallback callback)
{
    const std::lock_guard lock(callbackMutex);
    frameCallbacks.push_back(std::move(callback));
}

void StreamedFusionCamera::start(STREAM_TYPE type)
{
    const std::lock_guard control(controlMutex);
    if (pacer.isRunning() || !pacer.isConnected())
        return;
    endFrames();
    counts.clear();
    {
        const std::lock_guard lock(mutex);
        ending = false;
        coveredUntil = stream->time();
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

void StreamedFusionCamera::stop(STREAM_TYPE)
{
    const std::lock_guard control(controlMutex);
    pacer.stop();
    endFrames();
}

void StreamedFusionCamera::endFrames()
{
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
    if (frameThread.joinable())
        frameThread.join();
}

void StreamedFusionCamera::pull()
{
    pacer.pull();
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
}

void StreamedFusionCamera::startRecording(std::string path, STREAM_TYPE)
{
    setRecorded(false);
    recorder.start(path);
    const RecorderState state = recorder.state();
    if (state.writing)
        intensityRecorder.start(state.path);
    else
        intensityRecorder.stop(); // of the recording before, if it has not been stopped
    setRecorded(state.writing);
}

void StreamedFusionCamera::stopRecording(STREAM_TYPE)
{
    setRecorded(false);
    intensityRecorder.stop();
    recorder.stop();
}

void StreamedFusionCamera::setRecorded(bool on)
{
    const std::lock_guard lock(recordingMutex);
    recorded = on;
}

RecorderState StreamedFusionCamera::recorderState()
{
    const RecorderState events = recorder.state();
    if (!events.error.empty())
        return events;
    const RecorderState frames = intensityRecorder.state();
    // Without frames the events are a recording still.
    return frames.error.empty() ? events : RecorderState{events.writing, frames.path, frames.error};
}

bool StreamedFusionCamera::getEventFrameAt(std::shared_ptr<EventCountFrame>& out, std::uint64_t timestamp)
{
    return counts.get(out, timestamp);
}

void StreamedFusionCamera::setEventSink(std::shared_ptr<EventSink> sink)
{
    recorder.setSink(std::move(sink));
}

bool StreamedFusionCamera::isRecorded()
{
    const std::lock_guard lock(recordingMutex);
    return recorded;
}

/// On the pacer's thread.
void StreamedFusionCamera::take(const StreamStep& made)
{
    const Delivering delivering(this);
    const StreamStep step = tools.process(made);
    {
        const std::lock_guard lock(recordingMutex);
        recorder.deliver(step, recorded);
        if (recorded)
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

void StreamedFusionCamera::runFrames()
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
std::uint64_t StreamedFusionCamera::awaitFrame(std::uint64_t next)
{
    std::unique_lock lock(mutex);
    wake.wait(lock, [this, next] { return ending || coveredUntil > next; });
    if (ending)
        return 0;
    const std::uint64_t newest = (coveredUntil - 1) / framePeriod * framePeriod;
    const std::chrono::microseconds ahead(static_cast<std::int64_t>(newest + stepUs)
                                          - static_cast<std::int64_t>(coveredUntil));
    wake.wait_until(lock, coveredAt + ahead, [this] { return ending; });
    return ending ? 0 : newest;
}

void StreamedFusionCamera::makeFrames()
{
    std::uint64_t next = 0;
    {
        const std::lock_guard lock(mutex);
        next = (coveredUntil / framePeriod + 1) * framePeriod;
    }
    while (const std::uint64_t time = awaitFrame(next)) {
        if (time > next && !toldSlow) {
            toldSlow = true;
            qWarning("Camera %s makes fewer than 30 intensity frames a second on this machine.",
                     serial.c_str());
        }
        // Before the picture is drawn, which takes its time: the events that come meanwhile are the next
        // one's.
        counts.closeFrame(time);
        const ApsFrame frame = frameSource->frameAt(time);
        next = time + framePeriod;
        if (!frame.pixels) {
            counts.reopenLast();
            continue;
        }
        // Its events have come: either all of them are recorded, or it is none of the recording's.
        if (isRecorded())
            intensityRecorder.push(frame);
        std::vector<ApsFrameCallback> callbacks;
        {
            const std::lock_guard lock(callbackMutex);
            callbacks = frameCallbacks;
        }
        for (const ApsFrameCallback& callback : callbacks)
            callback(frame);
    }
}

} // namespace korvane::simulation
