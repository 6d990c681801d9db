#include "tests/support/capturedmessages.h"
#include "tests/unit/dvsplayloopfixture.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

TEST_F(DvsPlayLoopTest, ATickReadsTheAccumulationTimeAndAdvancesByTheFramePeriod)
{
    open(0, 10'000'000);
    play(3);
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 30303 33333", "at 60606 33333"}));
    EXPECT_EQ(position.fileCurTs, 90909u);
}

TEST_F(DvsPlayLoopTest, ATickHandsOverEventsPositionAndPicture)
{
    open(0, 10'000'000);
    play(2);
    EXPECT_EQ(
        view.log.lines(),
        (Lines{"events 34", "position 30303 0", "picture", "events 33", "position 60606 0", "picture"}));
}

TEST_F(DvsPlayLoopTest, TakesAccumulationTimeAndFramePeriodAsTheyAreAtEachTick)
{
    open(1000, 10'000'000);
    timing.accumulationTime = 5;
    timing.setFrameRate(1);
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    timing.accumulationTime = 7000;
    timing.setFrameRate(100);
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(2));
    loop->stop();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 1000 5", "at 1001000 7000"}));
    EXPECT_EQ(position.fileCurTs, 1011000u);
}

TEST_F(DvsPlayLoopTest, TheLastPartialWindowReachesTheEndAndThenPlaybackEndsAtTheStart)
{
    open(0, 100'000);
    loop->start();
    clock.grant(3);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(),
              (Lines{"at 0 33333", "at 30303 33333", "at 60606 33333", "at 90909 9092", "seek 0"}));
    EXPECT_EQ(view.log.lines(),
              (Lines{"events 34", "position 30303 0", "picture", "events 33", "position 60606 0", "picture",
                     "events 33", "position 90909 0", "picture", "events 10", "position 100000 0", "picture",
                     "position 0 0", "end 1"}));
    EXPECT_EQ(position.fileCurTs, 0u);
    EXPECT_EQ(clock.waits().size(), 3u) << "nothing waits after the end";
}

TEST_F(DvsPlayLoopTest, AtTheEndItLeavesTheFlagToTheButtonItPresses)
{
    open(0, 1000);
    loop->start();
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_TRUE(state.filePlaying);
    EXPECT_EQ(state.playSession, 1u);
    loop->stop();
    EXPECT_FALSE(state.filePlaying);
    EXPECT_NE(state.playSession, 1u) << "what session 1 posted is stale now";
    EXPECT_EQ(view.log.count("end 1"), 1);
}

TEST_F(DvsPlayLoopTest, AStepThatEndsExactlyAtTheEndReadsAWholeWindow)
{
    open(0, 30303);
    loop->start();
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "seek 0"}));
    EXPECT_TRUE(view.log.contains("position 30303 0"));
}

TEST_F(DvsPlayLoopTest, AStepThatWouldPassTheEndByOneReadsUpToItInclusively)
{
    open(0, 30302);
    loop->start();
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 30303", "seek 0"}));
    EXPECT_TRUE(view.log.contains("position 30302 0"));
    EXPECT_TRUE(view.log.contains("events 32")) << "the event at the end itself included";
}

TEST_F(DvsPlayLoopTest, APositionAtTheEndReadsItsLastMicrosecond)
{
    open(0, 50'000);
    position.fileCurTs = 50'000;
    loop->start();
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 50000 1", "seek 0"}));
    EXPECT_EQ(view.log.lines(), (Lines{"events 1", "position 50000 0", "picture", "position 0 0", "end 1"}));
}

TEST_F(DvsPlayLoopTest, AnEndBeforeThePositionIsTheEndWithoutARead)
{
    open(0, 100'000);
    view.end = 40'000;
    position.fileCurTs = 40'001;
    loop->start();
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"seek 0"}));
    EXPECT_EQ(view.log.lines(), (Lines{"position 0 0", "end 1"}));
}

