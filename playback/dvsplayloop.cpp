#include "playback/dvsplayloop.h"

#include "display/runguarded.h"

DvsPlayLoop::DvsPlayLoop(SourceState& sharedState, const DisplayTiming& displayTiming,
                         PlayPosition& playPosition, PlaybackView& window, PlaybackClock& playClock)
    : state(sharedState), timing(displayTiming), position(playPosition), view(window), clock(playClock)
{
}

DvsPlayLoop::~DvsPlayLoop()
{
    if (filePlayThread.joinable())
        stop();
}

void DvsPlayLoop::start()
{
    if (filePlayThread.joinable())
        stop();
    state.filePlaying = true;
    const std::uint64_t session = ++state.playSession;
    filePlayThread = std::thread([this, session] { run(session); });
}

void DvsPlayLoop::stop()
{
    state.filePlaying = false;
    // What the thread has posted and is still under way belongs to a session that is over.
    ++state.playSession;
    clock.wake();
    if (filePlayThread.joinable())
        filePlayThread.join();
}

void DvsPlayLoop::run(std::uint64_t session)
{
    // A reader is to throw nothing, but memory may be short: then playback has ended.
    if (!runGuarded("Playback has ended early:", [&] { dvsPlayLoop(session); }))
        view.postEnd(session);
}

void DvsPlayLoop::dvsPlayLoop(std::uint64_t session)
{
    while (state.filePlaying) {
        const auto t0 = clock.now();
        if (state.playMode == ModeDvsRecording && tick(session) == Tick::Ended)
            return;
        const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(clock.now() - t0);
        const auto remaining = std::chrono::microseconds(tickPeriod) - elapsed;
        if (remaining.count() > 0 && state.filePlaying)
            clock.waitFor(remaining, state.filePlaying);
    }
}

DvsPlayLoop::Tick DvsPlayLoop::tick(std::uint64_t session)
{
    const auto end = static_cast<std::int64_t>(view.rangeEnd());
    const std::uint64_t seek = position.seeks;
    std::uint64_t current = position.fileCurTs;
    const auto signedCurrent = static_cast<std::int64_t>(current);
    const auto frameStep = static_cast<std::int64_t>(timing.frameStep.load());

    korvane::DvsFileReader::Events batch;
    std::uint64_t reached = current;
    // For the whole tick: steps and stops find the reader, and the picture made of it, at rest.
    const std::lock_guard lock(position.readerMutex);
    if (signedCurrent + frameStep <= end) {
        batch = position.fileReader->getEventsAt(current, timing.accumulationTime);
        reached = current + static_cast<std::uint64_t>(frameStep);
    } else if (signedCurrent <= end) {
        batch
            = position.fileReader->getEventsAt(current, static_cast<std::uint64_t>(end - signedCurrent + 1));
        reached = static_cast<std::uint64_t>(end);
    }
    // A seek since the position was read wins: what this tick has is of no interest any more.
    if (position.seeks != seek || !position.fileCurTs.compare_exchange_strong(current, reached))
        return Tick::Goes;
    if (batch) {
        view.addEvents(batch->data(), batch->data() + batch->size());
        view.postPosition(reached, seek);
        view.postPicture();
        if (static_cast<std::int64_t>(reached) < end)
            return Tick::Goes;
    }
    return endOfRange(session, reached, seek);
}

DvsPlayLoop::Tick DvsPlayLoop::endOfRange(std::uint64_t session, std::uint64_t reached, std::uint64_t seek)
{
    const std::uint64_t start = view.rangeStart();
    const bool looping = view.isLooping();
    // First the position: where a seek came in between, nothing else happens.
    if (position.seeks != seek || !position.fileCurTs.compare_exchange_strong(reached, start))
        return Tick::Goes;
    position.fileReader->seekTime(start);
    view.postPosition(start, seek);
    if (looping)
        return Tick::Goes;
    view.postEnd(session);
    return Tick::Ended;
}
