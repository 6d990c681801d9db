#include "camera/dvsreadingloop.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedcamera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <stdexcept>

using namespace std::chrono_literals;
using korvane::Event2D;
using Lines = ScriptedLog::Lines;

namespace {

using Clock = std::chrono::steady_clock;

// A frame period begins a moment before the read in it is noted: so much longer that a busy machine takes
// over the first of two reads, so much shorter is the gap.
constexpr auto moment = 10ms;

class DvsReadingLoopTest : public testing::Test
{
protected:
    DvsReadingLoopTest()
    {
        camera->logsReading = true;
        // Short waits, so that a test without a clock in it is quick.
        timing.frameRate = 1000;
        timing.frameStep = 1000;
    }
    ~DvsReadingLoopTest() override { loop.reset(); }

    DvsReadingLoop& make()
    {
        loop.emplace(state, timing,
                     DvsReadingLoop::Hooks{
                         [this](const Event2D* begin, const Event2D* end) {
                             log.add("addEvents " + std::to_string(end - begin));
                             if (onAdd)
                                 onAdd(begin, end);
                         },
                         [this] { log.add("eventsReady " + std::to_string(loop->lastTimestamp())); },
                         [this](std::uint64_t session) {
                             log.add("connectionLost " + std::to_string(session)
                                     + (state.filePlaying ? " running" : ""));
                         },
                     });
        return *loop;
    }

    /// Notes the times at which the camera is asked for a batch.
    void noteTimesOfReads()
    {
        camera->onRead = [this] {
            const std::lock_guard guard(timesMutex);
            times.push_back(Clock::now());
        };
    }
    Clock::duration gap(std::size_t number)
    {
        const std::lock_guard guard(timesMutex);
        return times.at(number + 1) - times.at(number);
    }
    void awaitReads(std::ptrdiff_t count) { ASSERT_TRUE(log.waitForCount("cam getNextEventBatch", count)); }

    static std::vector<Event2D> batch(std::uint64_t first, std::size_t count)
    {
        std::vector<Event2D> events;
        for (std::size_t i = 0; i < count; ++i)
            events.emplace_back(std::uint16_t(i), std::uint16_t(1), std::uint8_t(1), first + i);
        return events;
    }

    ScriptedLog log;
    SourceState state;
    DisplayTiming timing;
    std::shared_ptr<ScriptedCamera> camera = std::make_shared<ScriptedCamera>("cam", log);
    std::function<void(const Event2D*, const Event2D*)> onAdd;
    std::mutex timesMutex;
    std::vector<Clock::time_point> times;
    std::optional<DvsReadingLoop> loop;
};

} // namespace

TEST_F(DvsReadingLoopTest, ReadsAddsTellsAndThenLooksForTheCamera)
{
    camera->push(batch(500, 3));
    make().start(camera);
    awaitReads(2);
    loop->stop();
    const Lines lines = log.lines();
    ASSERT_GE(lines.size(), 6u);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 6),
              (Lines{"cam getNextEventBatch", "addEvents 3", "eventsReady 502", "cam isConnected",
                     "cam getNextEventBatch", "cam isConnected"}));
}

TEST_F(DvsReadingLoopTest, HandsOverTheEventsAsTheyCame)
{
    std::vector<Event2D> got;
    onAdd = [&got](const Event2D* begin, const Event2D* end) { got.assign(begin, end); };
    const std::vector<Event2D> sent{{5, 6, 1, 70}, {1279, 719, 0, 71}, {0, 0, 1, 90}};
    camera->push(sent);
    make().start(camera);
    awaitReads(2);
    loop->stop();
    EXPECT_EQ(got, sent);
    EXPECT_EQ(loop->lastTimestamp(), 90u);
}

TEST_F(DvsReadingLoopTest, AnEmptyBatchAndNoBatchAreNotHandedOver)
{
    camera->push(batch(500, 1));
    camera->push({});
    make().start(camera);
    awaitReads(5);
    loop->stop();
    EXPECT_EQ(log.count("addEvents 1"), 1);
    EXPECT_EQ(log.count("addEvents 0"), 0);
    EXPECT_EQ(log.count("eventsReady 500"), 1);
    EXPECT_EQ(loop->lastTimestamp(), 500u) << "the time stays that of the last event";
}

