#include "tests/gui/dvsplayerfixture.h"

#include <QSignalSpy>

#include <thread>
#include <vector>

using Columns = std::pair<int, int>;

TEST_F(DvsPlayerTest, AnOpenedRecordingStandsAtItsStartAndSetsTheTimelinesBounds)
{
    QSignalSpy ranges(&timeline, &KvThreeHandleSlider::rangeChanged);
    open(1'000'000, 10'500'000);
    EXPECT_TRUE(player->hasRecording());
    EXPECT_EQ(player->startTime(), 1'000'000u);
    EXPECT_EQ(player->endTime(), 10'500'000u);
    EXPECT_EQ(player->currentTime(), 1'000'000u);
    EXPECT_EQ(timeline.minimum(), 1'000'000u);
    EXPECT_EQ(timeline.maximum(), 10'500'000u);
    EXPECT_EQ(label, QStringLiteral("00:01:000000/00:10:500000"));
    ASSERT_EQ(ranges.size(), 2);
    EXPECT_EQ(ranges.at(0), (QVariantList{0, 10'500'000})) << "the end comes first";
    EXPECT_EQ(reader->log.lines(), Lines()) << "nothing is read yet";
}

TEST_F(DvsPlayerTest, MinutesAreNotWrappedInTheLabel)
{
    open(0, 75'123'456);
    EXPECT_EQ(label, QStringLiteral("00:00:000000/01:15:123456"));
}

TEST_F(DvsPlayerTest, PlayWithoutARecordingAsksForOne)
{
    const CapturedMessages messages;
    click();
    EXPECT_EQ(messages.debug(), (QStringList{QStringLiteral("Please load file first.")}));
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
}

TEST_F(DvsPlayerTest, AClosedRecordingCannotBePlayedOrStepped)
{
    open(0, 10'500'000);
    player->setRecording(nullptr);
    EXPECT_FALSE(player->hasRecording());
    EXPECT_EQ(player->endTime(), 0u);
    forget();
    const CapturedMessages messages;
    click();
    EXPECT_TRUE(messages.debug().contains(QStringLiteral("Please load file first.")));
    EXPECT_FALSE(play.isChecked());
    player->nextClicked();
    player->previousClicked();
    player->stopClicked();
    player->onSliderTimeMove(5);
    player->onSliderTimeTrackClick(5);
    EXPECT_EQ(labels + announcements + pictures, 0);
}

TEST_F(DvsPlayerTest, NextShowsTheEventsOfTheAccumulationTimeAndStepsByTheFramePeriod)
{
    open(0, 10'500'000);
    moveTo(3'000'000);
    player->nextClicked();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 3000000 33333"}));
    EXPECT_EQ(player->currentTime(), 3'030'303u);
    EXPECT_EQ(timeline.centerValue(), 3'030'303);
    EXPECT_EQ(label, QStringLiteral("00:03:030303/00:10:500000"));
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(shownColumns(), (Columns{440, 473})) << "3000 to 3033 ms, modulo the width";
    player->nextClicked();
    EXPECT_EQ(reader->log.lines().back(), "at 3030303 33333");
}

