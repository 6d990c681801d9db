#pragma once

#include "display/displaytiming.h"
#include "display/framemailbox.h"
#include "display/sourcestate.h"
#include "playback/dvsplayloop.h"
#include "playback/timelinescale.h"

#include <QObject>
#include <QPixmap>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>

class EventFrameBuffer;
class KvThreeHandleSlider;

/// Plays, steps and seeks in a DVS-only recording. It drives the timeline and tells the window what else to
/// show. GUI thread, but for what PlaybackView says.
class DvsPlayer : public QObject, private PlaybackView
{
    Q_OBJECT

public:
    /// The references and the timeline outlive the player.
    DvsPlayer(SourceState& state, DisplayTiming& timing, EventFrameBuffer& frames,
              KvThreeHandleSlider& timeline, QObject* parent = nullptr);
    /// Stops and joins.
    ~DvsPlayer() override;

    /// Takes a loaded recording over, its position at its start; an empty pointer closes the one that is
    /// open. Nothing plays meanwhile.
    void setRecording(std::shared_ptr<korvane::DvsFileReader> reader);
    bool hasRecording() const { return position.fileReader != nullptr; }
    std::shared_ptr<korvane::DvsFileReader> fileReader() const { return position.fileReader; }
    /// Serialises the recording between its users. Any thread.
    std::mutex& readerMutex() { return position.readerMutex; }
    /// Lends the recording to a job on another thread, which may hold readerMutex() for long: until it is
    /// given back nothing is played, stepped or sought. Nothing plays at either call.
    void setLent(bool on) { lent = on; }
    /// The range that playback is confined to, microseconds. Any thread.
    std::uint64_t rangeStart() const override;
    std::uint64_t rangeEnd() const override;
    /// First and last time of the recording, microseconds.
    std::uint64_t startTime() const { return fileStartTs; }
    std::uint64_t endTime() const { return fileEndTs; }
    /// Microseconds.
    std::uint64_t currentTime() const { return position.fileCurTs; }

    /// Another recording's times stand on the timeline now: ranges of this one are read from it by them.
    void setTimelineScale(const TimelineScale& timelineScale) { scale = timelineScale; }

    /// The play button in mode 3. Afterwards SourceState::filePlaying says what the button shows.
    void playClicked();
    void previousClicked();
    void nextClicked();
    void stopClicked();
    void setLooping(bool on) { looping = on; }
    /// The playhead was dragged, or the track clicked.
    void onSliderTimeMove(int value);
    void onSliderTimeTrackClick(int value);
    /// Stops playback, before another source takes its place.
    void release();

signals:
    /// Position and end as the label shows them.
    void timeTextChanged(QString text);
    /// New events were painted and wait to be shown.
    void triggerEventsToShow();
    /// A picture of the play loop; valid during the call.
    void triggerShowPixmap(QPixmap* pixmap);
    /// The play button has to follow SourceState::filePlaying.
    void runningChanged();
    /// Playback has come to its end: press the play button as a click would.
    void pauseRequested();

private:
    bool isLooping() const override { return looping; }
    void addEvents(const korvane::Event2D* begin, const korvane::Event2D* end) override;
    void postPicture() override;
    void postPosition(std::uint64_t time, std::uint64_t seek) override;
    void postEnd(std::uint64_t session) override;

    bool active() const { return state.playMode == ModeDvsRecording && position.fileReader && !lent; }
    void stopPlaying();
    void seek(std::uint64_t time);
    void showText(std::uint64_t time);
    void showPosition(std::uint64_t time);
    void showBatch(const korvane::DvsFileReader::Events& batch);

    SourceState& state;
    DisplayTiming& timing;
    EventFrameBuffer& frames;
    KvThreeHandleSlider& timeline;
    PlayPosition position;
    std::uint64_t fileStartTs = 0; ///< microseconds
    std::uint64_t fileEndTs = 0; ///< microseconds
    TimelineScale scale; ///< set while nothing plays
    std::atomic<bool> looping{false};
    bool lent = false;
    FrameMailbox mailbox;
    SteadyPlaybackClock clock;
    DvsPlayLoop loop; ///< last: its thread ends before anything it uses
};
