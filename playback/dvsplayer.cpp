#include "playback/dvsplayer.h"

#include "display/eventframebuffer.h"
#include "widgets/kvthreehandleslider.h"
#include "widgets/timestamptotext.h"

#include <QDebug>

#include <utility>

DvsPlayer::DvsPlayer(SourceState& sharedState, DisplayTiming& displayTiming, EventFrameBuffer& frameBuffer,
                     KvThreeHandleSlider& slider, QObject* parent)
    : QObject(parent), state(sharedState), timing(displayTiming), frames(frameBuffer), timeline(slider),
      loop(sharedState, displayTiming, position, *this, clock)
{
}

DvsPlayer::~DvsPlayer() = default;

void DvsPlayer::setRecording(std::shared_ptr<korvane::DvsFileReader> reader)
{
    position.fileReader = std::move(reader);
    fileStartTs = 0;
    fileEndTs = 0;
    if (position.fileReader) {
        position.fileReader->getStartTimestamp(fileStartTs);
        position.fileReader->getEndTimestamp(fileEndTs);
    }
    scale = TimelineScale(fileStartTs, fileEndTs);
    seek(fileStartTs);
    if (!position.fileReader)
        return;
    showText(fileStartTs);
    timeline.setMaximum(scale.toTimeline(fileEndTs));
    timeline.setMinimum(scale.toTimeline(fileStartTs));
    // The timeline holds the end point at or after the playhead, which stands where the last recording left
    // it: begin with the whole of this one.
    timeline.setHandleMode(timeline.handleMode());
}

void DvsPlayer::playClicked()
{
    if (!position.fileReader)
        qDebug().noquote() << "Please load file first.";
    else if (state.filePlaying)
        loop.stop();
    else if (!lent)
        loop.start();
    emit runningChanged();
}

void DvsPlayer::release()
{
    if (state.playMode == ModeDvsRecording)
        stopPlaying();
}

void DvsPlayer::stopPlaying()
{
    // Also when the loop has come to its end by itself: its thread waits to be joined.
    loop.stop();
    emit runningChanged();
}

void DvsPlayer::nextClicked()
{
    if (!active())
        return;
    if (state.filePlaying)
        stopPlaying();
    const std::uint64_t current = position.fileCurTs;
    // The limit counts with the accumulation time, the step with the frame period.
    if (static_cast<std::int64_t>(current + timing.accumulationTime)
        >= static_cast<std::int64_t>(rangeEnd())) {
        qDebug().noquote() << "File read end.";
        return;
    }
    korvane::DvsFileReader::Events batch;
    {
        const std::lock_guard lock(position.readerMutex);
        batch = position.fileReader->getEventsAt(current, timing.accumulationTime);
    }
    if (!batch)
        return;
    frames.addEvents(batch->data(), batch->data() + batch->size());
    seek(current + timing.frameStep);
    emit triggerEventsToShow();
    showPosition(position.fileCurTs);
}

void DvsPlayer::previousClicked()
{
    if (!active())
        return;
    if (state.filePlaying)
        stopPlaying();
    const std::uint64_t start = rangeStart();
    const std::uint64_t earlier = position.fileCurTs - timing.frameStep;
    // Before the first step this wraps to a time that the reader refuses.
    const std::uint64_t time = earlier >= start ? earlier : start;
    korvane::DvsFileReader::Events batch;
    {
        const std::lock_guard lock(position.readerMutex);
        if (!position.fileReader->seekTime(time))
            return;
        seek(time);
        showPosition(time);
        batch = position.fileReader->getNextEvents(timing.accumulationTime);
    }
    showBatch(batch);
}

void DvsPlayer::stopClicked()
{
    if (!active())
        return;
    if (state.filePlaying)
        stopPlaying();
    const std::uint64_t start = rangeStart();
    {
        const std::lock_guard lock(position.readerMutex);
        position.fileReader->seekTime(start);
        timeline.setCenterValue(scale.toTimeline(start));
        seek(start);
        showText(start);
    }
    emit triggerEventsToShow();
}

void DvsPlayer::onSliderTimeMove(int value)
{
    if (!active())
        return;
    const std::uint64_t time = scale.fromTimeline(value);
    showText(time);
    seek(time);
    if (state.filePlaying)
        return;
    korvane::DvsFileReader::Events batch;
    {
        const std::lock_guard lock(position.readerMutex);
        batch = position.fileReader->getEventsAt(time, timing.accumulationTime);
    }
    showBatch(batch);
}

void DvsPlayer::onSliderTimeTrackClick(int value)
{
    if (!active())
        return;
    const std::uint64_t time = scale.fromTimeline(value);
    // The reader is safe by itself: a click never waits for a tick.
    if (!position.fileReader->seekTime(time)) {
        qDebug().noquote() << "seek time err.";
        return;
    }
    showText(time);
    seek(time);
    // A play loop that has just come to its end may take the read position back to its start.
    const auto batch = state.filePlaying ? position.fileReader->getEventsAt(time, timing.accumulationTime)
                                         : position.fileReader->getNextEvents(timing.accumulationTime);
    if (batch)
        frames.addEvents(batch->data(), batch->data() + batch->size());
    if (!state.filePlaying)
        emit triggerEventsToShow();
}

std::uint64_t DvsPlayer::rangeStart() const
{
    return scale.fromTimeline(timeline.effectiveLowerValue());
}

std::uint64_t DvsPlayer::rangeEnd() const
{
    return scale.fromTimeline(timeline.effectiveUpperValue());
}

void DvsPlayer::addEvents(const korvane::Event2D* begin, const korvane::Event2D* end)
{
    frames.addEvents(begin, end);
}

void DvsPlayer::postPicture()
{
    if (!mailbox.put(frames.takeImage()))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            QImage image = mailbox.take();
            if (image.isNull())
                return;
            QPixmap pixmap = QPixmap::fromImage(std::move(image));
            emit triggerShowPixmap(&pixmap);
        },
        Qt::QueuedConnection);
}

void DvsPlayer::postPosition(std::uint64_t time, std::uint64_t atSeek)
{
    QMetaObject::invokeMethod(
        this,
        [this, time, atSeek] {
            if (position.seeks != atSeek)
                return;
            showText(time);
            timeline.setCenterValue(scale.toTimeline(time));
        },
        Qt::QueuedConnection);
}

void DvsPlayer::postEnd(std::uint64_t session)
{
    QMetaObject::invokeMethod(
        this,
        [this, session] {
            if (state.playSession == session)
                emit pauseRequested();
        },
        Qt::QueuedConnection);
}

void DvsPlayer::seek(std::uint64_t time)
{
    position.seek(time);
    // A picture of the play loop that is still under way would cover the one of the new place.
    mailbox.drop();
}

void DvsPlayer::showText(std::uint64_t time)
{
    emit timeTextChanged(timestampToText(time) + QLatin1Char('/') + timestampToText(fileEndTs));
}

void DvsPlayer::showPosition(std::uint64_t time)
{
    timeline.setCenterValue(scale.toTimeline(time));
    showText(time);
}

void DvsPlayer::showBatch(const korvane::DvsFileReader::Events& batch)
{
    if (batch)
        frames.addEvents(batch->data(), batch->data() + batch->size());
    emit triggerEventsToShow();
}
