#include "camera/simulation/biases.h"
#include "camera/simulation/sensorstream.h"
#include "tests/unit/simulation_testscenes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <utility>

namespace {

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

constexpr double area = 128 * 64;

/// What comes out of a pixel, in events a second.
struct Rates
{
    double on = 0;
    double off = 0;
    double all() const { return on + off; }
    double onShare() const { return on / all(); }
};

/// Stripes that pass every pixel so often in a second; they reach `contrast` above and below mid-grey.
std::unique_ptr<Scene> stripes(double perSecond, double contrast)
{
    return std::make_unique<FormulaScene>(128, 64, 16, [=](double column, double, double seconds) {
        return contrast * std::sin(2.0 * std::numbers::pi * (column / 32.0 - perSecond * seconds));
    });
}

/// A lamp that is switched on within the millisecond before the first tenth of a second is over.
std::unique_ptr<Scene> lamp()
{
    return std::make_unique<FormulaScene>(
        128, 64, 16, [](double, double, double seconds) { return seconds < 0.1 ? -1.0 : 1.0; });
}

/// A sensor with the imperfections of a real one, and the tool that sets its biases.
class BiasedSensor
{
public:
    explicit BiasedSensor(std::unique_ptr<Scene> scene, const SensorParameters& parameters = {})
        : stream(std::move(scene), parameters, 1),
          tool(makeBiasesTool(stream.parameters(), stream.parameterHandover()))
    {
    }

    bool set(const std::string& name, int value) { return tool->setIntParameter(name, value); }
    Rates watch(double seconds)
    {
        // What a change itself sets free is not what is asked for.
        for (int i = 0; i < 4; ++i)
            stream.generateStep();
        const std::uint64_t start = stream.time();
        Rates rates;
        while (static_cast<double>(stream.time() - start) < seconds * 1e6) {
            for (const Event2D& event : stream.generateStep().events)
                (event.polarity == 1 ? rates.on : rates.off) += 1;
        }
        const double watched = static_cast<double>(stream.time() - start) * 1e-6 * area;
        return {rates.on / watched, rates.off / watched};
    }

    SensorStream stream;
    std::shared_ptr<ParameterTool> tool;
};

SensorParameters noisySensor()
{
    SensorParameters parameters;
    parameters.backgroundRateHz = 1.0F;
    parameters.hotPixelShare = 0;
    return parameters;
}

} // namespace

TEST(Biases, AreOffsetsAroundZeroThatChangeNothingByThemselves)
{
    BiasedSensor sensor(stillScene());
    std::map<std::string, BasicParameterInfo> all;
    sensor.tool->getAllParameterInfo(all);
    EXPECT_EQ(all.size(), 5U);
    for (const auto& [name, parameter] : all) {
        IntParameterInfo info;
        ASSERT_TRUE(sensor.tool->getIntParameterInfo(name, info)) << name;
        EXPECT_EQ(info.value, 0);
        EXPECT_LE(info.minimum, 0);
        EXPECT_GT(info.maximum, 0);
        EXPECT_LE(info.unit.size(), 6U);
        EXPECT_FALSE(info.description.empty());
        EXPECT_FALSE(sensor.set(name, info.minimum - 1));
        EXPECT_FALSE(sensor.set(name, info.maximum + 1));
    }
    SensorParameters odd = noisySensor();
    odd.onThreshold = 0.3F;
    odd.backgroundOnShare = 0.3F;
    EXPECT_EQ(biased(odd, Biases()), odd);
}

TEST(Biases, AThresholdRaisedLowersTheRateOfItsPolarityOnly)
{
    BiasedSensor sensor(stripes(4, 1.0));
    const Rates before = sensor.watch(1.0);
    EXPECT_NEAR(before.onShare(), 0.5, 0.02);

    ASSERT_TRUE(sensor.set("bias_diff_on", 100));
    const Rates fewerOn = sensor.watch(1.0);
    EXPECT_NEAR(fewerOn.on / before.on, 0.5, 0.1);
    // The way back begins at the last event, so each turn of the light costs the other polarity a little.
    EXPECT_NEAR(fewerOn.off / before.off, 0.9, 0.1);

    ASSERT_TRUE(sensor.set("bias_diff_on", 0));
    ASSERT_TRUE(sensor.set("bias_diff_off", 100));
    const Rates fewerOff = sensor.watch(1.0);
    EXPECT_NEAR(fewerOff.off / before.off, 0.5, 0.1);
    EXPECT_NEAR(fewerOff.on / before.on, 0.9, 0.1);
}

