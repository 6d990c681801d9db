#include "camera/simulation/simulateddvscamera.h"

#include <QtGlobal>

#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

namespace korvane::simulation {

namespace {

using Clock = std::chrono::steady_clock;

// A stream that lags by less is only a machine that was busy for a moment.
constexpr std::chrono::milliseconds noticeableLag{500};
// After a standstill the stream is not hurried through for longer than this; the sensor's clock then went
// slower.
constexpr std::chrono::seconds worstLag{1};

constexpr int notConnected = 1;
constexpr int cannotStream = 2;

} // namespace

SimulatedDvsCamera::SimulatedDvsCamera(const SimulatedCameraConfig& config)
    : SimulatedDvsCamera(config, makeScene(config))
{
}

SimulatedDvsCamera::SimulatedDvsCamera(const SimulatedCameraConfig& config, std::unique_ptr<Scene> watched)
    : serial(config.serial), startFails(config.failStart),
      generator(std::move(watched), config.sensor, config.seed),
      recorder({static_cast<std::uint16_t>(generator.scene().width()),
                static_cast<std::uint16_t>(generator.scene().height())},
               config.serial),
      parameters(sanitized(config.sensor))
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
    try {
        thread = std::thread([this] { generate(); });
    } catch (const std::system_error& error) {
        qWarning("Simulated camera %s cannot start: %s", serial.c_str(), error.what());
        return cannotStream;
    }
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
    recorder.start(path);
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
        // The moment at which the sensor's clock showed 0, had it never stood still.
        Clock::time_point epoch = Clock::now() - std::chrono::microseconds(generator.time());
        bool lagReported = false;
        for (;;) {
            const std::chrono::microseconds stepEnd(generator.time() + EventGenerator::stepUs);
            if (!waitFor(epoch + stepEnd))
                return;
            const Clock::duration lag = Clock::now() - (epoch + stepEnd);
            if (!lagReported && lag > noticeableLag) {
                lagReported = true;
                qWarning(
                    "Simulated camera %s makes more events than this machine can follow; they come late.",
                    serial.c_str());
            }
            if (lag > worstLag)
                epoch += lag - worstLag;
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
