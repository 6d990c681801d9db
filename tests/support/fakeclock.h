#pragma once

#include "playback/dvsplayloop.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

/// A clock that stands still: its time goes on by advance(), and by what a loop waits once the test lets it
/// wait. One thread waits, any thread uses the rest.
class FakeClock : public PlaybackClock
{
public:
    TimePoint now() override
    {
        const std::lock_guard guard(mutex);
        return time;
    }

    void waitFor(std::chrono::microseconds duration, const std::atomic<bool>& running) override
    {
        std::unique_lock lock(mutex);
        asked.push_back(duration.count());
        changed.notify_all();
        changed.wait(lock, [this, &running] { return granted > 0 || !running; });
        if (granted == 0)
            return;
        --granted;
        time += duration;
    }

    void wake() override
    {
        {
            const std::lock_guard guard(mutex);
        }
        changed.notify_all();
    }

    /// Lets time pass while the loop works.
    void advance(std::chrono::microseconds duration)
    {
        const std::lock_guard guard(mutex);
        time += duration;
    }

    /// Lets so many waits end.
    void grant(int waits)
    {
        {
            const std::lock_guard guard(mutex);
            granted += waits;
        }
        changed.notify_all();
    }

    /// Waits until the loop has asked for so many waits since the beginning; false when it does not.
    bool awaitWaits(std::size_t count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(30),
                                [this, count] { return asked.size() >= count; });
    }

    /// The waits asked for, microseconds.
    std::vector<std::int64_t> waits() const
    {
        const std::lock_guard guard(mutex);
        return asked;
    }

private:
    mutable std::mutex mutex;
    std::condition_variable changed;
    TimePoint time = TimePoint(std::chrono::hours(1));
    std::vector<std::int64_t> asked;
    int granted = 0;
};