TEST_F(DvsReadingLoopTest, SetsTheRunningFlagAndANewSessionAtStartAndClearsItAtStop)
{
    make();
    EXPECT_FALSE(state.filePlaying);
    loop->start(camera);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_EQ(state.playSession, 1u);
    loop->stop();
    EXPECT_FALSE(state.filePlaying);
    loop->start(camera);
    EXPECT_EQ(state.playSession, 2u);
    awaitReads(1);
}

TEST_F(DvsReadingLoopTest, AfterABatchItWaitsAThousandMillisecondsThroughTheFrameRate)
{
    timing.frameRate = 15; // 66 ms
    timing.frameStep = 1;
    noteTimesOfReads();
    camera->push(batch(1, 1));
    make().start(camera);
    awaitReads(2);
    loop->stop();
    EXPECT_GE(gap(0), 66ms);
}

TEST_F(DvsReadingLoopTest, WithoutABatchOnlyTheFramePeriodPaces)
{
    timing.frameRate = 1; // a second
    timing.frameStep = 20'000;
    noteTimesOfReads();
    make().start(camera);
    awaitReads(12);
    loop->stop();
    Clock::duration shortest = 1h;
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_GE(gap(i), 20ms - moment);
        shortest = std::min(shortest, gap(i));
    }
    EXPECT_LT(shortest, 1s);
}

TEST_F(DvsReadingLoopTest, TheRestOfAFramePeriodIsWaitedForAfterABatchToo)
{
    timing.frameRate = 1000; // a millisecond
    timing.frameStep = 50'000;
    noteTimesOfReads();
    camera->push(batch(1, 1));
    make().start(camera);
    awaitReads(2);
    loop->stop();
    EXPECT_GE(gap(0), 50ms - moment);
}

TEST_F(DvsReadingLoopTest, AFramePeriodSetMeanwhileActsFromTheNextReadOn)
{
    noteTimesOfReads();
    make().start(camera);
    awaitReads(1);
    timing.frameStep = 40'000;
    const auto reads = log.count("cam getNextEventBatch");
    awaitReads(reads + 2);
    loop->stop();
    EXPECT_GE(gap(static_cast<std::size_t>(reads)), 40ms - moment);
}

TEST_F(DvsReadingLoopTest, AStopEndsEitherWaitAtOnce)
{
    for (const bool withBatch : {false, true}) {
        timing.frameRate = 1;
        timing.frameStep = 3'600'000'000; // an hour
        if (withBatch)
            camera->push(batch(1, 1));
        make().start(camera);
        awaitReads(1);
        if (withBatch) {
            ASSERT_TRUE(log.waitForCount("eventsReady 1", 1));
        }
        const auto begin = Clock::now();
        loop->stop();
        EXPECT_LT(Clock::now() - begin, 30s);
        log.clear();
    }
}

TEST_F(DvsReadingLoopTest, AStopRightAfterTheStartIsNotLost)
{
    timing.frameStep = 3'600'000'000;
    make();
    for (int i = 0; i < 300; ++i) {
        loop->start(camera);
        loop->stop();
        EXPECT_FALSE(state.filePlaying);
    }
}

TEST_F(DvsReadingLoopTest, ALostCameraClearsTheFlagTellsItsSessionOnceAndEndsTheLoop)
{
    CapturedMessages messages;
    state.playSession = 40;
    make().start(camera);
    awaitReads(1);
    camera->connected = false;
    ASSERT_TRUE(log.waitForCount("connectionLost 41", 1)) << "with the flag cleared before";
    EXPECT_FALSE(state.filePlaying);
    const auto reads = log.count("cam getNextEventBatch");
    loop->stop();
    EXPECT_EQ(log.count("connectionLost 41"), 1);
    EXPECT_EQ(log.count("cam getNextEventBatch"), reads);
    EXPECT_EQ(messages.debug().count(QStringLiteral("Camera connection lost.")), 1);
}

