#include "camera/recording/rawfilereader.h"
#include "camera/simulation/replaybackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "camera/simulation/streameddvscamera.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/plainrecording.h"
#include "tests/support/recordprinters.h"
#include "tests/unit/simulation_watch.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// What every camera without hardware does alike, whatever its events come from.

namespace {

using namespace korvane::simulation;
using korvane::Event2D;
using korvane::simulation::testing::Watch;
using std::chrono::steady_clock;

/// A backend with one camera.
struct Source
{
    std::shared_ptr<korvane::Backend> backend;
    std::function<void(const std::string&)> pull;
    std::function<void(const std::string&)> plug;
};

template <typename Backend>
Source sourceOf(const std::shared_ptr<Backend>& backend)
{
    return {backend, [backend](const std::string& serial) { backend->pull(serial); },
            [backend](const std::string& serial) { backend->plug(serial); }};
}

Source simulated(const TemporaryRecordings&)
{
    SimulatedCameraConfig config;
    config.serial = "CAMERA";
    config.product = "QRT4";
    config.scene = SimulatedCameraConfig::SceneKind::Turntable;
    config.eventsPerSecond = 3e5;
    return sourceOf(std::make_shared<SimulatedBackend>(std::vector{config}));
}

Source replayed(const TemporaryRecordings& folder)
{
    // Two hundred milliseconds, so that every test crosses the seam.
    const std::string path = writePlainRecording(folder, "CAMERA.raw", steadyEvents(700, 200700, 5));
    return sourceOf(std::make_shared<ReplayBackend>(QFile::decodeName(path.c_str())));
}

class CameraConformance : public ::testing::TestWithParam<Source (*)(const TemporaryRecordings&)>
{
protected:
    CameraConformance() : source(GetParam()(folder)) {}

    std::shared_ptr<StreamedDvsCamera> open()
    {
        auto camera = std::dynamic_pointer_cast<StreamedDvsCamera>(source.backend->openCamera("CAMERA"));
        EXPECT_NE(camera, nullptr);
        if (camera)
            camera->setEventSink(watch);
        return camera;
    }
    bool waitForBatch(StreamedDvsCamera& camera, std::vector<Event2D>& out)
    {
        while (!camera.getNextEventBatch(out)) {
            if (!watch->waitForSteps(1))
                return false;
        }
        return true;
    }
    std::string target(const char* name) const { return output.filePath(QLatin1String(name)).toStdString(); }
    /// All events of a file, none when it is none.
    static std::vector<Event2D> eventsOf(const std::string& path)
    {
        const auto reader = TemporaryRecordings::load(path);
        if (!reader)
            return {};
        std::uint64_t end = 0;
        reader->getEndTimestamp(end);
        return *reader->getEventsAt(0, end + 1);
    }
    /// Compares in everything but the time that is 0.
    static void expectSame(const std::vector<Event2D>& found, const std::vector<Event2D>& wanted)
    {
        ASSERT_EQ(found.size(), wanted.size());
        ASSERT_FALSE(found.empty());
        const std::uint64_t shift = wanted.front().timestamp - found.front().timestamp;
        for (std::size_t i = 0; i < found.size(); ++i) {
            Event2D event = found[i];
            event.timestamp += shift;
            ASSERT_EQ(event, wanted[i]) << i;
        }
    }

    TemporaryRecordings folder;
    QTemporaryDir output;
    Source source;
    std::shared_ptr<Watch> watch = std::make_shared<Watch>();
};

} // namespace

TEST_P(CameraConformance, IsListedAndHasOneOwnerAtATime)
{
    const auto found = source.backend->cameraDescriptions();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().serial, "CAMERA");
    auto first = open();
    EXPECT_EQ(source.backend->openCamera("CAMERA"), nullptr);
    EXPECT_EQ(source.backend->openCamera("camera"), nullptr);
    EXPECT_EQ(source.backend->openCamera(""), nullptr);
    EXPECT_EQ(source.backend->openFusionCamera("CAMERA"), nullptr);
    EXPECT_EQ(source.backend->cameraDescriptions().size(), 1U) << "an open camera is listed still";
    first.reset();
    EXPECT_NE(open(), nullptr);
}

