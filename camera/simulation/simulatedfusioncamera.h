#pragma once

#include "camera/driver/fusioncamera.h"
#include "camera/recording/intensityrecorder.h"
#include "camera/simulation/apsrenderer.h"
#include "camera/simulation/eventsink.h"
#include "camera/simulation/framecounts.h"
#include "camera/simulation/fusionstage.h"
#include "camera/simulation/pluggable.h"
#include "camera/simulation/recorderport.h"
#include "camera/simulation/sensorstream.h"
#include "camera/simulation/simulatedcameraconfig.h"
#include "camera/simulation/streampacer.h"
#include "camera/simulation/streamtools.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace korvane::simulation {

/// A fusion camera without hardware: an event sensor and an intensity sensor that look at one stage. Events
/// come on one thread, intensity frames on another, 30 a second where the machine can make as many; events
/// never wait for frames. Threads as with FusionCamera; the operations that are not its may be called from
/// any.
class SimulatedFusionCamera : public FusionCamera, public Pluggable
{
public:
    /// Time from a frame to the next, microseconds.
    static constexpr std::uint64_t framePeriod = FrameCounts::period;

    /// A camera whose last pointer may also be dropped by one of its own callbacks.
    static std::shared_ptr<SimulatedFusionCamera> make(const SimulatedCameraConfig& config);

    bool isConnected() override;
    void addEventsStreamHandleCallback(EventsCallback callback) override;
    void addApsFrameCallback(ApsFrameCallback callback) override;
    void start(STREAM_TYPE type) override;
    void stop(STREAM_TYPE type) override;
    void startRecording(std::string path, STREAM_TYPE type) override;
    void stopRecording(STREAM_TYPE type) override;
    bool getEventFrameAt(std::shared_ptr<EventCountFrame>& out, std::uint64_t timestamp) override;
    RecorderState recorderState() override;

    void pull() override;
    SensorParameters sensorParameters() const { return sensor.parameters(); }
    void setSensorParameters(const SensorParameters& parameters) { sensor.setParameters(parameters); }
    ApsParameters apsParameters() const;
    /// Takes effect with the next frame.
    void setApsParameters(const ApsParameters& parameters);
    /// What became of the frames of the recording that runs or ran last.
    recording::ApsVideoWriter::Counts recordedFrames() const { return intensityRecorder.counts(); }
    /// Every event from now on goes to `sink`, see RecorderPort::setSink.
    void setEventSink(std::shared_ptr<EventSink> sink);

private:
    SimulatedFusionCamera(const SimulatedCameraConfig& config, std::shared_ptr<const FusionStage> stage);
    ~SimulatedFusionCamera() override;
    static void release(SimulatedFusionCamera* camera);

    void take(const StreamStep& made);
    void runFrames();
    void makeFrames();
    std::uint64_t awaitFrame(std::uint64_t next);
    void endFrames();

    const std::string serial;
    const bool startFails;
    SensorStream sensor;
    StreamTools tools;
    std::mutex recordingMutex; // both files of a recording begin with the same event
    RecorderPort recorder;
    recording::IntensityRecorder intensityRecorder;
    FrameCounts counts;
    ApsRenderer renderer; // the frame thread's while it runs

    std::mutex callbackMutex;
    std::vector<EventsCallback> eventsCallbacks; // guarded by callbackMutex
    std::vector<ApsFrameCallback> frameCallbacks; // guarded by callbackMutex

    mutable std::mutex mutex;
    std::condition_variable wake;
    bool ending = false; // guarded by mutex
    std::uint64_t coveredUntil = 0; // guarded by mutex: all events up to here have come, microseconds
    std::chrono::steady_clock::time_point coveredAt; // guarded by mutex: the moment at which they had
    ApsParameters intensity; // guarded by mutex

    std::mutex controlMutex; // held by start and stop
    std::thread frameThread; // guarded by controlMutex
    StreamPacer pacer; // last: its thread ends before anything it delivers to
};

} // namespace korvane::simulation
