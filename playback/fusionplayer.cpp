#include "playback/fusionplayer.h"

#include "widgets/kvthreehandleslider.h"
#include "widgets/timestamptotext.h"

FusionPlayer::FusionPlayer(SourceState& sharedState, KvThreeHandleSlider& slider, QObject* parent)
    : QObject(parent), state(sharedState), timeline(slider)
{
}

void FusionPlayer::playClicked()
{
    // A pause pressed in the moment of the end is one: it does not begin again.
    if (state.filePlaying || finishedSession == state.playSession) {
        stopPlaying();
    } else {
        ++state.playSession;
        // Before the engine starts: it may come to its end, and clear the flag, before the emit returns.
        state.filePlaying = true;
        emit fusionFilePlayControl(true);
    }
    emit runningChanged();
}

void FusionPlayer::stopPlaying()
{
    emit fusionFilePlayControl(false);
    state.filePlaying = false;
    ++state.playSession;
}

void FusionPlayer::release()
{
    if (state.playMode != ModeFusionRecording)
        return;
    // Also when playback has come to its end by itself: its thread waits to be joined.
    stopPlaying();
    emit runningChanged();
}

void FusionPlayer::fileFinished()
{
    // A start joins the thread that this runs on before its own session can end: the number is ours.
    const std::uint64_t session = state.playSession;
    finishedSession = session;
    state.filePlaying = false;
    QMetaObject::invokeMethod(
        this,
        [this, session] {
            if (state.playSession != session)
                return;
            finishedSession = noSession;
            emit runningChanged();
        },
        Qt::QueuedConnection);
}

void FusionPlayer::setStartTime(std::uint64_t time)
{
    startTime = time;
    scale = TimelineScale(time, time);
    timeline.setMinimum(scale.toTimeline(time));
}

void FusionPlayer::setEndTime(std::uint64_t time)
{
    scale = TimelineScale(startTime, time);
    timeline.setMaximum(scale.toTimeline(time));
    // A recording too long for the timeline's numbers is scaled, its start as well.
    timeline.setMinimum(scale.toTimeline(startTime));
    // The timeline holds the end point at or after the playhead, which stands where the last recording left
    // it: begin with the whole of this one.
    timeline.setHandleMode(timeline.handleMode());
    timeline.update();
    emit scaleChanged(scale);
}

void FusionPlayer::showProgress(std::uint64_t current, std::uint64_t total)
{
    // Progress still under way when another source was opened is not that one's.
    if (state.playMode != ModeFusionRecording)
        return;
    timeline.setCenterValue(scale.toTimeline(current));
    emit timeTextChanged(timestampToText(current) + QLatin1Char('/') + timestampToText(total));
}
