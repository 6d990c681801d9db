#pragma once

#include "camera/driver/fusioncamera.h"
#include "camera/recording/intensityrecorder.h"
#include "camera/simulation/eventsink.h"
#include "camera/simulation/eventstream.h"
#include "camera/simulation/framecounts.h"
#include "camera/simulation/framesource.h"
#include "camera/simulation/pluggable.h"
#include "camera/simulation/recorderport.h"
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

/// Makes a fusion camera of any stream of events and any source of intensity frames: paced by the wall clock,
/// recorded, with the tools that filter a stream. Events come on one thread, intensity frames on another, 30
/// a second where the machine can make as many; events never wait for frames. Threads as with FusionCamera;
/// the operations that are not its may be called from any.
class StreamedFusionCamera : public FusionCamera, public Pluggable
{
public:
    /// Time from a frame to the next, microseconds.
    static constexpr std::uint64_t framePeriod = FrameCounts::period;

    /// A camera whose last pointer may also be dropped by one of its own callbacks.
    static std::shared_ptr<StreamedFusionCamera> make(const CameraDescription& description,
                                                      std::unique_ptr<EventStream> events,
                                                      std::unique_ptr<FrameSource> frames);

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
    /// What became of the frames of the recording that runs or ran last.
    recording::ApsVideoWriter::Counts recordedFrames() const { return intensityRecorder.counts(); }
    /// Every event from now on goes to `sink`, see RecorderPort::setSink.
    void setEventSink(std::shared_ptr<EventSink> sink);

protected:
    StreamedFusionCamera(const CameraDescription& description, std::unique_ptr<EventStream> events,
                         std::unique_ptr<FrameSource> frames);
    ~StreamedFusionCamera() override;

    /// Takes ownership.
    template <typename Camera>
    static std::shared_ptr<Camera> share(Camera* camera)
    {
        prepareRelease();
        return {camera, [](Camera* dropped) { release(dropped); }};
    }

    EventStream& source() { return *stream; }
    /// While the camera is made.
    StreamTools& streamTools() { return tools; }
    void offerTools();
    recording::IntensityRecorder& frameRecorder() { return intensityRecorder; }

private:
    static void prepareRelease();
    static void release(StreamedFusionCamera* camera);

    void setRecorded(bool on);
    bool isRecorded();
    void take(const StreamStep& made);
    void runFrames();
    void makeFrames();
    std::uint64_t awaitFrame(std::uint64_t next);
    void endFrames();

    const std::string serial;
    const std::unique_ptr<EventStream> stream;
    const std::uint64_t stepUs; // of the stream
    StreamTools tools;
    std::mutex recordingMutex; // never held while files are opened or completed: events do not wait for them
    bool recorded = false; // guarded by recordingMutex: both files begin and end with the same event
    RecorderPort recorder;
    recording::IntensityRecorder intensityRecorder;
    FrameCounts counts;
    const std::unique_ptr<FrameSource> frameSource; // the frame thread's while it runs
    bool toldSlow = false; // the frame thread's

    std::mutex callbackMutex;
    std::vector<EventsCallback> eventsCallbacks; // guarded by callbackMutex
    std::vector<ApsFrameCallback> frameCallbacks; // guarded by callbackMutex

    std::mutex mutex;
    std::condition_variable wake;
    bool ending = false; // guarded by mutex
    std::uint64_t coveredUntil = 0; // guarded by mutex: all events up to here have come, microseconds
    std::chrono::steady_clock::time_point coveredAt; // guarded by mutex: the moment at which they had

    std::mutex controlMutex; // held by start and stop
    std::thread frameThread; // guarded by controlMutex
    StreamPacer pacer; // last: its thread ends before anything it delivers to
};

} // namespace korvane::simulation
