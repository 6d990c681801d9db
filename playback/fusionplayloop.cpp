#include "playback/fusionplayloop.h"

#include "display/runguarded.h"

FusionPlayLoop::FusionPlayLoop(FusionPicture& fusionPicture, FusionPlaybackOutput& receiver,
                               PlaybackClock& playClock)
    : picture(fusionPicture), output(receiver), clock(playClock)
{
}

FusionPlayLoop::~FusionPlayLoop()
{
    stop();
}

void FusionPlayLoop::start(const FusionRecording& opened)
{
    stop();
    // What is resumed goes on from the frame read last.
    if (frameReader.lock() != opened.apsReader)
        frame = {};
    frameReader = opened.apsReader;
    recording = opened;
    // Set before the thread starts and never by it: a stop that comes at once is not lost.
    playing = true;
    playThread = std::thread([this] { playLoop(); });
}

void FusionPlayLoop::stop()
{
    playing = false;
    clock.wake();
    if (playThread.joinable())
        playThread.join();
}

void FusionPlayLoop::playLoop()
{
    do {
        const auto t0 = clock.now();
        // A reader is to throw nothing, but memory may be short: then playback has ended.
        if (!runGuarded("Playback has ended early:", [this] { tick(); })) {
            playing = false;
            output.fileFinished();
        }
        const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(clock.now() - t0);
        const auto remaining = std::chrono::microseconds(tickPeriod) - elapsed;
        if (remaining.count() >= 1 && playing)
            clock.waitFor(remaining, playing);
    } while (playing);
    // Another recording may be opened before the next start: this one's readers are not kept for it.
    recording = {};
}

void FusionPlayLoop::tick()
{
    const bool frameCame = drawNextFrame();
    const bool eventsCame = drawNextEvents();
    if (!frameCame && (!eventsCame || recording.dvsReader->isEnd()))
        rewind();
}

bool FusionPlayLoop::drawNextFrame()
{
    if (!recording.apsReader->getNextFrame(frame))
        return false;
    const QImage aps = wrapApsFrame(frame);
    if (!aps.isNull()) {
        const std::lock_guard lock(picture.apsImageMutex);
        picture.alignFrame(aps);
    }
    return true;
}

bool FusionPlayLoop::drawNextEvents()
{
    const auto batch = recording.dvsReader->getNextEvents(tickPeriod);
    // An empty batch is a quiet stretch, no batch the end.
    if (!batch)
        return false;
    picture.paintEvents(batch->data(), batch->data() + batch->size());
    const std::uint64_t current = frame.timestamp + recording.startTimestamp;
    output.showImage(picture.image());
    output.showTimeStamp(current);
    output.showProgress(current, recording.endTimestamp);
    return true;
}

void FusionPlayLoop::rewind()
{
    recording.apsReader->seekFrame(0, frame);
    recording.dvsReader->seekTime(recording.startTimestamp);
    if (replay)
        return;
    playing = false;
    output.fileFinished();
    output.showProgress(recording.startTimestamp, recording.endTimestamp);
}
