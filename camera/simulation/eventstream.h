#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evtencoding.h"

#include <cstdint>
#include <span>

namespace korvane::simulation {

/// What a stretch of a stream holds, in time order; valid until the next step is made.
struct StreamStep
{
    std::span<const Event2D> events;
    std::span<const EventTriggerIn> triggers;
    std::uint64_t until = 0; ///< microseconds: all up to here, which itself is left out, has come
};

/// A stream of events that is made step by step, without a clock of its own: whoever asks sets the pace. One
/// thread at a time.
class EventStream
{
public:
    EventStream() = default;
    virtual ~EventStream() = default;
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;

    virtual recording::Geometry geometry() const = 0;
    /// The time up to which the stream has been made, microseconds from 0.
    virtual std::uint64_t time() const = 0;
    /// The time up to which the next step will go: always later than time().
    virtual std::uint64_t nextTime() const = 0;
    /// Makes what lies in [time(), nextTime()).
    virtual StreamStep generateStep() = 0;
};

} // namespace korvane::simulation
