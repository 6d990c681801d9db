#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/random.h"

#include <cstddef>
#include <cstdint>

namespace korvane::simulation {

/// Holds the rate of a stream at a limit. Time is cut into short slices; of a slice that holds more events
/// than the limit leaves for it, every so-manieth passes, so that the picture gets thinner evenly: nowhere in
/// time or place is more of it lost than elsewhere. What a slice leaves unused the next ones may have, as far
/// as it does not lift the rate of 10 ms by more than 5 %. One thread at a time.
class RateFilter
{
public:
    struct Settings
    {
        bool enabled = false;
        std::uint32_t limit = 5'000'000; ///< events per second, at least 1
    };

    /// A filter that is switched on begins anew, without anything left over.
    void configure(const Settings& next);
    /// Moves the events that pass to the front, in their order, and returns how many they are.
    std::size_t filter(Event2D* events, std::size_t count);

private:
    void enterSlice(std::uint64_t timestamp);
    std::size_t thin(const Event2D* events, std::size_t count, Event2D* out);

    Settings settings;
    std::uint64_t sliceStart = 0; // microseconds
    std::uint64_t credit = 0; // events that may pass in this slice, times 1000000
    bool begun = false;
    QuickRandom random{1};
};

} // namespace korvane::simulation