TEST_F(DvsPlayerTest, NextFollowsAccumulationTimeAndFrameRate)
{
    open(0, 10'500'000);
    timing.accumulationTime = 5000;
    timing.setFrameRate(100);
    player->nextClicked();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 5000"}));
    EXPECT_EQ(player->currentTime(), 10'000u);
    EXPECT_EQ(shownColumns(), (Columns{0, 4}));
}

TEST_F(DvsPlayerTest, NextIsRefusedAsSoonAsTheAccumulationTimeReachesTheEnd)
{
    open(0, 100'000);
    moveTo(66'666); // 99'999 at the far end of the window
    player->nextClicked();
    EXPECT_EQ(player->currentTime(), 96'969u);

    moveTo(66'667); // a step would still fit, the window does not
    const CapturedMessages messages;
    player->nextClicked();
    EXPECT_EQ(messages.debug(), (QStringList{QStringLiteral("File read end.")}));
    EXPECT_EQ(player->currentTime(), 66'667u);
    EXPECT_EQ(timeline.centerValue(), 66'667);
    EXPECT_EQ(reader->log.lines(), Lines());
    EXPECT_EQ(labels + announcements, 0);
}

TEST_F(DvsPlayerTest, NextMayStepPastTheEndAndPlayThenBeginsAtTheStart)
{
    open(0, 100'000);
    timing.setFrameRate(1);
    player->nextClicked();
    EXPECT_EQ(player->currentTime(), 1'000'000u);
    EXPECT_EQ(timeline.centerValue(), 100'000);
    EXPECT_EQ(label, QStringLiteral("00:01:000000/00:00:100000"));
    {
        const CapturedMessages messages;
        player->nextClicked();
        EXPECT_EQ(messages.debug().count(QStringLiteral("File read end.")), 1);
    }
    reader->log.clear();
    click();
    ASSERT_TRUE(wait([this] { return pauses == 1; }));
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 0"}));
    EXPECT_EQ(player->currentTime(), 0u);
}

TEST_F(DvsPlayerTest, NextWithoutABatchStaysWhereItIs)
{
    open(0, 10'500'000);
    reader->onRead = [](std::uint64_t, std::uint64_t) { return ScriptedReader::Events(); };
    const CapturedMessages messages;
    player->nextClicked();
    EXPECT_EQ(player->currentTime(), 0u);
    EXPECT_EQ(announcements, 0);
    EXPECT_EQ(messages.debug(), QStringList()) << "that the range ends is told of its end only";
}

TEST_F(DvsPlayerTest, NextOverAQuietMomentShowsAnEmptyPictureAndSteps)
{
    open(0, 10'500'000);
    player->nextClicked();
    EXPECT_NE(shownColumns(), (Columns{-1, -1}));
    reader->onRead
        = [](std::uint64_t, std::uint64_t) { return std::make_shared<std::vector<korvane::Event2D>>(); };
    player->nextClicked();
    EXPECT_EQ(player->currentTime(), 60'606u);
    EXPECT_FALSE(picture.isNull());
    EXPECT_EQ(shownColumns(), (Columns{-1, -1}));
}

TEST_F(DvsPlayerTest, PreviousStepsBackByTheFramePeriodAndShowsThatPlace)
{
    open(0, 10'500'000);
    moveTo(70'000);
    player->previousClicked();
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 39697", "next 33333"}));
    EXPECT_EQ(player->currentTime(), 39'697u);
    EXPECT_EQ(timeline.centerValue(), 39'697);
    EXPECT_EQ(label, QStringLiteral("00:00:039697/00:10:500000"));
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(shownColumns(), (Columns{40, 73}));
    // The next step of either kind counts from there.
    player->nextClicked();
    EXPECT_EQ(reader->log.lines().back(), "at 39697 33333");
}

TEST_F(DvsPlayerTest, PreviousGoesNoFurtherThanTheStart)
{
    open(1'000'000, 10'500'000);
    moveTo(1'030'303);
    player->previousClicked();
    EXPECT_EQ(player->currentTime(), 1'000'000u);
    moveTo(1'030'302);
    player->previousClicked();
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 1000000", "next 33333"}));
    EXPECT_EQ(player->currentTime(), 1'000'000u);
    EXPECT_EQ(timeline.centerValue(), 1'000'000);
}

TEST_F(DvsPlayerTest, PreviousBeforeTheFirstStepWrapsToATimeTheReaderRefuses)
{
    open(0, 10'500'000);
    moveTo(10'000);
    player->previousClicked();
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 18446744073709531313 refused"}));
    EXPECT_EQ(player->currentTime(), 10'000u);
    EXPECT_EQ(timeline.centerValue(), 10'000);
    EXPECT_EQ(labels + announcements, 0);
}

TEST_F(DvsPlayerTest, StopReturnsToTheStartAndKeepsThePicture)
{
    open(0, 10'500'000);
    moveTo(3'000'000);
    player->nextClicked();
    const QImage shown = picture;
    reader->log.clear();
    player->stopClicked();
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 0"}));
    EXPECT_EQ(player->currentTime(), 0u);
    EXPECT_EQ(timeline.centerValue(), 0);
    EXPECT_EQ(label, QStringLiteral("00:00:000000/00:10:500000"));
    EXPECT_EQ(announcements, 2);
    EXPECT_FALSE(frames.hasNewEvents());
    EXPECT_EQ(picture, shown);
    EXPECT_EQ(shownColumns(), (Columns{440, 473}));
}

TEST_F(DvsPlayerTest, ADragShowsThePlaceItComesTo)
{
    open(0, 10'500'000);
    player->onSliderTimeMove(500'000);
    EXPECT_EQ(reader->log.lines(), (Lines{"at 500000 33333"}));
    EXPECT_EQ(player->currentTime(), 500'000u);
    EXPECT_EQ(label, QStringLiteral("00:00:500000/00:10:500000"));
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(shownColumns(), (Columns{500, 533}));
    player->nextClicked();
    EXPECT_EQ(player->currentTime(), 530'303u);
}

TEST_F(DvsPlayerTest, ADragToWhereThereIsNothingShowsNothing)
{
    open(0, 100'000);
    reader->onRead = [](std::uint64_t, std::uint64_t) { return ScriptedReader::Events(); };
    player->onSliderTimeMove(100'000);
    EXPECT_EQ(player->currentTime(), 100'000u);
    EXPECT_EQ(label, QStringLiteral("00:00:100000/00:00:100000"));
    EXPECT_TRUE(picture.isNull());
}

TEST_F(DvsPlayerTest, AClickOnTheTrackSeeksAndShowsThePlace)
{
    open(0, 10'500'000);
    player->onSliderTimeTrackClick(700'000);
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 700000", "next 33333"}));
    EXPECT_EQ(player->currentTime(), 700'000u);
    EXPECT_EQ(label, QStringLiteral("00:00:700000/00:10:500000"));
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(shownColumns(), (Columns{700, 733}));
}

TEST_F(DvsPlayerTest, AClickThatTheReaderRefusesChangesNothing)
{
    open(0, 100'000);
    moveTo(50'000);
    const CapturedMessages messages;
    player->onSliderTimeTrackClick(100'001);
    EXPECT_EQ(messages.debug(), (QStringList{QStringLiteral("seek time err.")}));
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 100001 refused"}));
    EXPECT_EQ(player->currentTime(), 50'000u);
    EXPECT_EQ(labels + announcements, 0);
}

TEST_F(DvsPlayerTest, StepsAndStopHoldTheReaderWhileTheyAskIt)
{
    open(0, 10'500'000);
    moveTo(3'000'000);
    std::vector<bool> held;
    const auto look = [this, &held] {
        std::thread([&] {
            held.push_back(!player->readerMutex().try_lock());
            if (!held.back())
                player->readerMutex().unlock();
        }).join();
    };
    reader->onMove = look;
    reader->onRead = [&look](std::uint64_t, std::uint64_t) {
        look();
        return std::nullopt;
    };
    player->nextClicked();
    EXPECT_EQ(held, (std::vector<bool>{true})) << "read";
    held.clear();
    player->previousClicked();
    EXPECT_EQ(held, (std::vector<bool>{true, true})) << "seek and read";
    held.clear();
    player->stopClicked();
    EXPECT_EQ(held, (std::vector<bool>{true})) << "seek";
    held.clear();
    player->onSliderTimeMove(500'000);
    EXPECT_EQ(held, (std::vector<bool>{true})) << "read";
    held.clear();
    player->onSliderTimeTrackClick(700'000);
    EXPECT_EQ(held, (std::vector<bool>{false, false})) << "a click never waits for a tick";
}

TEST_F(DvsPlayerTest, PlacesWithoutABatchAreAnnouncedButAStepForwardIsNot)
{
    open(0, 10'500'000);
    moveTo(3'000'000);
    reader->onRead = [](std::uint64_t, std::uint64_t) { return ScriptedReader::Events(); };
    player->nextClicked();
    EXPECT_EQ(announcements, 0);
    EXPECT_EQ(player->currentTime(), 3'000'000u);
    player->onSliderTimeMove(500'000);
    EXPECT_EQ(announcements, 1);
}

TEST_F(DvsPlayerTest, StepsStopAndSeeksActOnADvsRecordingOnly)
{
    open(0, 10'500'000);
    moveTo(3'000'000);
    for (const int mode : {ModeNone, ModeDvsCamera, ModeFusionCamera, ModeFusionRecording}) {
        state.playMode = mode;
        state.filePlaying = true;
        player->nextClicked();
        player->previousClicked();
        player->stopClicked();
        player->onSliderTimeMove(5000);
        player->onSliderTimeTrackClick(5000);
        player->release();
        EXPECT_EQ(reader->log.lines(), Lines()) << mode;
        EXPECT_EQ(player->currentTime(), 3'000'000u) << mode;
        EXPECT_EQ(labels + announcements, 0) << mode;
        EXPECT_TRUE(state.filePlaying) << "mode " << mode << " runs on";
    }
    state.filePlaying = false;
}

TEST_F(DvsPlayerTest, ARecordingThatCouldNotBeLoadedIsEmptyButHarmless)
{
    reader = std::make_shared<ScriptedReader>(5000, 100'000);
    reader->loaded = false;
    player->setRecording(reader);
    EXPECT_EQ(label, QStringLiteral("00:00:000000/00:00:000000"));
    player->nextClicked();
    player->previousClicked();
    player->stopClicked();
    player->onSliderTimeMove(0);
    player->onSliderTimeTrackClick(0);
    EXPECT_TRUE(picture.isNull());
    click();
    ASSERT_TRUE(wait([this] { return pauses == 1; }));
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
    EXPECT_EQ(player->currentTime(), 0u);
}
