#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evtencoding.h"
#include "camera/recording/evtstate.h"

#include <cstdint>
#include <span>
#include <vector>

/// A second decoder of event streams, written word by word from the format's description: plain, slow, and
/// sharing no code with the one it judges.
namespace reference {

/// How the times of events and triggers are counted.
enum class Times {
    /// As the words say, on the sensor's own clock; only wraps are counted on.
    Literal,
    /// From the first time-high word and never backwards, as a reader of recordings gives them.
    Reader,
};

struct Decoded
{
    std::vector<korvane::Event2D> events;
    std::vector<korvane::EventTriggerIn> triggers;
    korvane::recording::EvtCounts counts; ///< `Literal` counts no times
    std::int64_t timeBase = 0; ///< what the first time-high word stands for, microseconds
};

Decoded decode(korvane::recording::EvtEncoding encoding, std::span<const std::uint8_t> words,
               korvane::recording::Geometry geometry, Times times = Times::Reader);

} // namespace reference
