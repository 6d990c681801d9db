#pragma once

#include "camera/simulation/eventstream.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace korvane::simulation {

/// Makes a stream as the wall clock goes on, on a thread of its own. The stream's clock stands still while
/// the pacer is stopped and goes on with the next start. When the machine is too slow for the stream it comes
/// late and complete. Any thread may call any operation, but for start() and stop(),
/// which wait for the thread that delivers and are not for it.
class StreamPacer
{
public:
    /// Gets each step on the pacer's thread, which waits for it.
    using Deliver = std::function<void(const StreamStep& step)>;

    /// `name` is for the log. The stream, the pacer's thread's alone while it runs, outlives the pacer.
    StreamPacer(std::string name, EventStream& stream, Deliver deliver);
    /// Stops.
    ~StreamPacer();
    StreamPacer(const StreamPacer&) = delete;
    StreamPacer& operator=(const StreamPacer&) = delete;

    /// Returns at once, also when it runs already. False when it cannot: it was pulled, or there is no thread
    /// to be had.
    bool start();
    /// Returns when the last delivery is over.
    void stop();
    /// The stream ends and never starts again. Does not wait for the delivery under way.
    void pull();

    bool isConnected() const { return connected; }
    bool isRunning() const;
    /// The time up to which the stream has been made and delivered, microseconds.
    std::uint64_t streamTime() const { return deliveredUntil; }

private:
    void run();
    void runPaced();
    bool waitFor(std::chrono::steady_clock::time_point due);
    void askToEnd();
    void endThread();

    const std::string name;
    EventStream& stream;
    const Deliver deliver;
    std::atomic<bool> connected{true};
    std::atomic<std::uint64_t> deliveredUntil{0};

    mutable std::mutex controlMutex; // held by start and stop, so that there is one thread at most
    std::thread thread; // guarded by controlMutex

    std::mutex mutex;
    std::condition_variable wake;
    bool ending = false; // guarded by mutex
};

} // namespace korvane::simulation
