#include "camera/simulation/recorderport.h"

#include <utility>

namespace korvane::simulation {

RecorderPort::RecorderPort(recording::Geometry geometry, std::string serial)
    : recorder(geometry, std::move(serial))
{
}

void RecorderPort::setSink(std::shared_ptr<EventSink> next)
{
    const std::lock_guard lock(sinkMutex);
    sink.swap(next);
}

void RecorderPort::deliver(const StreamStep& step, bool recorded)
{
    const auto events = step.events;
    {
        const std::lock_guard lock(sinkMutex);
        if (sink)
            sink->onEvents(events.data(), events.data() + events.size());
    }
    if (recorded)
        recorder.push(events, step.triggers);
}

} // namespace korvane::simulation
