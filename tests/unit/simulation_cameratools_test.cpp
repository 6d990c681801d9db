#include "camera/simulation/sensorstream.h"
#include "camera/simulation/simulateddvscamera.h"
#include "camera/simulation/simulatedfusioncamera.h"
#include "tests/support/plainrecording.h"
#include "tests/support/recordprinters.h"
#include "tests/unit/simulation_testscenes.h"
#include "tests/unit/simulation_watch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

/// Counts what a camera delivers and lets a test wait for it.
class Meter : public EventSink
{
public:
    void onEvents(const Event2D* begin, const Event2D* end) override
    {
        const std::lock_guard lock(mutex);
        events += static_cast<std::size_t>(end - begin);
        ++steps;
        changed.notify_all();
    }
    /// Events a step of the next so many steps, from the one after the next on.
    double rate(int more)
    {
        std::unique_lock lock(mutex);
        const int start = steps + 2;
        EXPECT_TRUE(changed.wait_for(lock, patience, [&] { return steps >= start; }));
        const std::size_t before = events;
        const int from = steps;
        EXPECT_TRUE(changed.wait_for(lock, patience, [&] { return steps >= from + more; }));
        return static_cast<double>(events - before) / (steps - from);
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t events = 0; // guarded by mutex
    int steps = 0; // guarded by mutex
};

/// Keeps what a camera delivers.
class Keeper : public Meter
{
public:
    void onEvents(const Event2D* begin, const Event2D* end) override
    {
        all.insert(all.end(), begin, end);
        Meter::onEvents(begin, end);
    }
    std::vector<Event2D> all; ///< the stream's thread's while it runs
};

std::unique_ptr<Scene> stripes()
{
    return std::make_unique<FormulaScene>(128, 64, 8, [](double column, double, double seconds) {
        return std::sin(2.0 * std::numbers::pi * (column / 32.0 - 4.0 * seconds));
    });
}

SimulatedCameraConfig testConfig()
{
    SimulatedCameraConfig config;
    config.serial = "TST-000001";
    config.product = "QRT4";
    return config;
}

std::string everyEventPath(const TemporaryRecordings& folder)
{
    return folder.path("tools.raw");
}

} // namespace

TEST(SimulatedCameraTools, BiasesChangeTheRateOfARunningCamera)
{
    SimulatedDvsCamera camera(testConfig(), stripes());
    const auto meter = std::make_shared<Meter>();
    camera.setEventSink(meter);
    const auto tool = camera.getTool(ToolType::Biases);
    ASSERT_NE(tool, nullptr);
    ASSERT_EQ(camera.start(), 0);
    const double before = meter->rate(8);
    ASSERT_TRUE(tool->setIntParameter("bias_diff_on", 200));
    ASSERT_TRUE(tool->setIntParameter("bias_diff_off", 200));
    const double after = meter->rate(8);
    EXPECT_GT(before, 1000.0);
    EXPECT_LT(after, before * 0.6);
    // What was set holds while the camera is open, also when its stream stops in between.
    camera.stop();
    ASSERT_EQ(camera.start(), 0);
    EXPECT_LT(meter->rate(8), before * 0.6);
    int kept = 0;
    EXPECT_TRUE(camera.getTool(ToolType::Biases)->getIntParameter("bias_diff_on", kept));
    EXPECT_EQ(kept, 200);
    camera.stop();
}

TEST(SimulatedCameraTools, LeaveTheStreamAsTheSensorMakesItWhileAllAreOff)
{
    const SimulatedCameraConfig config = testConfig();
    SimulatedDvsCamera camera(config, stripes());
    const auto keeper = std::make_shared<Keeper>();
    camera.setEventSink(keeper);
    ASSERT_EQ(camera.start(), 0);
    keeper->rate(10);
    camera.stop();

    SensorStream sensor(stripes(), config.sensor, config.seed);
    std::vector<Event2D> made;
    while (sensor.time() < camera.sensorTime()) {
        const auto events = sensor.generateStep().events;
        made.insert(made.end(), events.begin(), events.end());
    }
    ASSERT_FALSE(made.empty());
    EXPECT_TRUE(keeper->all == made);
}

TEST(SimulatedCameraTools, TriggerEdgesAreRecordedWhileTheInputIsOn)
{
    const TemporaryRecordings folder;
    SimulatedDvsCamera camera(testConfig(), stripes());
    const auto meter = std::make_shared<Meter>();
    camera.setEventSink(meter);
    const auto tool = camera.getTool(ToolType::TriggerIn);
    ASSERT_NE(tool, nullptr);
    ASSERT_TRUE(tool->setBoolParameter("enable", true));
    camera.startRecording(everyEventPath(folder));
    ASSERT_EQ(camera.start(), 0);
    meter->rate(20);
    camera.stop();
    const std::uint64_t length = camera.sensorTime();
    camera.stopRecording();

    const auto reader = TemporaryRecordings::load(everyEventPath(folder));
    ASSERT_NE(reader, nullptr);
    const auto triggers = reader->getTriggersAt(0, ~std::uint64_t{0});
    // 100 Hz, both edges.
    EXPECT_NEAR(static_cast<double>(triggers->size()), static_cast<double>(length) / 5000.0, 3.0);
    for (std::size_t i = 1; i < triggers->size(); ++i) {
        EXPECT_EQ((*triggers)[i].timestamp - (*triggers)[i - 1].timestamp, 5000U);
        EXPECT_NE((*triggers)[i].polarity, (*triggers)[i - 1].polarity);
    }
}

