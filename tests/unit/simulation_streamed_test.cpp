#include "camera/simulation/replaystream.h"
#include "camera/simulation/streameddvscamera.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/plainrecording.h"
#include "tests/support/recordprinters.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace korvane::simulation;
using korvane::Event2D;
using korvane::EventTriggerIn;

constexpr std::chrono::seconds patience{20};

/// A stream of one event and one trigger a step, of whatever a test adds, and of the test's step length.
class ScriptedStream : public EventStream
{
public:
    explicit ScriptedStream(std::uint64_t stepLength) : length(stepLength) {}

    korvane::recording::Geometry geometry() const override { return {640, 480}; }
    std::uint64_t time() const override { return now; }
    std::uint64_t nextTime() const override { return now + length; }
    StreamStep generateStep() override
    {
        if (onStep)
            onStep();
        event = {1, 2, 1, now};
        trigger = {0, 1, now + 1};
        now += length;
        ++steps;
        return {{&event, 1}, {&trigger, 1}, now};
    }

    std::function<void()> onStep; ///< set before use
    std::atomic<int> steps{0};

private:
    const std::uint64_t length; // microseconds
    std::uint64_t now = 0;
    Event2D event;
    EventTriggerIn trigger;
};

class StreamedCameraTest : public testing::Test
{
protected:
    StreamedDvsCamera& make(std::uint64_t stepLength)
    {
        auto made = std::make_unique<ScriptedStream>(stepLength);
        stream = made.get();
        camera = std::make_unique<StreamedDvsCamera>("STREAM", std::move(made));
        return *camera;
    }
    static bool wait(const std::function<bool()>& condition)
    {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::yield();
        }
        return true;
    }

    ScriptedStream* stream = nullptr; ///< the camera's
    std::unique_ptr<StreamedDvsCamera> camera;
};

} // namespace

TEST_F(StreamedCameraTest, AStreamThatFailsIsALostCameraAndToldWithItsReason)
{
    const CapturedMessages messages;
    make(1000);
    stream->onStep = [this] {
        if (stream->steps == 3)
            throw std::runtime_error("out of film");
    };
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(wait([this] { return !camera->isConnected(); }));
    camera->stop();
    EXPECT_EQ(stream->steps, 3);
    EXPECT_NE(camera->start(), 0);
    EXPECT_EQ(messages.warnings(), (QStringList{QStringLiteral("Camera STREAM stops: out of film")}));
}

TEST_F(StreamedCameraTest, APullInsideAStepEndsTheStreamAfterIt)
{
    make(1000);
    stream->onStep = [this] {
        if (stream->steps == 2)
            camera->pull();
    };
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(wait([this] { return !camera->isConnected(); }));
    camera->stop();
    EXPECT_EQ(stream->steps, 3);
}

TEST_F(StreamedCameraTest, AStopEndsTheWaitForAFarStep)
{
    make(3600ULL * 1000000);
    ASSERT_EQ(camera->start(), 0);
    const auto begin = std::chrono::steady_clock::now();
    camera->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, patience);
    EXPECT_EQ(stream->steps, 0);
    EXPECT_EQ(camera->sensorTime(), 0U);
}

TEST_F(StreamedCameraTest, TriggersAreRecordedWithTheEvents)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("triggers.raw")).toStdString();
    make(2000);
    camera->startRecording(path);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(wait([this] { return stream->steps > 20; }));
    camera->stop();
    camera->stopRecording();
    const auto reader = TemporaryRecordings::load(path);
    ASSERT_NE(reader, nullptr);
    const auto steps = static_cast<std::size_t>(stream->steps.load());
    EXPECT_EQ(reader->getEventsAt(0, ~std::uint64_t{0})->size(), steps);
    const auto triggers = reader->getTriggersAt(0, ~std::uint64_t{0});
    ASSERT_EQ(triggers->size(), steps);
    for (std::size_t i = 0; i < steps; ++i)
        EXPECT_EQ((*triggers)[i], EventTriggerIn(0, 1, i * 2000 + 1));
}

TEST_F(StreamedCameraTest, TriggersOfAReplayedRecordingAreRecordedAgain)
{
    const TemporaryRecordings folder;
    std::vector<PlainWord> words;
    for (std::uint64_t time = 0; time < 60000; time += 500)
        words.push_back({time, time % 2500 == 0 && time > 0});
    const std::string source = writePlainRecording(folder, "source.raw", words);
    StreamedDvsCamera replayed(
        "REPLAY",
        std::make_unique<ReplayStream>(TemporaryRecordings::load(source), QStringLiteral("source.raw")));
    replayed.startRecording(folder.path("again.raw"));
    ASSERT_EQ(replayed.start(), 0);
    ASSERT_TRUE(wait([&replayed] { return replayed.sensorTime() > 200000; }));
    replayed.stop();
    replayed.stopRecording();

    const auto wanted = TemporaryRecordings::load(source);
    const auto found = TemporaryRecordings::load(folder.path("again.raw"));
    ASSERT_TRUE(wanted && found);
    std::uint64_t end = 0;
    wanted->getEndTimestamp(end);
    // The rounds are one microsecond longer than the time between the first and the last event.
    for (std::uint64_t round = 0; round < 3; ++round) {
        const std::uint64_t start = round * (end + 1);
        auto triggers = *wanted->getTriggersAt(0, end + 1);
        for (EventTriggerIn& trigger : triggers)
            trigger.timestamp += start;
        ASSERT_FALSE(triggers.empty());
        EXPECT_EQ(*found->getTriggersAt(start, end + 1), triggers) << round;
        EXPECT_EQ(found->getEventsAt(start, end + 1)->size(), wanted->getEventsAt(0, end + 1)->size());
    }
}

TEST_F(StreamedCameraTest, WhatIsNotFetchedIsDroppedAndTheNewestGiven)
{
    make(1000);
    camera->setBatchTime(1000);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(wait([this] { return stream->steps > 30; }));
    camera->stop();
    std::vector<Event2D> batch;
    ASSERT_TRUE(camera->getNextEventBatch(batch));
    ASSERT_EQ(batch.size(), 1U);
    EXPECT_EQ(batch.front().timestamp + 1000, camera->sensorTime());
    EXPECT_FALSE(camera->getNextEventBatch(batch));
}
