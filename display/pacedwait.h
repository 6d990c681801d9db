#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

/// The waits of a pacing loop, which a stop ends at once. One thread waits, any thread stops.
class PacedWait
{
public:
    /// Waits for this long, or until `running` is false and wake() was called.
    void waitFor(std::chrono::microseconds duration, const std::atomic<bool>& running)
    {
        std::unique_lock lock(mutex);
        condition.wait_for(lock, duration, [&running] { return !running.load(); });
    }

    /// Call after the flag was cleared.
    void wake()
    {
        // The lock keeps the call from falling between the waiter's look at the flag and its wait.
        {
            const std::lock_guard lock(mutex);
        }
        condition.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable condition;
};
