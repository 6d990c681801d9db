#pragma once

#include <atomic>
#include <cstdint>

/// How fast and how long events are shown. Set on the GUI thread, read by the reading and playing threads.
struct DisplayTiming
{
    std::atomic<std::int16_t> frameRate{33}; ///< frames a second
    std::atomic<std::uint64_t> frameStep{30303}; ///< microseconds, 1000000 / frameRate
    std::atomic<std::uint64_t> accumulationTime{33333}; ///< microseconds of events in one picture

    /// Takes a frame rate over; false, with nothing changed, outside 1 to 32767.
    bool setFrameRate(int rate)
    {
        constexpr int highest = 32767;
        if (rate < 1 || rate > highest)
            return false;
        frameRate = static_cast<std::int16_t>(rate);
        frameStep = 1'000'000u / static_cast<unsigned>(rate);
        return true;
    }
};