TEST(SimulatedCameraTools, NoTriggerEdgesAreRecordedUntilTheInputIsOn)
{
    const TemporaryRecordings folder;
    SimulatedDvsCamera camera(testConfig(), stripes());
    const auto meter = std::make_shared<Meter>();
    camera.setEventSink(meter);
    camera.startRecording(everyEventPath(folder));
    ASSERT_EQ(camera.start(), 0);
    meter->rate(4);
    camera.stop();
    camera.stopRecording();
    const auto reader = TemporaryRecordings::load(everyEventPath(folder));
    ASSERT_NE(reader, nullptr);
    EXPECT_TRUE(reader->getTriggersAt(0, ~std::uint64_t{0})->empty());
    EXPECT_FALSE(reader->getEventsAt(0, ~std::uint64_t{0})->empty());
}

TEST(SimulatedCameraTools, AFusionCameraRecordsAnEdgeForEachFrame)
{
    const TemporaryRecordings folder;
    const auto all = standardCameras();
    const auto camera = SimulatedFusionCamera::make(all.back());
    ASSERT_EQ(all.back().product, "Pellix");
    const auto meter = std::make_shared<Meter>();
    camera->setEventSink(meter);
    ASSERT_TRUE(camera->getTool(ToolType::TriggerIn)->setBoolParameter("enable", true));
    camera->startRecording(everyEventPath(folder), STREAM_DVS);
    camera->start(STREAM_DVS);
    meter->rate(10);
    camera->stop(STREAM_DVS);
    camera->stopRecording(STREAM_DVS);
    const auto reader = TemporaryRecordings::load(everyEventPath(folder));
    ASSERT_NE(reader, nullptr);
    const auto triggers = reader->getTriggersAt(0, ~std::uint64_t{0});
    ASSERT_GE(triggers->size(), 6U);
    for (std::size_t i = 2; i < triggers->size(); ++i)
        EXPECT_EQ((*triggers)[i].timestamp - (*triggers)[i - 2].timestamp,
                  SimulatedFusionCamera::framePeriod);
}

TEST(SimulatedCameraTools, AToolOutlivesItsCamera)
{
    auto camera = std::make_unique<SimulatedDvsCamera>(testConfig(), stripes());
    std::map<ToolType, std::shared_ptr<CameraTool>> kept;
    for (const ToolType type : {ToolType::Biases, ToolType::TriggerIn, ToolType::AntiFlicker,
                                ToolType::EventTrailFilter, ToolType::EventRateControl, ToolType::Roi})
        kept[type] = camera->getTool(type);
    camera.reset();
    EXPECT_TRUE(kept[ToolType::Biases]->setIntParameter("bias_diff_on", 10));
    for (const ToolType type : {ToolType::TriggerIn, ToolType::AntiFlicker, ToolType::EventTrailFilter,
                                ToolType::EventRateControl, ToolType::Roi})
        EXPECT_TRUE(kept[type]->setBoolParameter("enable", true));
}

TEST(SimulatedCameraTools, FiltersActOnARunningCameraAndKeepTheirSettingsWhileItIsOpen)
{
    SimulatedDvsCamera camera(testConfig(), stripes());
    const auto meter = std::make_shared<Meter>();
    camera.setEventSink(meter);
    ASSERT_EQ(camera.start(), 0);
    const double before = meter->rate(12);
    EXPECT_GT(before, 1000.0);
    const auto roi = camera.getTool(ToolType::Roi);
    ASSERT_TRUE(roi->setIntParameter("width", 32));
    ASSERT_TRUE(roi->setBoolParameter("enable", true));
    EXPECT_NEAR(meter->rate(12), before / 4, before / 12);
    camera.stop();
    ASSERT_EQ(camera.start(), 0);
    EXPECT_NEAR(meter->rate(12), before / 4, before / 12);
    int kept = 0;
    EXPECT_TRUE(camera.getTool(ToolType::Roi)->getIntParameter("width", kept));
    EXPECT_EQ(kept, 32);
    ASSERT_TRUE(roi->setBoolParameter("enable", false));
    EXPECT_NEAR(meter->rate(12), before, before / 4);
    camera.stop();
}