TEST_F(DvsPlayLoopTest, IsConfinedToTheRange)
{
    open(0, 1'000'000);
    view.start = 200'000;
    view.end = 240'000;
    position.fileCurTs = 200'000;
    loop->start();
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 200000 33333", "at 230303 9698", "seek 200000"}));
    EXPECT_EQ(view.log.lines().back(), "end 1");
    EXPECT_TRUE(view.log.contains("position 240000 0"));
    EXPECT_TRUE(view.log.contains("position 200000 0"));
    EXPECT_EQ(position.fileCurTs, 200'000u);
}

TEST_F(DvsPlayLoopTest, FollowsARangeMovedWhileItPlays)
{
    open(0, 1'000'000);
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    view.end = 40'000;
    view.start = 10'000;
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 30303 9698", "seek 10000"}));
}

TEST_F(DvsPlayLoopTest, LoopingItGoesOnAtTheStart)
{
    open(5000, 50'000);
    view.looping = true;
    play(5);
    EXPECT_EQ(reader->log.lines(),
              (Lines{"at 5000 33333", "at 35303 14698", "seek 5000", "at 5000 33333", "at 35303 14698",
                     "seek 5000", "at 5000 33333"}));
    EXPECT_EQ(view.log.count("position 50000 0"), 2);
    EXPECT_EQ(view.log.count("position 5000 0"), 2);
    for (const std::string& line : view.log.lines())
        EXPECT_NE(line.substr(0, 3), "end");
}

TEST_F(DvsPlayLoopTest, LoopingOffMeanwhileEndsAtTheNextEnd)
{
    open(0, 1000);
    view.looping = true;
    loop->start();
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(2));
    EXPECT_FALSE(view.log.contains("end 1"));
    view.looping = false;
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
}

TEST_F(DvsPlayLoopTest, AnEmptyBatchIsABatch)
{
    open(0, 10'000'000);
    reader->onRead
        = [](std::uint64_t, std::uint64_t) { return std::make_shared<std::vector<korvane::Event2D>>(); };
    play(2);
    EXPECT_EQ(view.log.lines(),
              (Lines{"events 0", "position 30303 0", "picture", "events 0", "position 60606 0", "picture"}));
}

TEST_F(DvsPlayLoopTest, NoBatchIsTheEndOfTheRangeWithoutAPicture)
{
    open(0, 10'000'000);
    reader->onRead = [](std::uint64_t start, std::uint64_t) -> std::optional<ScriptedReader::Events> {
        if (start == 0)
            return std::nullopt;
        return ScriptedReader::Events();
    };
    loop->start();
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 30303 33333", "seek 0"}));
    EXPECT_EQ(view.log.lines(), (Lines{"events 34", "position 30303 0", "picture", "position 0 0", "end 1"}));
    EXPECT_EQ(position.fileCurTs, 0u);
}

TEST_F(DvsPlayLoopTest, AReaderThatThrowsEndsPlaybackWhereItIs)
{
    const CapturedMessages messages;
    open(0, 10'000'000);
    reader->onRead = [](std::uint64_t start, std::uint64_t) -> std::optional<ScriptedReader::Events> {
        if (start > 0)
            throw std::runtime_error("no more memory");
        return std::nullopt;
    };
    loop->start();
    clock.grant(1);
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    loop->stop();
    EXPECT_EQ(view.log.lines(), (Lines{"events 34", "position 30303 0", "picture", "end 1"}));
    EXPECT_EQ(position.fileCurTs, 30303u);
    EXPECT_TRUE(position.readerMutex.try_lock());
    position.readerMutex.unlock();
    EXPECT_EQ(messages.of(QtCriticalMsg),
              QStringList{QStringLiteral("Playback has ended early: no more memory")});
}

TEST_F(DvsPlayLoopTest, ARecordingThatGivesNothingLoopsAtItsPaceOnly)
{
    open(0, 0);
    reader->loaded = false;
    view.looping = true;
    play(4);
    EXPECT_EQ(clock.waits(), (std::vector<std::int64_t>{33333, 33333, 33333, 33333}));
    EXPECT_EQ(position.fileCurTs, 0u);
}

TEST_F(DvsPlayLoopTest, WaitsForWhatATickHasLeftOfItsTime)
{
    open(0, 10'000'000);
    int reads = 0;
    reader->onRead = [this, &reads](std::uint64_t, std::uint64_t) {
        ++reads;
        clock.advance(reads == 1 ? 5000us : reads == 2 ? 33332us : 0us);
        return std::nullopt;
    };
    play(3);
    EXPECT_EQ(clock.waits(), (std::vector<std::int64_t>{28333, 1, 33333}));
}

TEST_F(DvsPlayLoopTest, ATickThatTookAllItsTimeIsFollowedAtOnce)
{
    open(0, 10'000'000);
    int reads = 0;
    reader->onRead = [this, &reads](std::uint64_t, std::uint64_t) {
        ++reads;
        clock.advance(reads == 1 ? 33333us : reads == 2 ? 90'000us : 0us);
        return std::nullopt;
    };
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    loop->stop();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 30303 33333", "at 60606 33333"}));
    EXPECT_EQ(clock.waits(), (std::vector<std::int64_t>{33333})) << "time lost is not made up for";
}

TEST_F(DvsPlayLoopTest, ReadsNothingWhileAnotherModeIsOnAndGoesOnAfterwards)
{
    open(0, 10'000'000);
    state.playMode = ModeFusionRecording;
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(2));
    EXPECT_EQ(reader->log.lines(), Lines());
    EXPECT_EQ(view.log.lines(), Lines());
    EXPECT_EQ(clock.waits(), (std::vector<std::int64_t>{33333, 33333}));
    state.playMode = ModeDvsRecording;
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(3));
    loop->stop();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333"}));
}

