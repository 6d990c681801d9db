#include "camera/simulation/recorderport.h"

#include <utility>

namespace korvane::simulation {

void RecorderPort::setSink(std::shared_ptr<EventSink> next)
{
    const std::lock_guard lock(sinkMutex);
    sink.swap(next);
}

void RecorderPort::deliver(std::span<const Event2D> events)
{
    const std::lock_guard lock(sinkMutex);
    if (sink)
        sink->onEvents(events.data(), events.data() + events.size());
}

void RecorderPort::start(std::string path)
{
    const std::lock_guard lock(stateMutex);
    current = {false, std::move(path), "Recording is not available for this camera."};
}

void RecorderPort::stop()
{
    const std::lock_guard lock(stateMutex);
    current.writing = false;
    current.error.clear();
}

RecorderState RecorderPort::state() const
{
    const std::lock_guard lock(stateMutex);
    return current;
}

} // namespace korvane::simulation
