#include "camera/dvsreadingloop.h"

#include "display/runguarded.h"

#include <QDebug>

#include <chrono>
#include <utility>
#include <vector>

DvsReadingLoop::DvsReadingLoop(SourceState& sharedState, const DisplayTiming& displayTiming, Hooks handlers)
    : state(sharedState), timing(displayTiming), hooks(std::move(handlers))
{
}

DvsReadingLoop::~DvsReadingLoop()
{
    if (readingThread.joinable())
        stop();
}

void DvsReadingLoop::start(std::shared_ptr<korvane::DvsCamera> camera)
{
    if (readingThread.joinable())
        stop();
    state.filePlaying = true;
    const std::uint64_t session = ++state.playSession;
    readingThread = std::thread([this, source = std::move(camera), session] { run(*source, session); });
}

void DvsReadingLoop::stop()
{
    state.filePlaying = false;
    wait.wake();
    if (readingThread.joinable())
        readingThread.join();
}

void DvsReadingLoop::run(korvane::DvsCamera& camera, std::uint64_t session)
{
    // A driver is to throw nothing; one that does has lost its camera.
    runGuarded("The camera driver failed:", [&] { read(camera); });
    // A stop that came first has already said that this session is over.
    if (state.filePlaying.exchange(false))
        hooks.connectionLost(session);
}

void DvsReadingLoop::read(korvane::DvsCamera& camera)
{
    using Clock = std::chrono::steady_clock;
    using std::chrono::microseconds;
    // Recycled from batch to batch, and gone with the camera: a second of a dense scene takes a hundred
    // megabytes.
    std::vector<korvane::Event2D> batch;
    while (state.filePlaying) {
        const auto t0 = Clock::now();
        if (camera.getNextEventBatch(batch) && !batch.empty()) {
            // Before the picture, which may be fetched at once: it is not to stand under the time before.
            lastEventTimestamp = batch.back().timestamp;
            hooks.addEvents(batch.data(), batch.data() + batch.size());
            hooks.eventsReady();
            // This wait spans a picture already, so the next one is then skipped as a rule.
            wait.waitFor(std::chrono::milliseconds(1000 / timing.frameRate.load()), state.filePlaying);
        }
        const auto elapsed = std::chrono::duration_cast<microseconds>(Clock::now() - t0);
        const auto remaining = microseconds(timing.frameStep.load()) - elapsed;
        if (remaining.count() > 0 && state.filePlaying)
            wait.waitFor(remaining, state.filePlaying);
        if (!camera.isConnected()) {
            qDebug().noquote() << "Camera connection lost.";
            return;
        }
    }
}
