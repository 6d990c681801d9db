#pragma once

#include "display/sourcestate.h"
#include "playback/timelinescale.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <cstdint>

class KvThreeHandleSlider;

/// What the play bar does with a fusion recording: starts and stops the engine that plays it and shows how
/// far it has come. GUI thread, but for fileFinished().
class FusionPlayer : public QObject
{
    Q_OBJECT

public:
    /// The references outlive the player.
    FusionPlayer(SourceState& state, KvThreeHandleSlider& timeline, QObject* parent = nullptr);

    /// The play button in mode 4. Afterwards SourceState::filePlaying says what the button shows.
    void playClicked();
    /// Stops playback, before another source takes its place.
    void release();
    /// The engine has come to the recording's end: called on its play thread.
    void fileFinished();

    /// First and last time of the recording that was loaded, the first one first; microseconds.
    void setStartTime(std::uint64_t time);
    void setEndTime(std::uint64_t time);
    void showProgress(std::uint64_t current, std::uint64_t total);

signals:
    /// Starts or stops the engine, which is done when the emit returns.
    void fusionFilePlayControl(bool play);
    /// Position and end as the label shows them.
    void timeTextChanged(QString text);
    /// The play button has to follow SourceState::filePlaying.
    void runningChanged();
    /// The timeline counts so now.
    void scaleChanged(TimelineScale scale);

private:
    void stopPlaying();

    SourceState& state;
    KvThreeHandleSlider& timeline;
    std::uint64_t startTime = 0; ///< microseconds
    TimelineScale scale;
    static constexpr std::uint64_t noSession = ~std::uint64_t{0};
    /// The session that has come to its end while the button does not show it yet.
    std::atomic<std::uint64_t> finishedSession{noSession};
};