TEST_F(DvsReadingLoopTest, ADriverThatThrowsHasLostItsCamera)
{
    const std::function<void()> faults[]
        = {[] { throw std::runtime_error("no bandwidth left"); }, [] { throw 7; }};
    std::uint64_t session = 0;
    for (const auto& fault : faults) {
        const CapturedMessages messages;
        camera->onRead = fault;
        make().start(camera);
        ASSERT_TRUE(log.waitForCount("connectionLost " + std::to_string(++session), 1));
        EXPECT_FALSE(state.filePlaying);
        loop->stop();
        EXPECT_EQ(messages.of(QtCriticalMsg).filter(QStringLiteral("The camera driver failed:")).size(), 1);
    }
}

TEST_F(DvsReadingLoopTest, ACameraLostWhileItIsStoppedTellsNobody)
{
    CapturedMessages messages;
    timing.frameStep = 3'600'000'000;
    make().start(camera);
    awaitReads(1);
    state.filePlaying = false;
    camera->connected = false;
    loop->stop();
    for (const std::string& line : log.lines())
        EXPECT_EQ(line.find("connectionLost"), std::string::npos);
}

TEST_F(DvsReadingLoopTest, StartingAgainJoinsAThreadThatEndedByItself)
{
    CapturedMessages messages;
    camera->connected = false;
    make().start(camera);
    ASSERT_TRUE(log.waitForCount("connectionLost 1", 1));
    const auto other = std::make_shared<ScriptedCamera>("other", log);
    other->logsReading = true;
    loop->start(other);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(log.waitForCount("other getNextEventBatch", 2));
    loop->stop();
}

TEST_F(DvsReadingLoopTest, StartingWhileItRunsReplacesTheCameraThatIsRead)
{
    timing.frameStep = 3'600'000'000;
    make().start(camera);
    awaitReads(1);
    const auto other = std::make_shared<ScriptedCamera>("other", log);
    other->logsReading = true;
    loop->start(other);
    EXPECT_TRUE(state.filePlaying);
    ASSERT_TRUE(log.waitForCount("other getNextEventBatch", 1));
    EXPECT_EQ(log.count("cam getNextEventBatch"), 1);
}

TEST_F(DvsReadingLoopTest, HoldsTheCameraNoLongerThanItReads)
{
    make().start(camera);
    awaitReads(1);
    loop->stop();
    camera.reset();
    EXPECT_TRUE(log.contains("cam closed"));
}

TEST_F(DvsReadingLoopTest, ItsEndStopsAndJoins)
{
    timing.frameStep = 3'600'000'000;
    make().start(camera);
    awaitReads(1);
    loop.reset();
    EXPECT_FALSE(state.filePlaying);
    EXPECT_EQ(camera.use_count(), 1);
}

TEST_F(DvsReadingLoopTest, ItsEndLeavesTheFlagToWhoeverRunsWhenItDoesNotRun)
{
    make();
    state.filePlaying = true;
    loop.reset();
    EXPECT_TRUE(state.filePlaying);
}

// For the thread sanitizer: everything that other threads may do while the loop runs.
TEST_F(DvsReadingLoopTest, MayBeWatchedAndRetimedWhileItReads)
{
    camera->logsReading = false;
    std::atomic<std::uint64_t> sent{0};
    camera->onRead = [this, &sent] { camera->push(batch(++sent, 1)); };
    std::atomic<std::uint64_t> added{0};
    onAdd = [&added](const Event2D* begin, const Event2D* end) {
        added += static_cast<std::uint64_t>(end - begin);
    };
    make().start(camera);
    while (added < 20) {
        timing.setFrameRate(added % 2 == 0 ? 1000 : 2000);
        timing.accumulationTime = added.load();
        EXPECT_LE(loop->lastTimestamp(), sent);
    }
    loop->stop();
    EXPECT_EQ(loop->lastTimestamp(), sent);
    EXPECT_EQ(added, sent);
}
