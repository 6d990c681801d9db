#include "camera/simulation/pixelkernels.h"
#include "camera/simulation/streetscene.h"
#include "camera/simulation/turntablescene.h"
#include "tests/unit/simulation_testscenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace {

using namespace korvane::simulation;
using namespace korvane::simulation::testing;
using korvane::Event2D;

std::size_t pixelOf(const Event2D& event, int width = 128)
{
    return static_cast<std::size_t>(event.y) * static_cast<std::size_t>(width) + event.x;
}

double mean(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double deviation(const std::vector<double>& values)
{
    const double middle = mean(values);
    double squares = 0;
    for (const double value : values)
        squares += (value - middle) * (value - middle);
    return std::sqrt(squares / static_cast<double>(values.size()));
}

/// Light that goes up and down by 6 e-folds in a second each.
std::unique_ptr<Scene> triangleScene()
{
    return std::make_unique<FormulaScene>(128, 64, 4, [](double, double, double seconds) {
        const double phase = seconds / 2.0 - std::floor(seconds / 2.0);
        return phase < 0.5 ? -3.0 + 12.0 * phase : 9.0 - 12.0 * phase;
    });
}

/// Mean time between the ON events of each pixel while the light rises evenly.
std::vector<double> onIntervals(const SensorParameters& parameters)
{
    const std::vector<Event2D> events = generate(triangleScene(), parameters, 0.9);
    std::vector<double> first(128 * 64, -1.0);
    std::vector<double> last(128 * 64, -1.0);
    std::vector<int> count(128 * 64);
    for (const Event2D& event : events) {
        const std::size_t pixel = pixelOf(event);
        // The start is left out: there the low-pass still has to catch up.
        if (event.polarity == 0 || event.timestamp < 50000)
            continue;
        if (first[pixel] < 0)
            first[pixel] = static_cast<double>(event.timestamp);
        last[pixel] = static_cast<double>(event.timestamp);
        ++count[pixel];
    }
    std::vector<double> intervals;
    for (std::size_t i = 0; i < count.size(); ++i)
        intervals.push_back((last[i] - first[i]) / (count[i] - 1));
    return intervals;
}

TEST(SimulatedSensor, ThresholdIsTheContrastBetweenEvents)
{
    SensorParameters parameters = idealSensor();
    parameters.onThreshold = 0.3F;
    // 6 e-folds a second: 0.3 take 50 ms, and a microsecond of blindness.
    for (const double interval : onIntervals(parameters))
        ASSERT_NEAR(interval, 50000.0, 250.0);
}

TEST(SimulatedSensor, HalvingTheThresholdsAboutDoublesTheEventsOfAnEdge)
{
    SensorParameters parameters = idealSensor();
    parameters.onThreshold = 0.3F;
    parameters.offThreshold = 0.3F;
    const auto coarse = generate(edgeScene(2.0, 400.0), parameters, 0.4).size();
    parameters.onThreshold = 0.15F;
    parameters.offThreshold = 0.15F;
    const auto fine = generate(edgeScene(2.0, 400.0), parameters, 0.4).size();
    ASSERT_GT(coarse, 128U * 64U * 4U);
    const double ratio = static_cast<double>(fine) / static_cast<double>(coarse);
    EXPECT_GT(ratio, 1.6);
    EXPECT_LT(ratio, 2.4);
}

TEST(SimulatedSensor, MismatchSpreadsThresholdsByItsSetting)
{
    for (const float mismatch : {0.03F, 0.08F}) {
        SensorParameters parameters = idealSensor();
        parameters.thresholdMismatch = mismatch;
        const std::vector<double> intervals = onIntervals(parameters);
        const double relative = deviation(intervals) / mean(intervals);
        EXPECT_NEAR(relative, static_cast<double>(mismatch), 0.1 * static_cast<double>(mismatch));
    }
}

TEST(SimulatedSensor, JitterSpreadsThresholdsFromEventToEvent)
{
    SensorParameters parameters = idealSensor();
    parameters.thresholdJitter = 0.05F;
    const std::vector<Event2D> events = generate(triangleScene(), parameters, 0.9);
    std::vector<double> last(128 * 64, -1.0);
    std::vector<double> gaps;
    for (const Event2D& event : events) {
        const std::size_t pixel = pixelOf(event);
        if (event.timestamp < 50000)
            continue;
        if (last[pixel] >= 0)
            gaps.push_back(static_cast<double>(event.timestamp) - last[pixel]);
        last[pixel] = static_cast<double>(event.timestamp);
    }
    ASSERT_GT(gaps.size(), 10000U);
    EXPECT_NEAR(deviation(gaps) / mean(gaps), 0.05, 0.01);
}

TEST(SimulatedSensor, BackgroundActivityHasExponentialGaps)
{
    SensorParameters parameters = idealSensor();
    parameters.backgroundRateHz = 40.0F;
    const std::vector<Event2D> events = generate(stillScene(), parameters, 8.0);
    const double rate = static_cast<double>(events.size()) / (128.0 * 64.0 * 8.0);
    EXPECT_NEAR(rate, 40.0, 0.4);

    std::vector<double> last(128 * 64, -1.0);
    std::vector<double> gaps;
    for (std::size_t i = 0; i < events.size(); ++i) {
        const std::size_t pixel = pixelOf(events[i]);
        const auto time = static_cast<double>(events[i].timestamp);
        // Every 64th gap is plenty, and keeps the test's critical value well above the microsecond's grain.
        if (last[pixel] >= 0 && i % 64 == 0)
            gaps.push_back(time - last[pixel]);
        last[pixel] = time;
    }
    ASSERT_GT(gaps.size(), 20000U);
    EXPECT_NEAR(mean(gaps), 25000.0, 500.0);
    EXPECT_NEAR(deviation(gaps) / mean(gaps), 1.0, 0.02);
    std::sort(gaps.begin(), gaps.end());
    const auto count = static_cast<double>(gaps.size());
    double farthest = 0;
    for (std::size_t i = 0; i < gaps.size(); ++i) {
        const double expected = 1.0 - std::exp(-gaps[i] / 25000.0);
        farthest = std::max({farthest, std::abs(expected - static_cast<double>(i) / count),
                             std::abs(expected - static_cast<double>(i + 1) / count)});
    }
    // Kolmogorov and Smirnov's bound for one chance in a thousand.
    EXPECT_LT(farthest, 1.95 / std::sqrt(count));
}

TEST(SimulatedSensor, BackgroundActivityHasItsShareOfOnEvents)
{
    SensorParameters parameters = idealSensor();
    parameters.backgroundRateHz = 40.0F;
    parameters.backgroundOnShare = 0.7F;
    const std::vector<Event2D> events = generate(stillScene(), parameters, 1.0);
    const auto on
        = std::count_if(events.begin(), events.end(), [](const Event2D& e) { return e.polarity == 1; });
    EXPECT_NEAR(static_cast<double>(on) / static_cast<double>(events.size()), 0.7, 0.01);
}

TEST(SimulatedSensor, BackgroundActivityIsSpreadOverTheWholeSensorAndEveryMicrosecond)
{
    SensorParameters parameters = idealSensor();
    parameters.backgroundRateHz = 40.0F;
    const std::vector<Event2D> events = generate(stillScene(), parameters, 2.0);
    std::vector<int> perColumn(128);
    std::vector<int> perRow(64);
    std::vector<int> perPhase(8);
    for (const Event2D& event : events) {
        ++perColumn[event.x];
        ++perRow[event.y];
        ++perPhase[event.timestamp % EventGenerator::stepUs * 8 / EventGenerator::stepUs];
    }
    const auto expectEven = [&events](const std::vector<int>& counts) {
        const double expected = static_cast<double>(events.size()) / static_cast<double>(counts.size());
        for (const int count : counts)
            EXPECT_NEAR(count, expected, 6.0 * std::sqrt(expected));
    };
    expectEven(perColumn);
    expectEven(perRow);
    expectEven(perPhase);
}

TEST(SimulatedSensor, NoPixelFiresWithinItsRefractoryTime)
{
    SensorParameters parameters;
    parameters.refractoryUs = 700;
    parameters.cutoffHz = 1e6F;
    parameters.backgroundRateHz = 100.0F;
    parameters.hotPixelShare = 0.05F;
    parameters.hotPixelRateHz = 2000.0F;
    // Light that goes up and down by 3 e-folds every 3 ms, far more than the pixels can follow.
    auto flicker = std::make_unique<FormulaScene>(128, 64, 8, [](double column, double, double seconds) {
        return 1.5 * std::sin(2.0 * 3.14159265 * (seconds * 333.0 + column * 0.1));
    });
    const std::vector<Event2D> events = generate(std::move(flicker), parameters, 0.2);
    std::vector<std::uint64_t> last(128 * 64, std::numeric_limits<std::uint64_t>::max());
    std::uint64_t shortest = std::numeric_limits<std::uint64_t>::max();
    for (const Event2D& event : events) {
        std::uint64_t& previous = last[pixelOf(event)];
        if (previous != std::numeric_limits<std::uint64_t>::max())
            shortest = std::min(shortest, event.timestamp - previous);
        previous = event.timestamp;
    }
    EXPECT_GE(shortest, 700U);
    // The limit was reached, so it was the refractory time that kept them apart.
    EXPECT_LE(shortest, 705U);
}

TEST(SimulatedSensor, BrighterSideOfAMovingEdgeFiresOnAndDarkerSideOff)
{
    // A bright bar 24 pixels wide goes to the right at 500 pixels a second.
    const auto middleAt = [](double seconds) { return 20.0 + 500.0 * seconds; };
    auto bar = std::make_unique<FormulaScene>(128, 64, 8, [=](double column, double, double seconds) {
        const double inside = 12.0 - std::abs(column - middleAt(seconds));
        return 1.5 * std::clamp(inside / 2.0, -0.5, 0.5);
    });
    const std::vector<Event2D> events = generate(std::move(bar), idealSensor(), 0.16);
    std::size_t on = 0;
    for (const Event2D& event : events) {
        const double middle = middleAt(static_cast<double>(event.timestamp) * 1e-6);
        const double side = event.x - middle;
        // A pixel is as far from the edge as the light takes to cross the threshold.
        ASSERT_NEAR(std::abs(side), 12.0, 2.5) << "at " << event.timestamp;
        ASSERT_EQ(event.polarity, side > 0 ? 1 : 0) << "at " << event.timestamp;
        on += event.polarity;
    }
    EXPECT_GT(on, 64U * 50U);
    EXPECT_GT(events.size() - on, 64U * 50U);
}

TEST(SimulatedSensor, EventTimesFollowTheEdgeWithinAStep)
{
    // One pixel of travel takes 4 ms, a quarter of a step of the stream: interpolation must place the events.
    const std::vector<Event2D> events = generate(edgeScene(2.0, 250.0), idealSensor(), 0.4);
    std::vector<double> firstSeen(128, -1.0);
    for (const Event2D& event : events) {
        if (firstSeen[event.x] < 0)
            firstSeen[event.x] = static_cast<double>(event.timestamp);
    }
    for (std::size_t column = 20; column < 80; ++column)
        EXPECT_NEAR(firstSeen[column + 10] - firstSeen[column], 40000.0, 1200.0);
}

TEST(SimulatedSensor, HotPixelsFireMuchMoreOftenThanOthers)
{
    SensorParameters parameters = idealSensor();
    parameters.backgroundRateHz = 1.0F;
    parameters.hotPixelShare = 0.002F;
    parameters.hotPixelRateHz = 200.0F;
    EventGenerator generator(stillScene(), parameters, 1);
    const std::vector<Event2D> events = generate(generator, 4.0);
    std::vector<int> counts(128 * 64);
    for (const Event2D& event : events)
        ++counts[pixelOf(event)];
    const auto hot = generator.noise().hotPixels();
    ASSERT_EQ(hot.size(), 16U);
    int total = 0;
    for (const std::uint32_t pixel : hot) {
        // The slowest of them make 63 a second.
        EXPECT_GT(counts[pixel], 150);
        total += counts[pixel];
        counts[pixel] = 0;
    }
    EXPECT_GT(total, 16 * 4 * 100);
    EXPECT_LT(*std::max_element(counts.begin(), counts.end()), 20);
}

TEST(SimulatedSensor, LowPassKeepsFastFlickerFromPixelsAndDarkPixelsAreSlower)
{
    const auto eventsAt = [](float cutoff, double middle) {
        SensorParameters parameters = idealSensor();
        parameters.cutoffHz = cutoff;
        auto flicker = std::make_unique<FormulaScene>(64, 16, 16, [middle](double, double, double seconds) {
            return middle + 0.5 * std::sin(2.0 * 3.14159265 * seconds * 300.0);
        });
        return generate(std::move(flicker), parameters, 0.2).size();
    };
    const auto fast = eventsAt(10000.0F, 0.0);
    EXPECT_GT(fast, 100000U);
    EXPECT_LT(eventsAt(50.0F, 0.0), fast / 20);
    EXPECT_LT(eventsAt(400.0F, -2.5), eventsAt(400.0F, 0.0) / 2);
}

TEST(SimulatedSensor, HighPassForgetsSlowChanges)
{
    SensorParameters parameters = idealSensor();
    const auto eventsOf = [&parameters](double perSecond) {
        auto ramp = std::make_unique<FormulaScene>(
            64, 16, 1, [perSecond](double, double, double seconds) { return -2.0 + perSecond * seconds; });
        return generate(std::move(ramp), parameters, 1.0).size();
    };
    EXPECT_GT(eventsOf(1.0), 64U * 16U * 3U);
    parameters.highPassHz = 10.0F;
    EXPECT_LT(eventsOf(1.0), 64U * 16U);
    auto fast = edgeScene(2.0, 2000.0);
    EXPECT_GT(generate(std::move(fast), parameters, 0.08).size(), 128U * 64U * 3U);
}

TEST(SimulatedSensor, LoweringAThresholdWhileRunningTakesEffectWithTheNextStep)
{
    SensorParameters parameters = idealSensor();
    parameters.onThreshold = 2.0F;
    parameters.offThreshold = 2.0F;
    EventGenerator generator(triangleScene(), parameters, 1);
    generate(generator, 0.2);
    EXPECT_LT(generator.generateStep().size(), 128U * 64U / 4U);
    parameters.onThreshold = 0.05F;
    parameters.offThreshold = 0.05F;
    generator.setParameters(parameters);
    // Pixels have moved away from what they remember by far more than the new threshold.
    EXPECT_GT(generator.generateStep().size(), 128U * 64U * 3U / 4U);
}

TEST(SimulatedSensor, ParametersOutOfRangeAreMovedIntoIt)
{
    SensorParameters parameters;
    parameters.onThreshold = -1.0F;
    parameters.offThreshold = std::numeric_limits<float>::quiet_NaN();
    parameters.refractoryUs = 0;
    parameters.hotPixelShare = 7.0F;
    const SensorParameters usable = sanitized(parameters);
    EXPECT_FLOAT_EQ(usable.onThreshold, 0.01F);
    EXPECT_FLOAT_EQ(usable.offThreshold, SensorParameters().offThreshold);
    EXPECT_EQ(usable.refractoryUs, 1U);
    EXPECT_FLOAT_EQ(usable.hotPixelShare, 0.1F);
    EXPECT_EQ(sanitized(SensorParameters()), SensorParameters());
}

TEST(SimulatedSensor, SurvivesTheMostExtremeParameters)
{
    SensorParameters parameters;
    parameters.onThreshold = 0.01F;
    parameters.offThreshold = 2.0F;
    parameters.thresholdMismatch = 0.25F;
    parameters.thresholdJitter = 0.25F;
    parameters.refractoryUs = 10000;
    parameters.backgroundRateHz = 1000.0F;
    parameters.hotPixelShare = 0.1F;
    parameters.hotPixelRateHz = 5000.0F;
    EventGenerator generator(edgeScene(6.0, 3000.0), parameters, 1);
    const std::vector<Event2D> events = generate(generator, 0.2);
    // Blind for 10 ms after each event, a pixel cannot make more than twenty-one in 200 ms.
    EXPECT_GT(events.size(), 128U * 64U * 4U);
    EXPECT_LE(events.size(), 128U * 64U * 21U);
}

} // namespace
