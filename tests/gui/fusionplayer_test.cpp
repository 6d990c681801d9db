#include "playback/fusionplayer.h"

#include "widgets/kvthreehandleslider.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

namespace {

/// A player with a real timeline and button, and an engine that only notes.
class FusionPlayerTest : public testing::Test
{
protected:
    FusionPlayerTest()
    {
        timeline.resize(800, 30);
        play.setCheckable(true);
        state.playMode = ModeFusionRecording;
        QObject::connect(&play, &QPushButton::clicked, &player, &FusionPlayer::playClicked);
        QObject::connect(&player, &FusionPlayer::runningChanged, &play,
                         [this] { play.setChecked(state.filePlaying); });
        QObject::connect(&player, &FusionPlayer::timeTextChanged, &play,
                         [this](const QString& text) { label = text; });
        QObject::connect(&player, &FusionPlayer::fusionFilePlayControl, &play, [this](bool on) {
            controls.push_back(on);
            flagAtControl.push_back(state.filePlaying);
            if (onControl)
                onControl(on);
        });
    }
    /// The engine comes to the end on a thread of its own.
    void finishOnAnotherThread()
    {
        std::thread thread([this] { player.fileFinished(); });
        thread.join();
    }
    void agree(bool running)
    {
        EXPECT_EQ(state.filePlaying, running);
        EXPECT_EQ(play.isChecked(), running);
    }

    SourceState state;
    KvThreeHandleSlider timeline{nullptr, 1, 1};
    QPushButton play;
    QString label;
    std::vector<bool> controls;
    std::vector<bool> flagAtControl;
    std::function<void(bool)> onControl;
    FusionPlayer player{state, timeline};
};

} // namespace

TEST_F(FusionPlayerTest, APressStartsTheEngineWithTheFlagSetAlready)
{
    play.click();
    EXPECT_EQ(controls, std::vector<bool>{true});
    EXPECT_EQ(flagAtControl, std::vector<bool>{true});
    agree(true);
    play.click();
    EXPECT_EQ(controls, (std::vector<bool>{true, false}));
    agree(false);
}

TEST_F(FusionPlayerTest, TheEndOfTheFileReleasesTheButton)
{
    play.click();
    finishOnAnotherThread();
    EXPECT_FALSE(state.filePlaying);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !play.isChecked(); }));
    play.click();
    EXPECT_EQ(controls, (std::vector<bool>{true, true}));
    agree(true);
}

TEST_F(FusionPlayerTest, APauseInTheMomentOfTheEndIsNotTakenForAStart)
{
    play.click();
    finishOnAnotherThread();
    // The button is down until the end arrives: whoever presses it now means to pause.
    play.click();
    EXPECT_EQ(controls, (std::vector<bool>{true, false}));
    agree(false);
    QApplication::processEvents();
    agree(false);
    play.click();
    QApplication::processEvents();
    EXPECT_EQ(controls, (std::vector<bool>{true, false, true}));
    agree(true);
}

TEST_F(FusionPlayerTest, APointBehindAShorterRecordingIsForgotten)
{
    timeline.setHandleMode(3);
    player.setStartTime(0);
    player.setEndTime(10'000'000);
    timeline.setCenterValue(9'000'000);
    player.setStartTime(0);
    player.setEndTime(4'000'000);
    EXPECT_EQ(timeline.effectiveUpperValue(), 4'000'000);
    EXPECT_EQ(timeline.effectiveLowerValue(), 0);
}

TEST_F(FusionPlayerTest, AnEngineThatFinishesAtOnceLeavesTheButtonUp)
{
    onControl = [this](bool on) {
        if (on)
            player.fileFinished();
    };
    play.click();
    QApplication::processEvents();
    agree(false);
}

TEST_F(FusionPlayerTest, ReleasingStopsTheEngineInItsOwnModeOnly)
{
    play.click();
    player.release();
    EXPECT_EQ(controls, (std::vector<bool>{true, false}));
    agree(false);
    state.playMode = ModeDvsCamera;
    player.release();
    EXPECT_EQ(controls.size(), 2U);
}

TEST_F(FusionPlayerTest, ReleasingAfterTheEndJoinsTheEngineAllTheSame)
{
    play.click();
    finishOnAnotherThread();
    player.release();
    EXPECT_EQ(controls, (std::vector<bool>{true, false}));
    QApplication::processEvents();
    agree(false);
}

TEST_F(FusionPlayerTest, TheTimelineTakesTheTimesAndTheLabelTheProgress)
{
    player.setStartTime(1'000'000);
    player.setEndTime(75'123'456);
    EXPECT_EQ(timeline.minimum(), 1'000'000U);
    EXPECT_EQ(timeline.maximum(), 75'123'456U);
    player.showProgress(10'500'000, 75'123'456);
    EXPECT_EQ(timeline.centerValue(), 10'500'000);
    EXPECT_EQ(label, QStringLiteral("00:10:500000/01:15:123456"));
}

TEST_F(FusionPlayerTest, ALongRecordingIsScaledAndItsLabelIsNot)
{
    constexpr std::uint64_t hours = 4ULL * 3600 * 1'000'000;
    player.setStartTime(5'000'000);
    player.setEndTime(hours);
    player.showProgress(hours, hours);
    EXPECT_EQ(timeline.centerValue(), timeline.effectiveUpperValue());
    EXPECT_EQ(label, QStringLiteral("240:00:000000/240:00:000000"));
    player.showProgress(5'000'000, hours);
    EXPECT_EQ(timeline.centerValue(), timeline.effectiveLowerValue());
}

TEST_F(FusionPlayerTest, ProgressThatArrivesInAnotherModeIsDropped)
{
    player.setStartTime(0);
    player.setEndTime(10'000'000);
    state.playMode = ModeDvsRecording;
    player.showProgress(5'000'000, 10'000'000);
    EXPECT_EQ(timeline.centerValue(), 0);
    EXPECT_TRUE(label.isEmpty());
}
