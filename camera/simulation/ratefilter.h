#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/random.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

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

    /// Events of a second, or of what there was of it when the filter was switched off.
    struct Count
    {
        std::uint64_t passed = 0;
        std::uint64_t dropped = 0;
    };
    /// Gets the count of each second of the stream in which events were dropped.
    using Report = std::function<void(const Count& count)>;

    explicit RateFilter(Report onDropped = {}) : report(std::move(onDropped)) {}

    /// A filter that is switched on begins anew, without anything left over.
    void configure(const Settings& next);
    /// Moves the events that pass to the front, in their order, and returns how many they are.
    std::size_t filter(Event2D* events, std::size_t count);

private:
    void enterSlice(std::uint64_t timestamp);
    void endSecond();
    std::size_t thin(const Event2D* events, std::size_t count, Event2D* out);

    Report report;
    Settings settings;
    std::uint64_t sliceStart = 0; // microseconds
    std::uint64_t credit = 0; // events that may pass in this slice, times 1000000
    bool begun = false;
    Count count; // since secondEnd was set
    std::uint64_t secondEnd = 0; // microseconds
    QuickRandom random{1};
};

} // namespace korvane::simulation