TEST_P(CameraConformance, GivesNothingBeforeItsStart)
{
    const auto camera = open();
    std::vector<Event2D> batch;
    EXPECT_TRUE(camera->isConnected());
    EXPECT_FALSE(camera->getNextEventBatch(batch));
    camera->stop();
    camera->releaseStream(0);
    EXPECT_EQ(camera->sensorTime(), 0U);
    EXPECT_EQ(camera->recorderState().error, "");
    EXPECT_FALSE(camera->recorderState().writing);
}

TEST_P(CameraConformance, StreamsInRealTimeFromZeroInOrder)
{
    const auto camera = open();
    const auto begin = steady_clock::now();
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(watch->waitForSteps(30));
    camera->stop();
    EXPECT_GE(steady_clock::now() - begin, std::chrono::microseconds(camera->sensorTime()));
    const auto events = watch->taken();
    ASSERT_GT(events.size(), 10000U);
    EXPECT_LT(events.front().timestamp, 1000U);
    for (std::size_t i = 1; i < events.size(); ++i)
        ASSERT_LE(events[i - 1].timestamp, events[i].timestamp);
    EXPECT_LT(events.back().timestamp, camera->sensorTime());
    EXPECT_GE(events.back().timestamp, camera->sensorTime() - 1000);
}

TEST_P(CameraConformance, BatchesAreWholeSpans)
{
    const auto camera = open();
    ASSERT_EQ(camera->start(), 0);
    camera->setBatchTime(10000);
    std::vector<Event2D> batch;
    std::uint64_t last = 0;
    for (int i = 0; i < 8; ++i) {
        ASSERT_TRUE(waitForBatch(*camera, batch));
        ASSERT_GT(batch.size(), 100U);
        const std::uint64_t span = batch.front().timestamp / 10000;
        EXPECT_EQ(batch.back().timestamp / 10000, span);
        EXPECT_GE(batch.front().timestamp, last);
        last = batch.back().timestamp;
    }
    camera->stop();
    // The newest and no more.
    camera->getNextEventBatch(batch);
    EXPECT_FALSE(camera->getNextEventBatch(batch));
}

TEST_P(CameraConformance, ClockStandsStillWhileStoppedAndAReopenedCameraBeginsAtZero)
{
    auto camera = open();
    ASSERT_EQ(camera->start(), 0);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(watch->waitForSteps(3));
    camera->stop();
    const std::uint64_t stopped = camera->sensorTime();
    const std::size_t made = watch->taken().size();
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(watch->waitForSteps(1));
    camera->stop();
    const auto events = watch->taken();
    ASSERT_GT(events.size(), made);
    EXPECT_GE(events[made].timestamp, stopped);
    EXPECT_LT(events[made].timestamp, stopped + 16000);

    camera.reset();
    watch = std::make_shared<Watch>();
    camera = open();
    EXPECT_EQ(camera->sensorTime(), 0U);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(watch->waitForSteps(1));
    camera->stop();
    EXPECT_LT(watch->taken().front().timestamp, 1000U);
}

TEST_P(CameraConformance, RecordsEveryEvent)
{
    const auto camera = open();
    // Asked for while the view stands still, it begins with the start.
    camera->startRecording(target("all.raw"));
    EXPECT_TRUE(camera->recorderState().writing);
    EXPECT_EQ(camera->recorderState().path, target("all.raw"));
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(watch->waitForSteps(30));
    camera->stop();
    camera->stopRecording();
    EXPECT_FALSE(camera->recorderState().writing);
    EXPECT_EQ(camera->recorderState().error, "");
    expectSame(eventsOf(target("all.raw")), watch->taken());
}

