#pragma once

#include "camera/driver/dvscamera.h"
#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/eventsink.h"
#include "camera/simulation/recorderport.h"
#include "camera/simulation/sensorparameters.h"
#include "camera/simulation/simulatedcameraconfig.h"
#include "camera/simulation/spanassembler.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace korvane::simulation {

/// A camera without hardware. While it streams, a thread of its own makes the events as the wall clock goes
/// on; when the machine is too slow for the rate the stream comes late and complete. The sensor's clock
/// starts at 0, stands still while the camera is stopped and goes on with the next start. Threads as with
/// DvsCamera; the operations that are not DvsCamera's may be called from any.
class SimulatedDvsCamera : public DvsCamera
{
public:
    /// Building the scene takes a fifth of a second.
    explicit SimulatedDvsCamera(const SimulatedCameraConfig& config);
    SimulatedDvsCamera(const SimulatedCameraConfig& config, std::unique_ptr<Scene> watched);
    ~SimulatedDvsCamera() override;

    bool isConnected() override;
    void releaseStream(int handle) override;
    bool getNextEventBatch(std::vector<Event2D>& out) override;
    void setBatchTime(std::uint64_t microseconds) override;
    int start() override;
    void stop() override;
    void startRecording(std::string path) override;
    void stopRecording() override;
    RecorderState recorderState() override;

    /// The plug is pulled: the stream ends and the camera does not come back.
    void pull();
    SensorParameters sensorParameters() const;
    /// Takes effect as a whole with the next step of the stream.
    void setSensorParameters(const SensorParameters& parameters);
    /// Every event from now on goes to `sink`, see RecorderPort::setSink.
    void setEventSink(std::shared_ptr<EventSink> sink);
    /// The time up to which the stream has been made, microseconds.
    std::uint64_t sensorTime() const { return madeUntil; }

private:
    void generate();
    bool waitFor(std::chrono::steady_clock::time_point due);
    void endThread();

    const std::string serial;
    const bool startFails;
    EventGenerator generator; // of the generating thread while there is one
    SpanAssembler spans;
    RecorderPort recorder;
    std::atomic<bool> connected{true};
    std::atomic<std::uint64_t> madeUntil{0};

    std::mutex controlMutex; // held by start and stop, so that there is one thread at most
    std::thread thread; // guarded by controlMutex

    mutable std::mutex mutex;
    std::condition_variable wake;
    bool ending = false; // guarded by mutex
    SensorParameters parameters; // guarded by mutex
    std::optional<SensorParameters> newParameters; // guarded by mutex
};

} // namespace korvane::simulation
