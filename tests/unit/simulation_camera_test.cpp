#include "camera/simulation/simulatedbackend.h"
#include "camera/simulation/simulateddvscamera.h"
#include "camera/simulation/spanassembler.h"
#include "tests/support/capturedmessages.h"
#include "tests/unit/simulation_testscenes.h"
#include "tests/unit/simulation_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace korvane::simulation;
using namespace korvane::simulation::testing;
using korvane::Event2D;
using std::chrono::steady_clock;

SimulatedCameraConfig noisyConfig()
{
    SimulatedCameraConfig config;
    config.serial = "TST-000001";
    config.product = "QRT4";
    config.scene = SimulatedCameraConfig::SceneKind::Turntable;
    config.sensor = idealSensor();
    config.sensor.backgroundRateHz = 20.0F;
    return config;
}

/// A camera whose events are watched.
struct WatchedCamera
{
    explicit WatchedCamera(const SimulatedCameraConfig& config = noisyConfig(),
                           std::unique_ptr<Scene> scene = stillScene())
        : camera(std::make_shared<SimulatedDvsCamera>(config, std::move(scene)))
    {
        camera->setEventSink(watch);
    }
    SimulatedDvsCamera* operator->() const { return camera.get(); }

    bool waitForSteps(int steps) const { return watch->waitForSteps(steps); }
    bool waitForBatch(std::vector<Event2D>& out) const
    {
        while (!camera->getNextEventBatch(out)) {
            if (!watch->waitForSteps(1))
                return false;
        }
        return true;
    }

    std::shared_ptr<SimulatedDvsCamera> camera;
    std::shared_ptr<Watch> watch = std::make_shared<Watch>();
};

TEST(SimulatedDvsCamera, DeliversWholeSpansOfTheBatchTime)
{
    const WatchedCamera camera;
    ASSERT_EQ(camera->start(), 0);
    camera->setBatchTime(10000);
    std::vector<Event2D> batch;
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(camera.waitForBatch(batch));
        // 128 x 64 pixels at 20 a second.
        ASSERT_GT(batch.size(), 1000U);
        const std::uint64_t span = batch.front().timestamp / 10000;
        EXPECT_EQ(batch.back().timestamp / 10000, span);
        EXPECT_LT(batch.front().timestamp % 10000, 500U);
        EXPECT_GT(batch.back().timestamp % 10000, 9500U);
    }
    camera->stop();
}

TEST(SimulatedDvsCamera, AsksForNoMoreThanTheStreamHolds)
{
    const WatchedCamera camera;
    std::vector<Event2D> batch;
    EXPECT_FALSE(camera->getNextEventBatch(batch));
    camera->setBatchTime(10000);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(5));
    camera->stop();
    EXPECT_TRUE(camera->getNextEventBatch(batch));
    EXPECT_FALSE(camera->getNextEventBatch(batch));
}

TEST(SimulatedDvsCamera, GivesTheNewestSpanToAReaderThatSlept)
{
    const WatchedCamera camera;
    camera->setBatchTime(10000);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(20));
    const std::uint64_t seen = camera->sensorTime();
    EXPECT_GE(seen, 200000U);
    std::vector<Event2D> batch;
    ASSERT_TRUE(camera->getNextEventBatch(batch));
    ASSERT_FALSE(batch.empty());
    EXPECT_GE(batch.front().timestamp, seen / 10000 * 10000 - 10000);
    camera->stop();
}

TEST(SimulatedDvsCamera, SensorTimeNeverRunsAheadOfTheWallClock)
{
    const WatchedCamera camera;
    const auto begin = steady_clock::now();
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(20));
    camera->stop();
    const auto passed = steady_clock::now() - begin;
    EXPECT_GE(camera->sensorTime(), 20U * EventGenerator::stepUs);
    EXPECT_GE(passed, std::chrono::microseconds(camera->sensorTime()));
}

TEST(SimulatedDvsCamera, ChangedBatchTimeTakesEffect)
{
    const WatchedCamera camera;
    ASSERT_EQ(camera->start(), 0);
    camera->setBatchTime(40000);
    std::vector<Event2D> batch;
    ASSERT_TRUE(camera.waitForBatch(batch));
    EXPECT_GT(batch.back().timestamp - batch.front().timestamp, 30000U);
    camera->setBatchTime(2000);
    ASSERT_TRUE(camera.waitForBatch(batch));
    EXPECT_EQ(batch.front().timestamp / 2000, batch.back().timestamp / 2000);
    camera->setBatchTime(0);
    ASSERT_TRUE(camera.waitForBatch(batch));
    EXPECT_EQ(batch.front().timestamp / 2000, batch.back().timestamp / 2000);
    camera->stop();
}

