#include "camera/simulation/simulateddvscamera.h"

#include <QtGlobal>

#include <chrono>
#include <exception>
#include <utility>

namespace korvane::simulation {

namespace {

using Clock = std::chrono::steady_clock;

// A stream that lags by less is only a machine that was busy for a moment.
constexpr std::chrono::milliseconds noticeableLag{500};

constexpr int notConnected = 1;
constexpr int cannotStream = 2;

} // namespace

SimulatedDvsCamera::SimulatedDvsCamera(const SimulatedCameraConfig& config)
    : SimulatedDvsCamera(config, makeScene(config))
{
}

SimulatedDvsCamera::SimulatedDvsCamera(const SimulatedCameraConfig& config, std::unique_ptr<Scene> watched)
    : serial(config.serial), startFails(config.failStart),
      generator(std::move(watched), config.sensor, config.seed), parameters(sanitized(config.sensor))
{
}

SimulatedDvsCamera::~SimulatedDvsCamera()
{
    const std::lock_guard control(controlMutex);
    endThread();
}

bool SimulatedDvsCamera::isConnected()
{
    return connected;
}

void SimulatedDvsCamera::releaseStream(int)
{
    // There is one stream, and stop() ends it.
}

bool SimulatedDvsCamera::getNextEventBatch(std::vector<Event2D>& out)
{
    return connected && spans.take(out);
}

void SimulatedDvsCamera::setBatchTime(std::uint64_t microseconds)
{
    spans.setSpan(microseconds);
}

int SimulatedDvsCamera::start()
{
    const std::lock_guard control(controlMutex);
    if (!connected)
        return notConnected;
    if (startFails)
        return cannotStream;
    if (thread.joinable())
        return 0;
    spans.dropWaiting();
    {
        const std::lock_guard lock(mutex);
        ending = false;
    }
    thread = std::thread([this] { generate(); });
    return 0;
}

void SimulatedDvsCamera::stop()
{
    const std::lock_guard control(controlMutex);
    endThread();
}

void SimulatedDvsCamera::endThread()
{
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
    if (thread.joinable())
        thread.join();
}

void SimulatedDvsCamera::pull()
{
    connected = false;
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
}

void SimulatedDvsCamera::startRecording(std::string path)
{
    recorder.start(std::move(path));
}

void SimulatedDvsCamera::stopRecording()
{
    recorder.stop();
}

RecorderState SimulatedDvsCamera::recorderState()
{
    return recorder.state();
}

SensorParameters SimulatedDvsCamera::sensorParameters() const
{
    const std::lock_guard lock(mutex);
    return parameters;
}

void SimulatedDvsCamera::setSensorParameters(const SensorParameters& next)
{
    const std::lock_guard lock(mutex);
    parameters = sanitized(next);
    newParameters = parameters;
}

void SimulatedDvsCamera::setEventSink(std::shared_ptr<EventSink> sink)
{
    recorder.setSink(std::move(sink));
}

/// Waits until a step is due and takes over what was set meanwhile; false when the stream ends.
bool SimulatedDvsCamera::waitFor(Clock::time_point due)
{
    std::optional<SensorParameters> changed;
    {
        std::unique_lock lock(mutex);
        wake.wait_until(lock, due, [this] { return ending; });
        if (ending)
            return false;
        changed.swap(newParameters);
    }
    if (changed)
        generator.setParameters(*changed);
    return true;
}

void SimulatedDvsCamera::generate()
{
    try {
        const std::chrono::microseconds made(generator.time());
        const Clock::time_point epoch = Clock::now() - made;
        bool lagReported = false;
        for (;;) {
            const std::chrono::microseconds stepEnd(generator.time() + EventGenerator::stepUs);
            if (!waitFor(epoch + stepEnd))
                return;
            if (!lagReported && Clock::now() - (epoch + stepEnd) > noticeableLag) {
                lagReported = true;
                qWarning(
                    "Simulated camera %s makes more events than this machine can follow; they come late.",
                    serial.c_str());
            }
            const std::span<const Event2D> events = generator.generateStep();
            recorder.deliver(events);
            spans.append(events, generator.time());
            madeUntil = generator.time();
        }
    } catch (const std::exception& error) {
        qWarning("Simulated camera %s stops: %s", serial.c_str(), error.what());
        connected = false;
    }
}

} // namespace korvane::simulation