TEST_F(DvsPlayLoopTest, AStopEndsTheWaitAndKeepsThePosition)
{
    open(0, 10'000'000);
    loop->start();
    EXPECT_TRUE(state.filePlaying);
    ASSERT_TRUE(clock.awaitWaits(1));
    loop->stop();
    EXPECT_FALSE(state.filePlaying);
    EXPECT_EQ(position.fileCurTs, 30303u);
    EXPECT_EQ(reader->log.lines().size(), 1u);
}

TEST_F(DvsPlayLoopTest, AStopEndsTheWaitOfTheSteadyClockToo)
{
    SteadyPlaybackClock steady;
    open(0, 10'000'000);
    DvsPlayLoop real(state, timing, position, view, steady);
    real.start();
    ASSERT_TRUE(view.log.waitForCount("picture", 3));
    real.stop();
    EXPECT_FALSE(state.filePlaying);
    // The longest wait ends as soon as the flag is down and the clock is woken, before it or in its midst.
    const auto begin = steady.now();
    steady.waitFor(1h, state.filePlaying);
    state.filePlaying = true;
    std::thread waiter([&] { steady.waitFor(1h, state.filePlaying); });
    state.filePlaying = false;
    steady.wake();
    waiter.join();
    EXPECT_LT(steady.now() - begin, 30s);
}

TEST_F(DvsPlayLoopTest, WithTheSteadyClockPicturesAreATickApart)
{
    SteadyPlaybackClock steady;
    open(0, 10'000'000);
    DvsPlayLoop real(state, timing, position, view, steady);
    const auto begin = steady.now();
    real.start();
    ASSERT_TRUE(view.log.waitForCount("picture", 4));
    EXPECT_GE(steady.now() - begin, 3 * 33333us);
    real.stop();
}

TEST_F(DvsPlayLoopTest, AStopRightAfterTheStartIsNotLost)
{
    open(0, 10'000'000);
    for (int i = 0; i < 300; ++i) {
        loop->start();
        loop->stop();
        EXPECT_FALSE(state.filePlaying);
    }
}

TEST_F(DvsPlayLoopTest, StartingWhileItRunsBeginsANewSessionFromThePosition)
{
    open(0, 10'000'000);
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    const std::uint64_t first = state.playSession;
    loop->start();
    EXPECT_TRUE(state.filePlaying);
    EXPECT_NE(state.playSession, first);
    ASSERT_TRUE(clock.awaitWaits(2));
    loop->stop();
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 30303 33333"}));
}

TEST_F(DvsPlayLoopTest, StartingAgainJoinsAThreadThatEndedByItself)
{
    open(0, 1000);
    loop->start();
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    view.looping = true;
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 1001", "seek 0", "at 0 1001", "seek 0"}));
}

TEST_F(DvsPlayLoopTest, ItsEndStopsAndJoins)
{
    open(0, 10'000'000);
    loop->start();
    ASSERT_TRUE(clock.awaitWaits(1));
    loop.reset();
    EXPECT_FALSE(state.filePlaying);
}

TEST_F(DvsPlayLoopTest, ItsEndLeavesTheFlagToWhoeverRunsWhenItDoesNotRun)
{
    open(0, 10'000'000);
    state.filePlaying = true;
    loop.reset();
    EXPECT_TRUE(state.filePlaying);
}

TEST_F(DvsPlayLoopTest, KeepsTheReaderToItselfForTheWholeTick)
{
    open(0, 1000);
    std::vector<std::string> free; // what happened while another thread could have had the reader
    const auto look = [this, &free](const std::string& what) {
        std::thread([&] {
            if (position.readerMutex.try_lock()) {
                free.push_back(what);
                position.readerMutex.unlock();
            }
        }).join();
    };
    reader->onRead = [&look](std::uint64_t, std::uint64_t) {
        look("read");
        return std::nullopt;
    };
    reader->onMove = [&look] { look("seek"); };
    view.onNote = look;
    loop->start();
    ASSERT_TRUE(view.log.waitForCount("end 1", 1));
    loop->stop();
    EXPECT_EQ(view.log.lines(), (Lines{"events 2", "position 1000 0", "picture", "position 0 0", "end 1"}));
    EXPECT_EQ(free, std::vector<std::string>());
}