TEST(SimulatedDvsCamera, StopReturnsAtOnceAndNothingComesAfter)
{
    const WatchedCamera camera;
    auto shortest = steady_clock::duration::max();
    for (int i = 0; i < 50; ++i) {
        const auto begin = steady_clock::now();
        ASSERT_EQ(camera->start(), 0);
        camera->stop();
        shortest = std::min(shortest, steady_clock::now() - begin);
    }
    // Waiting for the step that is due would take longer every time, on a busy machine too.
    EXPECT_LT(shortest, std::chrono::microseconds(EventGenerator::stepUs / 2));
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(3));
    camera->stop();
    camera->stop();
    std::vector<Event2D> batch;
    camera->getNextEventBatch(batch);
    EXPECT_FALSE(camera->getNextEventBatch(batch));
    EXPECT_EQ(camera.watch->taken().back().timestamp / EventGenerator::stepUs,
              camera->sensorTime() / EventGenerator::stepUs - 1);
}

TEST(SimulatedDvsCamera, GoesOnWhereItStoodAfterAStop)
{
    const WatchedCamera camera;
    ASSERT_EQ(camera->start(), 0);
    ASSERT_EQ(camera->start(), 0) << "starting what runs changes nothing";
    ASSERT_TRUE(camera.waitForSteps(5));
    camera->stop();
    const std::uint64_t stopped = camera->sensorTime();
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(5));
    camera->stop();
    const std::uint64_t end = camera->sensorTime();
    EXPECT_GT(end, stopped);

    EventGenerator reference(stillScene(), noisyConfig().sensor, noisyConfig().seed);
    EXPECT_TRUE(camera.watch->taken() == generate(reference, static_cast<double>(end) * 1e-6));
    EXPECT_EQ(reference.time(), end);
}

TEST(SimulatedDvsCamera, RestartDoesNotShowWhatWasBeforeTheStop)
{
    const WatchedCamera camera;
    camera->setBatchTime(5000);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(5));
    camera->stop();
    const std::uint64_t stopped = camera->sensorTime();
    ASSERT_EQ(camera->start(), 0);
    std::vector<Event2D> batch;
    ASSERT_TRUE(camera.waitForBatch(batch));
    EXPECT_GE(batch.back().timestamp, stopped);
    camera->stop();
}

TEST(SimulatedDvsCamera, PullInMidStreamEndsTheConnectionForGood)
{
    const WatchedCamera camera;
    camera->setBatchTime(5000);
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(3));
    EXPECT_TRUE(camera->isConnected());
    camera->pull();
    EXPECT_FALSE(camera->isConnected());
    std::vector<Event2D> batch;
    EXPECT_FALSE(camera->getNextEventBatch(batch));
    camera->stop();
    EXPECT_NE(camera->start(), 0);
    EXPECT_FALSE(camera->isConnected());
}

TEST(SimulatedDvsCamera, PullEndsTheStreamByItself)
{
    const WatchedCamera camera;
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(1));
    camera->pull();
    camera->pull();
    camera->stop();
    const std::size_t made = camera.watch->taken().size();
    EXPECT_NE(camera->start(), 0);
    camera->stop();
    EXPECT_EQ(camera.watch->taken().size(), made);
}

TEST(SimulatedDvsCamera, CanBeDroppedWhileItStreams)
{
    WatchedCamera camera;
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(2));
    camera.camera.reset();
    EXPECT_EQ(camera.watch.use_count(), 1);
    EXPECT_FALSE(camera.watch->taken().empty());
}

TEST(SimulatedDvsCamera, NothingReachesASinkThatWasReplaced)
{
    const WatchedCamera camera;
    ASSERT_EQ(camera->start(), 0);
    ASSERT_TRUE(camera.waitForSteps(2));
    const auto next = std::make_shared<Watch>();
    camera->setEventSink(next);
    const std::vector<Event2D> first = camera.watch->taken();
    ASSERT_TRUE(next->waitForSteps(2));
    camera->setEventSink(nullptr);
    camera->stop();
    EXPECT_EQ(camera.watch->taken().size(), first.size());
    ASSERT_FALSE(next->taken().empty());
    EXPECT_EQ(next->taken().front().timestamp / EventGenerator::stepUs,
              first.back().timestamp / EventGenerator::stepUs + 1);
}

