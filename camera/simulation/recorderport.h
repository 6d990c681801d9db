#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/recorderstate.h"
#include "camera/simulation/eventsink.h"

#include <memory>
#include <mutex>
#include <span>
#include <string>

namespace korvane::simulation {

/// Where a recorder is plugged into a simulated camera. deliver() belongs to the generating thread, the rest
/// to any.
class RecorderPort
{
public:
    /// Every event from now on goes to `next`; after the return no call into the former sink runs. May be
    /// empty.
    void setSink(std::shared_ptr<EventSink> next);
    void deliver(std::span<const Event2D> events);

    void start(std::string path);
    void stop();
    RecorderState state() const;

private:
    std::mutex sinkMutex;
    std::shared_ptr<EventSink> sink; // guarded by sinkMutex
    mutable std::mutex stateMutex;
    RecorderState current; // guarded by stateMutex
};

} // namespace korvane::simulation
