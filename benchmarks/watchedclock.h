#pragma once

#include "benchmarks/figure.h"
#include "playback/dvsplayloop.h"

#include <chrono>
#include <vector>

/// Notes when each tick of a play loop begins and how long it works. The loop's thread alone, until it ended.
class WatchedClock : public SteadyPlaybackClock
{
public:
    // A tick asks twice: when it begins and when it has done its work.
    TimePoint now() override
    {
        const TimePoint time = std::chrono::steady_clock::now();
        if (working)
            work.push_back(figure::milliseconds(time - begins.back()));
        else
            begins.push_back(time);
        working = !working;
        return time;
    }

    double ticksPerSecond() const
    {
        const std::chrono::duration<double> seconds = begins.back() - begins.front();
        return static_cast<double>(begins.size() - 1) / seconds.count();
    }

    std::vector<TimePoint> begins;
    std::vector<double> work; ///< milliseconds

private:
    bool working = false;
};