TEST(Biases, AThresholdLoweredRaisesTheRateOfItsPolarity)
{
    BiasedSensor sensor(stripes(4, 1.0));
    const Rates before = sensor.watch(1.0);
    ASSERT_TRUE(sensor.set("bias_diff_on", -50));
    const Rates after = sensor.watch(1.0);
    EXPECT_GT(after.on, before.on * 1.6);
    EXPECT_NEAR(after.off / before.off, 1.0, 0.15);
}

TEST(Biases, SetBackToZeroGiveTheRatesOfBefore)
{
    BiasedSensor sensor(stripes(4, 1.0));
    const Rates before = sensor.watch(1.0);
    ASSERT_TRUE(sensor.set("bias_diff_on", 150));
    ASSERT_TRUE(sensor.set("bias_high_pass", 80));
    EXPECT_LT(sensor.watch(0.5).all(), before.all() * 0.8);
    ASSERT_TRUE(sensor.set("bias_diff_on", 0));
    ASSERT_TRUE(sensor.set("bias_high_pass", 0));
    const Rates after = sensor.watch(1.0);
    EXPECT_NEAR(after.on / before.on, 1.0, 0.03);
    EXPECT_NEAR(after.off / before.off, 1.0, 0.03);
    EXPECT_EQ(sensor.stream.parameters(), SensorParameters());
}

TEST(Biases, LowThresholdsLetNoiseOfTheirPolarityThrough)
{
    BiasedSensor sensor(stillScene(), noisySensor());
    const Rates before = sensor.watch(4.0);
    EXPECT_NEAR(before.all(), 1.0, 0.05);
    EXPECT_NEAR(before.onShare(), 0.65, 0.03);
    ASSERT_TRUE(sensor.set("bias_diff_off", -30));
    const Rates noisier = sensor.watch(4.0);
    EXPECT_GT(noisier.off, before.off * 3);
    EXPECT_NEAR(noisier.on / before.on, 1.0, 0.1);
    ASSERT_TRUE(sensor.set("bias_diff_off", 100));
    ASSERT_TRUE(sensor.set("bias_diff_on", 100));
    EXPECT_LT(sensor.watch(4.0).all(), before.all() * 0.25);
}

TEST(Biases, ANarrowLowPassTakesNoiseAndFastLightAway)
{
    BiasedSensor still(stillScene(), noisySensor());
    const Rates noise = still.watch(4.0);
    ASSERT_TRUE(still.set("bias_low_pass", -40));
    // What leaks does not pass the low-pass.
    EXPECT_LT(still.watch(4.0).off, noise.off * 0.1);
    ASSERT_TRUE(still.set("bias_low_pass", 20));
    EXPECT_GT(still.watch(4.0).off, noise.off * 3);

    BiasedSensor fast(stripes(150, 0.5));
    const Rates flicker = fast.watch(0.3);
    ASSERT_TRUE(fast.set("bias_low_pass", -60));
    EXPECT_LT(fast.watch(0.3).all(), flicker.all() * 0.2);
}

TEST(Biases, ANarrowLowPassDelaysTheResponse)
{
    // The middle of the events that a lamp sets free, microseconds after it is switched on.
    const auto delay = [](int lowPass) {
        SensorParameters parameters = idealSensor();
        parameters.cutoffHz = 400.0F;
        BiasedSensor sensor(lamp(), parameters);
        EXPECT_TRUE(sensor.set("bias_low_pass", lowPass));
        double sum = 0;
        double count = 0;
        while (sensor.stream.time() < 300000) {
            for (const Event2D& event : sensor.stream.generateStep().events) {
                sum += static_cast<double>(event.timestamp) - 99000;
                count += 1;
            }
        }
        EXPECT_GT(count, area * 4);
        return sum / count;
    };
    const double standard = delay(0);
    EXPECT_GT(standard, 0);
    EXPECT_GT(delay(-60), standard * 3);
    EXPECT_LT(delay(60), standard);
}

