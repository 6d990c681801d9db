#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <utility>

namespace korvane::simulation {

/// Hands the newest value from whoever sets it to the one thread that works with it. Looking for news costs
/// that thread one atomic read; it locks only when there is some. set() and latest() belong to any thread,
/// take() to one at a time.
template <typename T>
class Handover
{
public:
    explicit Handover(T initial = {}) : value(std::move(initial)) {}

    void set(T next)
    {
        const std::lock_guard lock(mutex);
        value = std::move(next);
        version.store(version.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }
    T latest() const
    {
        const std::lock_guard lock(mutex);
        return value;
    }
    /// Puts the newest value into `out` when there is one that was not taken yet. The initial value is not
    /// news.
    bool take(T& out)
    {
        if (version.load(std::memory_order_acquire) == taken)
            return false;
        const std::lock_guard lock(mutex);
        out = value;
        taken = version.load(std::memory_order_relaxed);
        return true;
    }

private:
    mutable std::mutex mutex;
    T value; // guarded by mutex
    std::atomic<std::uint64_t> version{0}; // written under mutex
    std::uint64_t taken = 0; // of the thread that takes
};

} // namespace korvane::simulation
