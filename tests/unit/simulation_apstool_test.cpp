#include "camera/driver/cameratool.h"
#include "camera/simulation/apstool.h"
#include "camera/simulation/framecounts.h"
#include "camera/simulation/fusionscene.h"
#include "camera/simulation/sensorstream.h"
#include "tests/unit/simulation_fusionpictures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

namespace {

constexpr std::size_t pixels = std::size_t{3840} * 2160;
constexpr std::size_t rowBytes = std::size_t{3840} * 3;

/// The standard camera's intensity sensor, and the tool that sets it.
class Sensor
{
public:
    Sensor()
        : handover(std::make_shared<Handover<ApsParameters>>()), tool(makeApsTool(handover)),
          renderer(std::make_shared<const FusionStage>(stageConfig().seed))
    {
    }
    bool set(const std::string& name, int value) { return tool->setIntParameter(name, value); }
    bool flip(bool value) { return tool->setBoolParameter("flip", value); }
    /// The bytes of its picture of one moment.
    std::vector<std::uint8_t> picture(std::uint64_t time = 1'000'000)
    {
        ApsParameters parameters;
        if (handover->take(parameters))
            renderer.setParameters(parameters);
        const ApsFrame frame = renderer.render(time);
        return {frame.pixels, frame.pixels + pixels * 3};
    }

    std::shared_ptr<Handover<ApsParameters>> handover;
    std::shared_ptr<ParameterTool> tool;

private:
    ApsRenderer renderer;
};

/// The light that a picture stands for: screens show a value to the power of 2.2.
double meanLight(const std::vector<std::uint8_t>& picture)
{
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < picture.size(); i += 7, ++count)
        sum += std::pow(picture[i] / 255.0, 2.2);
    return sum / static_cast<double>(count);
}

double shareOf(const std::vector<std::uint8_t>& picture, std::uint8_t value)
{
    return static_cast<double>(std::count(picture.begin(), picture.end(), value))
        / static_cast<double>(picture.size());
}

} // namespace

TEST(ApsTool, HasFourParametersThatThePanelShows)
{
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    const auto tool = camera->getTool(ToolType::Aps);
    ASSERT_NE(tool, nullptr);
    std::map<std::string, BasicParameterInfo> all;
    tool->getAllParameterInfo(all);
    std::vector<std::string> names;
    for (const auto& [name, info] : all) {
        names.push_back(name);
        EXPECT_EQ(info.kind, name == "flip" ? BasicParameterInfo::Boolean : BasicParameterInfo::Integer);
        EXPECT_FALSE(info.description.empty());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"black_level", "exposure", "flip", "gain"}));
    BoolParameterInfo flip;
    ASSERT_TRUE(tool->getBoolParameterInfo("flip", flip));
    EXPECT_FALSE(flip.value);
    IntParameterInfo exposure;
    ASSERT_TRUE(tool->getIntParameterInfo("exposure", exposure));
    EXPECT_EQ(exposure.minimum, 10);
    EXPECT_EQ(exposure.maximum, 33000);
    EXPECT_EQ(exposure.value, 10000);
    EXPECT_EQ(exposure.unit, "µs");
    IntParameterInfo gain;
    ASSERT_TRUE(tool->getIntParameterInfo("gain", gain));
    EXPECT_EQ(gain.unit, "dB");
}

TEST(ApsTool, ItsDefaultsAreTheSensorsOwn)
{
    Sensor touched;
    Sensor untouched;
    ASSERT_TRUE(touched.set("exposure", 20000));
    ASSERT_TRUE(touched.set("exposure", 10000));
    EXPECT_TRUE(touched.picture() == untouched.picture());
}

TEST(ApsTool, TwiceTheExposureIsTwiceTheLightUntilPixelsAreFull)
{
    Sensor sensor;
    ASSERT_TRUE(sensor.set("exposure", 2500));
    const double quarter = meanLight(sensor.picture());
    ASSERT_TRUE(sensor.set("exposure", 5000));
    const double half = meanLight(sensor.picture());
    ASSERT_TRUE(sensor.set("exposure", 10000));
    const auto standard = sensor.picture();
    EXPECT_NEAR(half / quarter, 2.0, 0.03);
    EXPECT_NEAR(meanLight(standard) / half, 2.0, 0.03);
    ASSERT_TRUE(sensor.set("exposure", 33000));
    const auto longest = sensor.picture();
    EXPECT_GT(shareOf(longest, 255), shareOf(standard, 255) + 0.1);
    EXPECT_GT(meanLight(longest), 1.3 * meanLight(standard));
    EXPECT_LT(meanLight(longest), 3.0 * meanLight(standard));
}