TEST(SimulatedDvsCamera, FailingStartIsReported)
{
    SimulatedCameraConfig config = noisyConfig();
    config.failStart = true;
    SimulatedDvsCamera camera(config, stillScene());
    EXPECT_NE(camera.start(), 0);
    EXPECT_TRUE(camera.isConnected());
    camera.stop();
}

TEST(SimulatedDvsCamera, SensorParametersActWhileItStreams)
{
    const WatchedCamera camera;
    camera->setBatchTime(10000);
    ASSERT_EQ(camera->start(), 0);
    SensorParameters quiet = camera->sensorParameters();
    EXPECT_FLOAT_EQ(quiet.backgroundRateHz, 20.0F);
    quiet.backgroundRateHz = 0;
    camera->setSensorParameters(quiet);
    EXPECT_FLOAT_EQ(camera->sensorParameters().backgroundRateHz, 0.0F);
    std::vector<Event2D> batch;
    do {
        ASSERT_TRUE(camera.waitForBatch(batch));
    } while (!batch.empty() && batch.back().timestamp < 5000000);
    EXPECT_TRUE(batch.empty());
    camera->stop();
}

/// A scene that takes time to render.
class SlowScene : public FormulaScene
{
public:
    /// The first `frames` frames take as long as `each`.
    SlowScene(int slowFrames, std::chrono::milliseconds each)
        : FormulaScene(64, 8, 0, [](double, double, double) { return 0.0; }), frames(slowFrames), pause(each)
    {
    }
    void beginFrame(std::uint64_t from, std::uint32_t length) override
    {
        FormulaScene::beginFrame(from, length);
        // The first of all is drawn before the camera streams.
        if (begun++ == 0 || begun > frames + 1)
            return;
        const auto end = steady_clock::now() + pause;
        while (steady_clock::now() < end) {}
    }

private:
    int frames;
    std::chrono::milliseconds pause;
    int begun = 0;
};

TEST(SimulatedDvsCamera, StreamThatTheMachineCannotFollowComesLateAndCompleteAndIsReportedOnce)
{
    const CapturedMessages messages;
    SimulatedCameraConfig config = noisyConfig();
    config.sensor.backgroundRateHz = 200.0F;
    const WatchedCamera camera(config, std::make_unique<SlowScene>(1000, std::chrono::milliseconds(48)));
    EXPECT_EQ(camera->start(), 0);
    EXPECT_TRUE(camera.waitForSteps(25));
    camera->stop();
    EXPECT_EQ(messages.warnings(),
              QStringList(QStringLiteral("Camera TST-000001 makes more events than this machine can "
                                         "follow; they come late.")));
    const std::vector<Event2D> events = camera.watch->taken();
    const double expected = 64 * 8 * 200e-6 * static_cast<double>(camera->sensorTime());
    EXPECT_NEAR(static_cast<double>(events.size()), expected, 0.05 * expected);
    for (std::size_t i = 1; i < events.size(); ++i) {
        ASSERT_LE(events[i - 1].timestamp, events[i].timestamp);
        ASSERT_LT(events[i].timestamp - events[i - 1].timestamp, EventGenerator::stepUs);
    }
}

TEST(SimulatedDvsCamera, LongStandstillIsNotMadeGood)
{
    const CapturedMessages messages;
    const WatchedCamera camera(noisyConfig(),
                               std::make_unique<SlowScene>(1, std::chrono::milliseconds(1700)));
    const auto begin = steady_clock::now();
    ASSERT_EQ(camera->start(), 0);
    // What is made good takes 62 steps in no time, the rest goes with the clock.
    ASSERT_TRUE(camera.waitForSteps(75));
    camera->stop();
    const auto behind = steady_clock::now() - begin - std::chrono::microseconds(camera->sensorTime());
    EXPECT_GT(behind, std::chrono::milliseconds(500));
    EXPECT_EQ(messages.warnings().size(), 1);
}

