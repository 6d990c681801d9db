#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/eventsink.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace korvane::simulation::testing {

/// Long enough for a machine that does much else; no test waits so long when all is well.
inline constexpr std::chrono::seconds patience{20};

/// Keeps what a camera makes and lets a test wait for it. Any thread.
class Watch : public EventSink
{
public:
    void onEvents(const Event2D* begin, const Event2D* end) override
    {
        const std::lock_guard lock(mutex);
        events.insert(events.end(), begin, end);
        ++steps;
        changed.notify_all();
    }
    /// Until so many more steps of the stream were made; the spans of all but the last of them are complete
    /// then. False when they do not come.
    bool waitForSteps(int more)
    {
        std::unique_lock lock(mutex);
        const int wanted = steps + more;
        return changed.wait_for(lock, patience, [&] { return steps >= wanted; });
    }
    std::vector<Event2D> taken()
    {
        const std::lock_guard lock(mutex);
        return events;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Event2D> events; // guarded by mutex
    int steps = 0; // guarded by mutex
};

} // namespace korvane::simulation::testing
