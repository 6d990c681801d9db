#include "camera/simulation/streampacer.h"

#include <QtGlobal>

#include <exception>
#include <system_error>
#include <utility>

namespace korvane::simulation {

namespace {

using Clock = std::chrono::steady_clock;

// A stream that lags by less is only a machine that was busy for a moment.
constexpr std::chrono::milliseconds noticeableLag{500};
// After a standstill the stream is not hurried through for longer than this; the stream's clock then went
// slower.
constexpr std::chrono::seconds worstLag{1};

} // namespace

StreamPacer::StreamPacer(std::string pacedName, EventStream& paced, Deliver receiver)
    : name(std::move(pacedName)), stream(paced), deliver(std::move(receiver))
{
}

StreamPacer::~StreamPacer()
{
    stop();
}

bool StreamPacer::start()
{
    const std::lock_guard control(controlMutex);
    {
        // A pull that comes later finds the thread and ends it.
        const std::lock_guard lock(mutex);
        if (!connected)
            return false;
        if (thread.joinable())
            return true;
        ending = false;
    }
    try {
        thread = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
        qWarning("Camera %s cannot start: %s", name.c_str(), error.what());
        return false;
    }
    return true;
}

void StreamPacer::stop()
{
    const std::lock_guard control(controlMutex);
    endThread();
}

void StreamPacer::pull()
{
    connected = false;
    askToEnd();
}

bool StreamPacer::isRunning() const
{
    const std::lock_guard control(controlMutex);
    return thread.joinable();
}

void StreamPacer::askToEnd()
{
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
}

void StreamPacer::endThread()
{
    askToEnd();
    if (thread.joinable())
        thread.join();
}

/// Waits until a step is due; false when the stream ends.
bool StreamPacer::waitFor(Clock::time_point due)
{
    std::unique_lock lock(mutex);
    wake.wait_until(lock, due, [this] { return ending; });
    return !ending;
}

void StreamPacer::run()
{
    try {
        runPaced();
    } catch (const std::exception& error) {
        qWarning("Camera %s stops: %s", name.c_str(), error.what());
        connected = false;
    }
}

void StreamPacer::runPaced()
{
    // The moment at which the stream's clock showed 0, had it never stood still.
    Clock::time_point epoch = Clock::now() - std::chrono::microseconds(stream.time());
    bool lagReported = false;
    for (;;) {
        const Clock::time_point due = epoch + std::chrono::microseconds(stream.nextTime());
        if (!waitFor(due))
            return;
        const Clock::duration lag = Clock::now() - due;
        if (!lagReported && lag > noticeableLag) {
            lagReported = true;
            qWarning("Camera %s makes more events than this machine can follow; they come late.",
                     name.c_str());
        }
        if (lag > worstLag)
            epoch += lag - worstLag;
        const StreamStep step = stream.generateStep();
        deliver(step);
        deliveredUntil = step.until;
    }
}

} // namespace korvane::simulation
