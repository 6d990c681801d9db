#pragma once

#include "camera/driver/dvscamera.h"
#include "camera/simulation/eventsink.h"
#include "camera/simulation/eventstream.h"
#include "camera/simulation/pluggable.h"
#include "camera/simulation/recorderport.h"
#include "camera/simulation/spanassembler.h"
#include "camera/simulation/streampacer.h"
#include "camera/simulation/streamtools.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace korvane::simulation {

/// Makes a DVS-only camera of any stream of events: paced by the wall clock, cut into batches, recorded, with
/// the tools that filter a stream.
/// Threads as with DvsCamera; the operations that are not DvsCamera's may be called from any.
class StreamedDvsCamera : public DvsCamera, public Pluggable
{
public:
    StreamedDvsCamera(const std::string& serial, std::unique_ptr<EventStream> events);

    bool isConnected() override;
    void releaseStream(int handle) override;
    bool getNextEventBatch(std::vector<Event2D>& out) override;
    void setBatchTime(std::uint64_t microseconds) override;
    int start() override;
    void stop() override;
    void startRecording(std::string path) override;
    void stopRecording() override;
    RecorderState recorderState() override;

    void pull() override;
    /// Every event from now on goes to `sink`, see RecorderPort::setSink.
    void setEventSink(std::shared_ptr<EventSink> sink);
    /// The time up to which the stream has been made, microseconds.
    std::uint64_t sensorTime() const { return pacer.streamTime(); }

protected:
    EventStream& source() { return *stream; }
    /// While the camera is made.
    StreamTools& streamTools() { return tools; }
    void offerTools();

private:
    void take(const StreamStep& made);

    const std::unique_ptr<EventStream> stream;
    StreamTools tools;
    SpanAssembler spans;
    RecorderPort recorder;
    StreamPacer pacer; // last: its thread ends before anything it delivers to
};

} // namespace korvane::simulation