TEST(ApsTool, SixDecibelsAreTwiceTheExposure)
{
    Sensor sensor;
    ASSERT_TRUE(sensor.set("exposure", 2500));
    const double dark = meanLight(sensor.picture());
    ASSERT_TRUE(sensor.set("gain", 6));
    EXPECT_NEAR(meanLight(sensor.picture()) / dark, 1.995, 0.03);
}

TEST(ApsTool, TheBlackLevelIsAddedToEveryPixelUntilItIsFull)
{
    Sensor sensor;
    const auto before = sensor.picture();
    ASSERT_TRUE(sensor.set("black_level", 40));
    const auto lifted = sensor.picture();
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (std::abs(lifted[i] - std::min(255, before[i] + 40)) > 1)
            ++wrong;
    }
    // But for the soft edges of bright things, which mix a value that is full already.
    EXPECT_LT(wrong, before.size() / 1000);
    EXPECT_GE(*std::min_element(lifted.begin(), lifted.end()), 40);
}

TEST(ApsTool, FlippedTheRowsComeInReverseByteForByte)
{
    Sensor sensor;
    const auto upright = sensor.picture();
    ASSERT_TRUE(sensor.flip(true));
    const auto turned = sensor.picture();
    for (std::size_t y = 0; y < 2160; ++y) {
        const auto row = turned.begin() + static_cast<std::ptrdiff_t>(y * rowBytes);
        ASSERT_TRUE(std::equal(row, row + static_cast<std::ptrdiff_t>(rowBytes),
                               upright.begin() + static_cast<std::ptrdiff_t>((2159 - y) * rowBytes)))
            << y;
    }
    ASSERT_TRUE(sensor.flip(false));
    EXPECT_TRUE(sensor.picture() == upright);
}

TEST(ApsTool, RefusesWhatLiesOutsideItsRangesAndStaysAsItWas)
{
    Sensor sensor;
    const auto before = sensor.picture();
    EXPECT_FALSE(sensor.set("exposure", 9));
    EXPECT_FALSE(sensor.set("exposure", 33001));
    EXPECT_FALSE(sensor.set("gain", 25));
    EXPECT_FALSE(sensor.set("gain", -1));
    EXPECT_FALSE(sensor.set("black_level", 65));
    EXPECT_FALSE(sensor.set("flip", 1));
    EXPECT_TRUE(sensor.picture() == before);
}

TEST(ApsTool, ActsOnTheNextFramesOfACameraThatRuns)
{
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    const auto tool = camera->getTool(ToolType::Aps);
    Receiver receiver(camera);
    std::atomic<double> first{-1};
    std::atomic<bool> darker{false};
    receiver.onFrame = [&](const ApsFrame& frame) {
        if (first < 0) {
            first = lumaMean(frame);
            EXPECT_TRUE(tool->setIntParameter("exposure", 1000));
        } else if (lumaMean(frame) < first / 2) {
            darker = true;
        }
    };
    camera->start(STREAM_FUSION);
    ASSERT_TRUE(receiver.awaitFrames(4));
    camera->stop(STREAM_FUSION);
    EXPECT_TRUE(darker);
    EXPECT_EQ(camera->apsParameters().exposureUs, 1000);
}

TEST(ApsTool, EventsLieOnTheEdgesOfThePictureTurnedBackWhenItIsFlipped)
{
    // The event sensor is not the one that is set: the same events, the picture the other way up.
    constexpr std::uint64_t time = 6 * FrameCounts::period;
    const SimulatedCameraConfig config = stageConfig();
    const auto stage = std::make_shared<const FusionStage>(config.seed);
    SensorStream stream(std::make_unique<FusionScene>(stage), config.sensor, config.seed);
    FrameCounts counting;
    while (stream.time() <= time)
        counting.count(stream.generateStep().events);
    counting.closeFrame(time - FrameCounts::period);
    counting.closeFrame(time);
    std::shared_ptr<EventCountFrame> counts;
    ASSERT_TRUE(counting.get(counts, time));

    Sensor sensor;
    ASSERT_TRUE(sensor.flip(true));
    const auto turned = sensor.picture(time);
    std::vector<std::uint8_t> back;
    for (std::size_t y = 2160; y-- > 0;)
        back.insert(back.end(), turned.data() + y * rowBytes, turned.data() + (y + 1) * rowBytes);
    EXPECT_GE(edgeShares({back.data(), 3840, 2160, time}, *counts).onEdges, 0.8);
    EXPECT_LT(edgeShares({turned.data(), 3840, 2160, time}, *counts).onEdges, 0.4);
}

TEST(ApsTool, OutlivesItsCamera)
{
    auto camera = SimulatedFusionCamera::make(stageConfig());
    const auto tool = camera->getTool(ToolType::Aps);
    camera.reset();
    EXPECT_TRUE(tool->setIntParameter("exposure", 500));
    int value = 0;
    EXPECT_TRUE(tool->getIntParameter("exposure", value));
    EXPECT_EQ(value, 500);
}
