#pragma once

#include <cstdint>

namespace korvane {

/// One edge on the camera's external trigger input.
struct EventTriggerIn
{
    std::int16_t polarity = 0; ///< 1: rising edge, 0: falling edge
    std::uint64_t timestamp = 0; ///< microseconds on the camera's clock
    std::int16_t id = 0; ///< input channel

    EventTriggerIn() = default;
    /// The channel comes first although it is stored last: drivers construct edges in this order.
    EventTriggerIn(std::int16_t channel, std::int16_t edge, std::uint64_t microseconds)
        : polarity(edge), timestamp(microseconds), id(channel)
    {
    }

    friend bool operator==(const EventTriggerIn&, const EventTriggerIn&) = default;
};

} // namespace korvane
