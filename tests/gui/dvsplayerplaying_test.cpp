#include "tests/gui/dvsplayerfixture.h"

#include <atomic>
#include <semaphore>

namespace {

class DvsPlayerPlayingTest : public DvsPlayerTest
{
protected:
    /// Plays without letting the GUI come to anything, until the loop has read so many windows.
    void playUnseen(std::ptrdiff_t reads)
    {
        player->playClicked();
        ASSERT_TRUE(reader->log.waitFor([reads](const Lines& lines) { return std::ssize(lines) >= reads; }));
    }
    /// Plays to the end without letting the GUI come to anything.
    void playToTheEndUnseen()
    {
        player->playClicked();
        ASSERT_TRUE(reader->log.waitForCount("seek " + std::to_string(player->startTime()), 1));
    }
    static void letTheGuiCatchUp()
    {
        for (int i = 0; i < 10; ++i)
            QApplication::processEvents();
    }
};

using Columns = std::pair<int, int>;

} // namespace

TEST_F(DvsPlayerPlayingTest, PlayShowsPicturesAndMovesTimelineAndLabel)
{
    open(0, 10'500'000);
    click();
    EXPECT_TRUE(play.isChecked());
    EXPECT_TRUE(state.filePlaying);
    ASSERT_TRUE(wait([this] { return pictures >= 3; }));
    EXPECT_GE(timeline.centerValue(), 3 * 30303);
    EXPECT_EQ(timeline.centerValue() % 30303, 0);
    EXPECT_TRUE(label.endsWith(QStringLiteral("/00:10:500000"))) << label.toStdString();
    EXPECT_NE(shownColumns(), (Columns{-1, -1}));
    EXPECT_EQ(pauses, 0);
}

TEST_F(DvsPlayerPlayingTest, PressedAgainPlayPausesWhereItIsAndGoesOnFromThere)
{
    open(0, 10'500'000);
    click();
    ASSERT_TRUE(wait([this] { return pictures >= 2; }));
    click();
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
    letTheGuiCatchUp();
    const std::uint64_t there = player->currentTime();
    EXPECT_GT(there, 0u);
    EXPECT_EQ(timeline.centerValue(), static_cast<int>(there)) << "the last position and picture are shown";
    EXPECT_EQ(shownColumns().second, static_cast<int>(there - 30303 + 33332) / 1000);
    reader->log.clear();
    click();
    ASSERT_TRUE(wait([this] { return !reader->log.lines().empty(); }));
    EXPECT_EQ(reader->log.lines().front(), "at " + std::to_string(there) + " 33333");
}