TEST_P(CameraConformance, RecordsAStretchOfARunningStream)
{
    const auto camera = open();
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(watch->waitForSteps(2));
    camera->startRecording(target("part.raw"));
    ASSERT_TRUE(watch->waitForSteps(16));
    camera->stopRecording();
    camera->stop();
    const auto found = eventsOf(target("part.raw"));
    const auto all = watch->taken();
    ASSERT_GT(found.size(), 1000U);
    ASSERT_LT(found.size(), all.size());
    // Somewhere in what was made stands what was recorded, without a gap.
    bool stands = false;
    for (std::size_t at = 0; at + found.size() <= all.size() && !stands; ++at) {
        const std::uint64_t shift = all[at].timestamp - found.front().timestamp;
        stands = true;
        for (std::size_t i = 0; i < found.size() && stands; ++i)
            stands = found[i].x == all[at + i].x && found[i].y == all[at + i].y
                && found[i].timestamp + shift == all[at + i].timestamp;
    }
    EXPECT_TRUE(stands);
}

TEST_P(CameraConformance, ARecordingWithoutAStartLeavesNoFile)
{
    const CapturedMessages messages;
    const auto camera = open();
    camera->startRecording(target("none.raw"));
    camera->stopRecording();
    EXPECT_FALSE(QFile::exists(QString::fromStdString(target("none.raw"))));
    EXPECT_EQ(camera->recorderState().error, "");
}

TEST_P(CameraConformance, APulledCameraIsGoneUntilItIsPluggedAndOpenedAnew)
{
    auto camera = open();
    camera->setBatchTime(5000);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(watch->waitForSteps(3));
    camera->startRecording(target("pulled.raw"));
    ASSERT_TRUE(watch->waitForSteps(6));
    source.pull("CAMERA");
    EXPECT_FALSE(camera->isConnected());
    std::vector<Event2D> batch;
    EXPECT_FALSE(camera->getNextEventBatch(batch));
    EXPECT_TRUE(source.backend->cameraDescriptions().empty());
    EXPECT_EQ(source.backend->openCamera("CAMERA"), nullptr);
    EXPECT_NE(camera->start(), 0);
    camera->stopRecording();
    camera->stop();
    EXPECT_NE(camera->start(), 0);
    EXPECT_GT(eventsOf(target("pulled.raw")).size(), 1000U) << "what came is in the file";

    source.plug("CAMERA");
    EXPECT_EQ(source.backend->cameraDescriptions().size(), 1U);
    EXPECT_FALSE(camera->isConnected());
    const auto fresh = open();
    ASSERT_NE(fresh, nullptr);
    EXPECT_TRUE(fresh->isConnected());
    EXPECT_EQ(fresh->start(), 0);
}

TEST_P(CameraConformance, DroppedWhileItRecordsItLeavesAWholeFile)
{
    auto camera = open();
    ASSERT_EQ(camera->start(), 0);
    camera->startRecording(target("dropped.raw"));
    ASSERT_TRUE(watch->waitForSteps(6));
    camera.reset();
    const auto found = eventsOf(target("dropped.raw"));
    ASSERT_GT(found.size(), 1000U);
    EXPECT_EQ(found.back().x, watch->taken().back().x);
}

TEST_P(CameraConformance, EveryThreadMayCallWhileItStreams)
{
    const auto camera = open();
    ASSERT_EQ(camera->start(), 0);
    std::atomic<bool> done{false};
    std::thread reader([&] {
        std::vector<Event2D> batch;
        while (!done) {
            camera->getNextEventBatch(batch);
            camera->isConnected();
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 5; ++i) {
        camera->setBatchTime(1000U * static_cast<unsigned>(i + 1));
        camera->startRecording(target("threads.raw"));
        EXPECT_TRUE(watch->waitForSteps(1));
        camera->stopRecording();
        camera->stop();
        EXPECT_EQ(camera->start(), 0);
    }
    source.pull("CAMERA");
    done = true;
    reader.join();
    camera->stop();
    EXPECT_FALSE(camera->isConnected());
}

INSTANTIATE_TEST_SUITE_P(Cameras, CameraConformance, ::testing::Values(&simulated, &replayed),
                         [](const auto& made) { return made.index == 0 ? "Simulated" : "Replayed"; });