TEST(Biases, AHighPassTakesSlowChangesAndLeavesFastOnes)
{
    BiasedSensor slow(stripes(0.5, 1.0));
    const Rates slowly = slow.watch(2.0);
    ASSERT_TRUE(slow.set("bias_high_pass", 70));
    EXPECT_LT(slow.watch(2.0).all(), slowly.all() * 0.2);

    BiasedSensor fast(stripes(30, 1.0));
    const Rates quickly = fast.watch(0.5);
    ASSERT_TRUE(fast.set("bias_high_pass", 70));
    EXPECT_GT(fast.watch(0.5).all(), quickly.all() * 0.7);
}

TEST(Biases, AHighPassTakesBackgroundActivityMostOfAllThatOfLeakage)
{
    BiasedSensor sensor(stillScene(), noisySensor());
    const Rates before = sensor.watch(4.0);
    ASSERT_TRUE(sensor.set("bias_high_pass", 30));
    const Rates after = sensor.watch(4.0);
    EXPECT_LT(after.all(), before.all() * 0.75);
    EXPECT_NEAR(after.onShare(), 0.5, 0.03);
    EXPECT_NEAR(before.onShare(), 0.65, 0.03);
}

TEST(Biases, ALongRefractoryTimeLeavesFewerEventsOfAnEdge)
{
    // Two pixels a millisecond: an edge passes a pixel in 1.5 ms, with 2 / 0.25 events at most.
    SensorParameters parameters = idealSensor();
    parameters.refractoryUs = 200;
    const auto eventsOfEdge = [&parameters](int refractory) {
        BiasedSensor sensor(edgeScene(2.0, 2000.0), parameters);
        EXPECT_TRUE(sensor.set("bias_refractory", refractory));
        std::size_t count = 0;
        while (sensor.stream.time() < 100000)
            count += sensor.stream.generateStep().events.size();
        return static_cast<double>(count) / area;
    };
    const double before = eventsOfEdge(0);
    EXPECT_GT(before, 3.0);
    EXPECT_LT(eventsOfEdge(100), before * 0.5);
    EXPECT_GT(eventsOfEdge(-60), before);
}

TEST(Biases, AreChangedWithinAStepAndTheSceneGoesOn)
{
    BiasedSensor sensor(stripes(4, 1.0));
    sensor.watch(0.2);
    const std::uint64_t before = sensor.stream.time();
    ASSERT_TRUE(sensor.set("bias_diff_on", 200));
    ASSERT_TRUE(sensor.set("bias_diff_off", 200));
    const std::size_t next = sensor.stream.generateStep().events.size();
    EXPECT_EQ(sensor.stream.time(), before + EventGenerator::stepUs);
    const double usual = BiasedSensor(stripes(4, 1.0)).watch(0.5).all() * area * 0.016;
    EXPECT_LT(static_cast<double>(next), usual * 0.6);
}

TEST(Biases, AtAnyEndOfTheirRangesTheSensorStaysWithinItsOwn)
{
    const SensorParameters base;
    for (const int threshold : {Biases::leastThreshold, Biases::greatestThreshold}) {
        for (const int low : {Biases::leastLowPass, Biases::greatestLowPass}) {
            for (const int high : {Biases::leastHighPass, Biases::greatestHighPass}) {
                for (const int refractory : {Biases::leastRefractory, Biases::greatestRefractory}) {
                    const SensorParameters p = biased(base, {threshold, threshold, low, high, refractory});
                    EXPECT_EQ(p, sanitized(p));
                    EXPECT_NEAR(p.onThreshold, 0.25 * (1 + threshold / 100.0), 1e-4);
                    EXPECT_NEAR(p.highPassHz, high == 0 ? 0.0 : 40.0, 1e-3);
                    EXPECT_NEAR(p.refractoryUs, refractory < 0 ? 25 : 6400, 1);
                    EXPECT_LE(p.backgroundRateHz, 5.0F);
                }
            }
        }
    }
}