TEST_F(DvsPlayerPlayingTest, PlaysToItsEndThenReturnsToItsStartAndStopsKeepingTheLastPicture)
{
    open(20'000, 120'000);
    click();
    ASSERT_TRUE(wait([this] { return pauses == 1; }));
    letTheGuiCatchUp();
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
    EXPECT_EQ(reader->log.lines(),
              (Lines{"at 20000 33333", "at 50303 33333", "at 80606 33333", "at 110909 9092", "seek 20000"}));
    EXPECT_EQ(player->currentTime(), 20'000u);
    EXPECT_EQ(timeline.centerValue(), 20'000);
    EXPECT_EQ(label, QStringLiteral("00:00:020000/00:00:120000"));
    EXPECT_EQ(shownColumns(), (Columns{111, 120}));
    EXPECT_EQ(pauses, 1);
    // And once more.
    click();
    EXPECT_TRUE(play.isChecked());
    ASSERT_TRUE(wait([this] { return pauses == 2; }));
}

TEST_F(DvsPlayerPlayingTest, LoopingItGoesOnUntilLoopingIsOff)
{
    open(0, 40'000);
    player->setLooping(true);
    click();
    ASSERT_TRUE(wait([this] { return reader->log.count("seek 0") >= 3; }));
    EXPECT_TRUE(play.isChecked());
    EXPECT_EQ(pauses, 0);
    player->setLooping(false);
    ASSERT_TRUE(wait([this] { return pauses == 1; }));
    EXPECT_FALSE(play.isChecked());
}

TEST_F(DvsPlayerPlayingTest, NextPreviousAndStopPauseFirst)
{
    open(0, 10'500'000);
    const auto playOn = [this] {
        forget();
        click();
        ASSERT_TRUE(wait([this] { return pictures >= 2; }));
    };
    playOn();
    player->nextClicked();
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
    EXPECT_EQ(timeline.centerValue(), static_cast<int>(player->currentTime()));
    playOn();
    player->previousClicked();
    EXPECT_FALSE(play.isChecked());
    EXPECT_EQ(timeline.centerValue(), static_cast<int>(player->currentTime()));
    playOn();
    player->stopClicked();
    EXPECT_FALSE(play.isChecked());
    EXPECT_EQ(player->currentTime(), 0u);
    EXPECT_EQ(timeline.centerValue(), 0);
    letTheGuiCatchUp();
    EXPECT_EQ(timeline.centerValue(), 0);
    EXPECT_EQ(label, QStringLiteral("00:00:000000/00:10:500000"));
}

TEST_F(DvsPlayerPlayingTest, WhatThePlayLoopPostedBeforeAStepDoesNotCoverTheStep)
{
    open(0, 10'500'000);
    playUnseen(4);
    player->nextClicked();
    const auto shown = shownColumns();
    const QString text = label;
    EXPECT_NE(shown, (Columns{-1, -1}));
    letTheGuiCatchUp();
    EXPECT_EQ(timeline.centerValue(), static_cast<int>(player->currentTime()));
    EXPECT_EQ(label, text);
    EXPECT_EQ(shownColumns(), shown) << "an older picture came late";
    EXPECT_EQ(pictures, 0);
}

TEST_F(DvsPlayerPlayingTest, WhatThePlayLoopPostedBeforeADragDoesNotCoverIt)
{
    open(0, 10'500'000);
    playUnseen(3);
    player->playClicked();
    timeline.setCenterValue(700'000);
    player->onSliderTimeMove(700'000);
    letTheGuiCatchUp();
    EXPECT_EQ(timeline.centerValue(), 700'000);
    EXPECT_EQ(label, QStringLiteral("00:00:700000/00:10:500000"));
    EXPECT_EQ(shownColumns(), (Columns{700, 733}));
}

TEST_F(DvsPlayerPlayingTest, OnlyTheNewestOfPicturesThatWaitIsShown)
{
    open(0, 10'500'000);
    playUnseen(5);
    player->playClicked();
    letTheGuiCatchUp();
    EXPECT_EQ(pictures, 1);
    EXPECT_EQ(shownColumns().second, static_cast<int>(player->currentTime() - 30303 + 33332) / 1000);
}

TEST_F(DvsPlayerPlayingTest, ADragWhilePlayingIsPlayedOnFrom)
{
    open(0, 10'500'000);
    std::atomic<int> readsOnTheGuiThread{0};
    reader->onRead = [&readsOnTheGuiThread](std::uint64_t, std::uint64_t) {
        readsOnTheGuiThread += QThread::currentThread() == QApplication::instance()->thread() ? 1 : 0;
        return std::nullopt;
    };
    click();
    ASSERT_TRUE(wait([this] { return pictures >= 1; }));
    announcements = 0;
    timeline.setCenterValue(5'000'000);
    player->onSliderTimeMove(5'000'000);
    EXPECT_EQ(label, QStringLiteral("00:05:000000/00:10:500000"));
    EXPECT_TRUE(state.filePlaying);
    ASSERT_TRUE(wait([this] { return reader->log.contains("at 5000000 33333"); }));
    ASSERT_TRUE(wait([this] { return timeline.centerValue() > 5'000'000; }));
    EXPECT_EQ(readsOnTheGuiThread, 0);
    EXPECT_EQ(announcements, 0);
    EXPECT_TRUE(play.isChecked());
}

TEST_F(DvsPlayerPlayingTest, AClickOnTheTrackWhilePlayingNeverWaitsForATick)
{
    open(0, 10'500'000);
    std::binary_semaphore clicked(0);
    std::atomic<bool> reading{false};
    reader->onRead = [&](std::uint64_t start, std::uint64_t) {
        if (start == 0) {
            reading = true;
            EXPECT_TRUE(clicked.try_acquire_for(std::chrono::seconds(30)));
        }
        return std::nullopt;
    };
    click();
    ASSERT_TRUE(wait([&reading] { return reading.load(); }));
    // The tick is in its read and holds the reader.
    player->onSliderTimeTrackClick(5'000'000);
    EXPECT_TRUE(frames.hasNewEvents());
    EXPECT_EQ(announcements, 0) << "the play loop shows the picture";
    clicked.release();
    ASSERT_TRUE(wait([this] { return reader->log.count("at 5000000 33333") == 2; })) << "click and tick";
    EXPECT_TRUE(reader->log.contains("seek 5000000"));
    EXPECT_FALSE(reader->log.contains("at 30303 33333")) << "the click wins over the tick";
    EXPECT_TRUE(play.isChecked());
}

TEST_F(DvsPlayerPlayingTest, AClickThatMeetsTheEndOfTheRangeShowsItsOwnPlace)
{
    open(0, 100'000);
    moveTo(90'000);
    player->setLooping(true);
    std::atomic<bool> reading = false;
    std::binary_semaphore clicked(0);
    reader->onRead = [&](std::uint64_t, std::uint64_t) -> std::optional<ScriptedReader::Events> {
        if (!reading.exchange(true)) {
            EXPECT_TRUE(clicked.try_acquire_for(std::chrono::seconds(30)));
        }
        return std::nullopt;
    };
    // Between the click's seek of the reader and its new position, the loop goes round.
    reader->onMove = [&] {
        if (QThread::currentThread() != QApplication::instance()->thread())
            return;
        clicked.release();
        EXPECT_TRUE(reader->log.waitForCount("seek 0", 1));
    };
    click();
    ASSERT_TRUE(wait([&reading] { return reading.load(); }));
    player->onSliderTimeTrackClick(50'000);
    forget();
    ASSERT_TRUE(wait([this] { return pictures > 0; }));
    EXPECT_GE(shownColumns().first, 50) << "nothing of the start, to which the loop had gone";
    EXPECT_TRUE(reader->log.contains("at 50000 33333"));
    reader->onMove = nullptr;
    click();
}

TEST_F(DvsPlayerPlayingTest, APauseInTheMomentOfTheEndIsNotTakenForAStart)
{
    open(0, 20'000);
    playToTheEndUnseen();
    // The end has been posted, or is about to be; the user presses pause before it is seen.
    click();
    EXPECT_FALSE(play.isChecked());
    letTheGuiCatchUp();
    EXPECT_EQ(pauses, 0);
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(play.isChecked());
    EXPECT_EQ(reader->log.lines().size(), 2u) << "nothing was read again";
}

TEST_F(DvsPlayerPlayingTest, AnEndOfAnEarlierPlaybackDoesNotPauseTheNext)
{
    open(0, 20'000);
    playToTheEndUnseen();
    click();
    player->setLooping(true);
    click();
    letTheGuiCatchUp();
    EXPECT_EQ(pauses, 0);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
}

TEST_F(DvsPlayerPlayingTest, StopNextAndPreviousInTheMomentOfTheEndNeverStartAgain)
{
    open(0, 100'000);
    for (const auto press : {&DvsPlayer::stopClicked, &DvsPlayer::nextClicked, &DvsPlayer::previousClicked}) {
        reader->log.clear();
        player->onSliderTimeMove(95'000);
        playToTheEndUnseen();
        (player.get()->*press)();
        letTheGuiCatchUp();
        EXPECT_EQ(pauses, 0);
        EXPECT_FALSE(state.filePlaying);
        EXPECT_FALSE(play.isChecked());
    }
}

TEST_F(DvsPlayerPlayingTest, LettingGoStopsPlayback)
{
    open(0, 10'500'000);
    click();
    ASSERT_TRUE(wait([this] { return pictures >= 1; }));
    player->release();
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(play.isChecked());
    player->setRecording(nullptr);
    letTheGuiCatchUp();
    EXPECT_FALSE(player->hasRecording());
}

TEST_F(DvsPlayerPlayingTest, LettingGoAfterTheEndJoinsTheThreadThatEnded)
{
    open(0, 20'000);
    playToTheEndUnseen();
    player->release();
    player->setRecording(nullptr);
    EXPECT_EQ(reader.use_count(), 1);
    letTheGuiCatchUp();
    EXPECT_EQ(pauses, 0);
}

TEST_F(DvsPlayerPlayingTest, EndsWhilePlaying)
{
    open(0, 10'500'000);
    playUnseen(2);
    player.reset();
    EXPECT_FALSE(state.filePlaying);
    letTheGuiCatchUp();
    EXPECT_EQ(pictures, 0);
}
