#include "camera/simulation/streameddvscamera.h"

#include <utility>

namespace korvane::simulation {

namespace {

constexpr int cannotStream = 1;

} // namespace

StreamedDvsCamera::StreamedDvsCamera(const std::string& serial, std::unique_ptr<EventStream> events)
    : stream(std::move(events)), tools(stream->geometry()), recorder(stream->geometry(), serial),
      pacer(serial, *stream, [this](const StreamStep& step) { take(step); })
{
    offerTools();
}

void StreamedDvsCamera::offerTools()
{
    for (const auto& [type, tool] : tools.all())
        addTool(type, tool);
}

bool StreamedDvsCamera::isConnected()
{
    return pacer.isConnected();
}

void StreamedDvsCamera::releaseStream(int)
{
    // There is one stream, and stop() ends it.
}

bool StreamedDvsCamera::getNextEventBatch(std::vector<Event2D>& out)
{
    return pacer.isConnected() && spans.take(out);
}

void StreamedDvsCamera::setBatchTime(std::uint64_t microseconds)
{
    spans.setSpan(microseconds);
}

int StreamedDvsCamera::start()
{
    if (!pacer.isRunning())
        spans.dropWaiting();
    return pacer.start() ? 0 : cannotStream;
}

void StreamedDvsCamera::stop()
{
    pacer.stop();
}

void StreamedDvsCamera::startRecording(std::string path)
{
    recorder.start(path);
}

void StreamedDvsCamera::stopRecording()
{
    recorder.stop();
}

RecorderState StreamedDvsCamera::recorderState()
{
    return recorder.state();
}

void StreamedDvsCamera::pull()
{
    pacer.pull();
}

void StreamedDvsCamera::setEventSink(std::shared_ptr<EventSink> sink)
{
    recorder.setSink(std::move(sink));
}

void StreamedDvsCamera::take(const StreamStep& made)
{
    const StreamStep step = tools.process(made);
    // What is seen has been recorded.
    recorder.deliver(step);
    spans.append(step.events, step.until);
}

} // namespace korvane::simulation