TEST(SimulatedBackend, OffersTheStandardCameras)
{
    SimulatedBackend backend;
    EXPECT_EQ(backend.name(), "simulation");
    std::set<std::string> serials;
    std::set<std::string> products;
    for (const korvane::CameraDescription& description : backend.cameraDescriptions()) {
        EXPECT_LE(description.serial.size(), 10U);
        serials.insert(description.serial);
        products.insert(description.product);
    }
    EXPECT_EQ(serials, (std::set<std::string>{"HAL-000001", "HAL-000002", "PEL-000001", "QRT-000001"}));
    EXPECT_EQ(products, (std::set<std::string>{"Halvora", "Pellix", "QRT4"}));
}

TEST(SimulatedBackend, OpensAStandardCameraThatStreams)
{
    SimulatedBackend backend;
    const auto begin = steady_clock::now();
    const std::shared_ptr<korvane::DvsCamera> camera = backend.openCamera("QRT-000001");
    ASSERT_NE(camera, nullptr);
    EXPECT_LT(steady_clock::now() - begin, patience);
    ASSERT_EQ(camera->start(), 0);
    camera->setBatchTime(33333);
    const auto watch = std::make_shared<Watch>();
    std::dynamic_pointer_cast<SimulatedDvsCamera>(camera)->setEventSink(watch);
    ASSERT_TRUE(watch->waitForSteps(10));
    camera->stop();
    std::vector<Event2D> batch;
    ASSERT_TRUE(camera->getNextEventBatch(batch));
    EXPECT_GT(batch.size(), 15000U);
}

SimulatedBackend testBackend()
{
    SimulatedCameraConfig working = noisyConfig();
    SimulatedCameraConfig taken = noisyConfig();
    taken.serial = "TST-000002";
    taken.failOpen = true;
    return SimulatedBackend({working, taken});
}

TEST(SimulatedBackend, CameraHasOneOwnerAtATime)
{
    SimulatedBackend backend = testBackend();
    std::shared_ptr<korvane::DvsCamera> first = backend.openCamera("TST-000001");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(backend.openCamera("TST-000001"), nullptr);
    EXPECT_EQ(backend.cameraDescriptions().size(), 2U);
    first.reset();
    EXPECT_NE(backend.openCamera("TST-000001"), nullptr);
}

TEST(SimulatedBackend, RefusesUnknownAndTakenCameras)
{
    SimulatedBackend backend = testBackend();
    EXPECT_EQ(backend.openCamera("TST-000009"), nullptr);
    EXPECT_EQ(backend.openCamera(""), nullptr);
    EXPECT_EQ(backend.openCamera("TST-000002"), nullptr);
    EXPECT_EQ(backend.openFusionCamera("TST-000001"), nullptr);
    backend.pull("TST-000009");
    backend.plug("TST-000009");
}

TEST(SimulatedBackend, OpenRacesHaveOneWinner)
{
    SimulatedBackend backend = testBackend();
    std::shared_ptr<korvane::DvsCamera> cameras[2];
    std::thread other([&] { cameras[1] = backend.openCamera("TST-000001"); });
    cameras[0] = backend.openCamera("TST-000001");
    other.join();
    EXPECT_NE(cameras[0] == nullptr, cameras[1] == nullptr);
}

TEST(SimulatedBackend, PulledCameraLeavesTheListAndIsLostUntilPluggedAgain)
{
    SimulatedBackend backend = testBackend();
    const std::shared_ptr<korvane::DvsCamera> camera = backend.openCamera("TST-000001");
    ASSERT_NE(camera, nullptr);
    ASSERT_EQ(camera->start(), 0);
    backend.pull("TST-000001");
    EXPECT_FALSE(camera->isConnected());
    ASSERT_EQ(backend.cameraDescriptions().size(), 1U);
    EXPECT_EQ(backend.cameraDescriptions().front().serial, "TST-000002");
    EXPECT_EQ(backend.openCamera("TST-000001"), nullptr);

    backend.plug("TST-000001");
    EXPECT_EQ(backend.cameraDescriptions().size(), 2U);
    EXPECT_FALSE(camera->isConnected());
    const std::shared_ptr<korvane::DvsCamera> fresh = backend.openCamera("TST-000001");
    ASSERT_NE(fresh, nullptr);
    EXPECT_TRUE(fresh->isConnected());
    camera->stop();
}

} // namespace
