#pragma once

#include "camera/driver/event2d.h"

namespace korvane::simulation {

/// Takes every event of a stream, as a recorder does.
class EventSink
{
public:
    EventSink() = default;
    virtual ~EventSink() = default;
    EventSink(const EventSink&) = delete;
    EventSink& operator=(const EventSink&) = delete;

    /// The next events in the order of the stream; valid during the call. Called on the stream's thread,
    /// which waits: what takes long goes through a queue.
    virtual void onEvents(const Event2D* begin, const Event2D* end) = 0;
};

} // namespace korvane::simulation
