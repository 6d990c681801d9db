#include "camera/simulation/lamplayer.h"
#include "camera/simulation/layerimage.h"
#include "camera/simulation/noisesource.h"
#include "camera/simulation/pixelkernels.h"
#include "camera/simulation/random.h"
#include "camera/simulation/streetscene.h"
#include "camera/simulation/turntablescene.h"
#include "tests/unit/simulation_testscenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <tuple>
#include <vector>

namespace {

using namespace korvane::simulation;
using namespace korvane::simulation::testing;
using korvane::Event2D;

std::unique_ptr<Scene> street(std::uint64_t seed, double rate)
{
    return std::make_unique<StreetScene>(seed, rate);
}

std::unique_ptr<Scene> turntable(std::uint64_t seed, double rate)
{
    return std::make_unique<TurntableScene>(seed, rate);
}

double measuredRate(std::unique_ptr<Scene> scene, double seconds)
{
    EventGenerator generator(std::move(scene), SensorParameters(), 5);
    std::size_t count = 0;
    while (static_cast<double>(generator.time()) < seconds * 1e6)
        count += generator.generateStep().size();
    return static_cast<double>(count) / (static_cast<double>(generator.time()) * 1e-6);
}

TEST(SimulatedStream, EventsComeByTimeThenRowThenColumnInsideTheSensor)
{
    const std::vector<Event2D> events = generate(street(1, 10e6), SensorParameters(), 0.1);
    ASSERT_GT(events.size(), 500000U);
    const auto key = [](const Event2D& e) { return std::tuple(e.timestamp, e.y, e.x); };
    for (std::size_t i = 0; i < events.size(); ++i) {
        ASSERT_LT(events[i].x, 1280);
        ASSERT_LT(events[i].y, 720);
        ASSERT_LE(events[i].polarity, 1);
        if (i > 0) {
            ASSERT_LT(key(events[i - 1]), key(events[i])) << "event " << i;
        }
    }
}

TEST(SimulatedStream, StepsFollowEachOtherWithoutGapOrOverlap)
{
    EventGenerator generator(turntable(1, 2e6), SensorParameters(), 1);
    for (int i = 0; i < 10; ++i) {
        const std::uint64_t start = generator.time();
        const auto events = generator.generateStep();
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(generator.time(), start + EventGenerator::stepUs);
        EXPECT_GE(events.front().timestamp, start);
        EXPECT_LT(events.back().timestamp, generator.time());
    }
}

TEST(SimulatedStream, SameSeedGivesTheSameEventsAndAnotherSeedOthers)
{
    const std::vector<Event2D> first = generate(street(3, 5e6), SensorParameters(), 0.08, 3);
    const std::vector<Event2D> again = generate(street(3, 5e6), SensorParameters(), 0.08, 3);
    const std::vector<Event2D> otherSensor = generate(street(3, 5e6), SensorParameters(), 0.08, 4);
    const std::vector<Event2D> otherStreet = generate(street(4, 5e6), SensorParameters(), 0.08, 3);
    EXPECT_FALSE(first.empty());
    EXPECT_TRUE(first == again);
    EXPECT_FALSE(first == otherSensor);
    EXPECT_FALSE(first == otherStreet);
}

TEST(SimulatedStream, TurntableIsRepeatableToo)
{
    const std::vector<Event2D> first = generate(turntable(3, 2e6), SensorParameters(), 0.1, 3);
    EXPECT_FALSE(first.empty());
    EXPECT_TRUE(first == generate(turntable(3, 2e6), SensorParameters(), 0.1, 3));
    EXPECT_FALSE(first == generate(turntable(4, 2e6), SensorParameters(), 0.1, 3));
}

TEST(SimulatedStream, HalfOfTheMicrosecondsOfATypicalMillisecondAreInUseAtAMillionEventsASecond)
{
    for (auto* const make : {&street, &turntable}) {
        const std::vector<Event2D> events = generate(make(2, 1e6), SensorParameters(), 0.3);
        std::vector<int> distinct(300);
        std::uint64_t last = ~std::uint64_t{0};
        for (const Event2D& event : events) {
            if (event.timestamp != last && event.timestamp < 300000)
                ++distinct[event.timestamp / 1000];
            last = event.timestamp;
        }
        EXPECT_LT(events.size(), 450000U);
        std::nth_element(distinct.begin(), distinct.begin() + 150, distinct.end());
        EXPECT_GE(distinct[150], 500);
    }
}

TEST(SimulatedStream, StreetMakesEventsAtItsRate)
{
    EXPECT_NEAR(measuredRate(street(1, 1e6), 1.0), 1e6, 0.25e6);
    EXPECT_NEAR(measuredRate(street(2, 10e6), 1.0), 10e6, 2.5e6);
}

TEST(SimulatedStream, OtherStreetsMakeEventsAtTheirRateToo)
{
    EXPECT_NEAR(measuredRate(street(5, 10e6), 0.8), 10e6, 2.5e6);
    EXPECT_NEAR(measuredRate(street(8, 10e6), 0.8), 10e6, 2.5e6);
}

TEST(SimulatedStream, BusyStreetMakesEventsAtItsRate)
{
    EXPECT_NEAR(measuredRate(street(4, 30e6), 0.4), 30e6, 7.5e6);
    EXPECT_NEAR(measuredRate(street(4, 50e6), 0.3), 50e6, 12.5e6);
}

TEST(SimulatedStream, TurntableMakesEventsAtItsRate)
{
    EXPECT_NEAR(measuredRate(turntable(3, 1.5e6), 1.5), 1.5e6, 0.375e6);
    EXPECT_NEAR(measuredRate(turntable(8, 2e6), 1.0), 2e6, 0.5e6);
}

TEST(SimulatedStream, OnAndOffEventsAreAboutEquallyMany)
{
    const std::vector<Event2D> events = generate(street(2, 10e6), SensorParameters(), 0.2);
    const auto on
        = std::count_if(events.begin(), events.end(), [](const Event2D& e) { return e.polarity == 1; });
    EXPECT_NEAR(static_cast<double>(on) / static_cast<double>(events.size()), 0.5, 0.05);
}

TEST(SimulatedStream, EveryInstructionSetGivesTheSameEvents)
{
    const auto eventsWith = [](const char* name, std::unique_ptr<Scene> scene) {
        EventGenerator generator(std::move(scene), SensorParameters(), 1);
        if (const PixelKernels* kernels = pixelKernels(name))
            generator.setKernels(*kernels);
        return generate(generator, 0.05);
    };
    const std::vector<Event2D> plain = eventsWith("generic", street(1, 10e6));
    EXPECT_TRUE(plain == eventsWith("avx2", street(1, 10e6)));
    EXPECT_TRUE(plain == eventsWith("avx512", street(1, 10e6)));
}

/// Every table but the plain one that this machine has; whoever has none has nothing to compare.
std::vector<const PixelKernels*> fastTables()
{
    std::vector<const PixelKernels*> tables;
    for (const char* name : {"avx2", "avx512"}) {
        if (const PixelKernels* const fast = pixelKernels(name))
            tables.push_back(fast);
    }
    return tables;
}

const PixelKernels& plainTable()
{
    return *pixelKernels("generic");
}

template <typename Values>
void fill(Random& random, Values& values, int least, int most)
{
    for (auto& value : values)
        value = static_cast<typename Values::value_type>(least + random.below(most - least + 1));
}

constexpr int rounds = 200;

TEST(PixelKernels, AreKnownByTheirNames)
{
    EXPECT_STREQ(plainTable().name, "generic");
    for (const PixelKernels* const fast : fastTables())
        EXPECT_EQ(pixelKernels(fast->name), fast);
    EXPECT_EQ(pixelKernels("unknown"), nullptr);
}

TEST(PixelKernels, EveryTableMovesLevelsAlike)
{
    for (const PixelKernels* const fast : fastTables()) {
        Random random(11);
        for (int round = 0; round < rounds; ++round) {
            std::array<std::int16_t, segmentWidth> light, level, lower, upper;
            fill(random, light, darkestLevel, brightestLevel);
            fill(random, level, darkestLevel, brightestLevel);
            fill(random, lower, -9000, 2000);
            fill(random, upper, -2000, 9000);
            const Bandwidth bandwidth{static_cast<std::int16_t>(1 + random.below(32767)),
                                      static_cast<std::int16_t>(1 + random.below(32767)), 1};
            auto levelA = level, levelB = level, beforeA = level, beforeB = level;
            const auto firedA = plainTable().step(light.data(), levelA.data(), beforeA.data(), lower.data(),
                                                  upper.data(), bandwidth);
            const auto firedB = fast->step(light.data(), levelB.data(), beforeB.data(), lower.data(),
                                           upper.data(), bandwidth);
            ASSERT_EQ(firedA, firedB) << fast->name;
            ASSERT_EQ(levelA, levelB) << fast->name;
            ASSERT_EQ(beforeA, beforeB) << fast->name;
        }
    }
}

TEST(PixelKernels, EveryTableInterpolatesAlike)
{
    for (const PixelKernels* const fast : fastTables()) {
        Random random(12);
        for (int round = 0; round < rounds; ++round) {
            std::array<std::int16_t, 4 * (segmentWidth + 1)> image, opacity;
            fill(random, image, darkestLevel, brightestLevel);
            fill(random, opacity, 0, 32767);
            const auto taps = [&random](const std::int16_t* values) {
                return Taps{values + random.below(60), values + 2 * (segmentWidth + 1) + random.below(60),
                            static_cast<std::int16_t>(random.below(32768)),
                            static_cast<std::int16_t>(random.below(32768)),
                            static_cast<std::int16_t>(random.below(32768))};
            };
            const Taps shades = taps(image.data());
            const Taps cover = taps(opacity.data());
            std::array<std::int16_t, segmentWidth> outA;
            fill(random, outA, darkestLevel, brightestLevel);
            auto outB = outA;
            plainTable().blend(outA.data(), shades, cover);
            fast->blend(outB.data(), shades, cover);
            ASSERT_EQ(outA, outB) << fast->name;
            plainTable().sample(outA.data(), shades);
            fast->sample(outB.data(), shades);
            ASSERT_EQ(outA, outB) << fast->name;
        }
    }
}

TEST(PixelKernels, EveryTableTurnsAlike)
{
    constexpr int ringBits = 6;
    constexpr int ringLength = (1 << ringBits) + 1;
    for (const PixelKernels* const fast : fastTables()) {
        Random random(13);
        for (int round = 0; round < rounds; ++round) {
            std::array<std::int16_t, 3 * ringLength> rings;
            fill(random, rings, darkestLevel, brightestLevel);
            std::array<std::uint32_t, segmentWidth> offset;
            std::array<std::uint16_t, segmentWidth> angle;
            fill(random, offset, 0, 2);
            for (std::uint32_t& value : offset)
                value *= ringLength;
            fill(random, angle, 0, 65535);
            const auto turned = static_cast<std::uint32_t>(random.below(65537));
            std::array<std::int16_t, segmentWidth> outA{}, outB{};
            plainTable().turn(outA.data(), rings.data(), offset.data(), angle.data(), turned, ringBits);
            fast->turn(outB.data(), rings.data(), offset.data(), angle.data(), turned, ringBits);
            ASSERT_EQ(outA, outB) << fast->name;
        }
    }
}

/// The most that the light of a segment which is said to be at rest changes within a frame, and the most that
/// the end of a frame differs from the start of the next, over some frames of a scene.
std::pair<int, int> unrest(Scene& scene)
{
    std::vector<std::uint8_t> steps(static_cast<std::size_t>(scene.segments()));
    std::vector<std::int16_t> ends(static_cast<std::size_t>(scene.width() * scene.height()));
    int atRest = 0;
    int between = 0;
    for (int frame = 0; frame < 40; ++frame) {
        // Some frames follow each other, some are far apart.
        const std::uint64_t start = static_cast<std::uint64_t>(frame / 2) * 331000
            + static_cast<std::uint64_t>(frame % 2) * EventGenerator::stepUs;
        scene.beginFrame(start, EventGenerator::stepUs);
        for (int row = frame / 2 % 3; row < scene.height(); row += 3) {
            scene.beginRow(row, steps.data());
            for (int segment = 0; segment < scene.segments(); ++segment) {
                std::int16_t before[segmentWidth];
                std::int16_t after[segmentWidth];
                scene.sample(segment, 0, before);
                scene.sample(segment, Scene::framePoints, after);
                std::int16_t* const kept = ends.data() + row * scene.width() + segment * segmentWidth;
                for (int i = 0; i < segmentWidth; ++i) {
                    if (steps[static_cast<std::size_t>(segment)] == 0)
                        atRest = std::max(atRest, std::abs(after[i] - before[i]));
                    if (frame % 2 == 1)
                        between = std::max(between, std::abs(before[i] - kept[i]));
                }
                std::copy_n(after, segmentWidth, kept);
            }
        }
    }
    return {atRest, between};
}

TEST(SimulatedScenes, WhatIsSaidToBeAtRestHardlyChangesAndFramesJoin)
{
    for (auto* const make : {&street, &turntable}) {
        const std::unique_ptr<Scene> scene = make(1, 1.5e6);
        const auto [atRest, between] = unrest(*scene);
        // A sixth of the usual threshold.
        EXPECT_LE(atRest, 85);
        EXPECT_LE(between, 20);
    }
}

TEST(SimulatedScenes, ALampSwingsAHundredTimesASecondAndRestsWhileItsTimeDoes)
{
    LampLayer lamp({160.0, 72.0}, 15.0, 1280);
    std::vector<std::uint8_t> bits(20);
    const auto coverAt = [&](double before, double after) {
        lamp.glow(before, after);
        EXPECT_TRUE(lamp.beginRow(72));
        lamp.cover(bits.data(), 20);
        EXPECT_EQ(std::count(bits.begin(), bits.end(), 0), 19);
        return bits[2];
    };
    EXPECT_EQ(coverAt(0.5, 0.5) & Cover::strong, 0);
    EXPECT_EQ(lamp.steps(), 1);
    EXPECT_NE(coverAt(0.0, 0.016) & Cover::strong, 0);
    EXPECT_EQ(lamp.steps(), Scene::framePoints);
    EXPECT_FALSE(lamp.beginRow(30));
    EXPECT_FALSE(lamp.beginRow(110));

    ASSERT_TRUE(lamp.beginRow(72));
    const auto lightAt = [&lamp](double seconds, int pixel) {
        std::array<std::int16_t, segmentWidth> light{};
        lamp.glow(seconds, seconds);
        lamp.draw(2, 0, false, light.data());
        return light[static_cast<std::size_t>(pixel)];
    };
    const int centre = 160 - 2 * segmentWidth;
    for (const double time : {0.0, 0.12, 3600.0}) {
        EXPECT_NEAR(lightAt(time, centre), lightAt(time + 0.01, centre), 2);
        EXPECT_GT(lightAt(time + 0.0025, centre), lightAt(time + 0.0075, centre) + logUnits / 4);
        EXPECT_EQ(lightAt(time + 0.0025, 5), 0) << "beside it";
    }
}

TEST(SimulatedScenes, MostOfTheTurntablesBenchIsAtRest)
{
    TurntableScene scene(1, 1.5e6);
    std::vector<std::uint8_t> steps(20);
    scene.beginFrame(0, EventGenerator::stepUs);
    int resting = 0;
    for (int row = 0; row < 720; ++row) {
        scene.beginRow(row, steps.data());
        resting += static_cast<int>(std::count(steps.begin(), steps.end(), 0));
    }
    EXPECT_GT(resting, 20 * 720 / 2);
    EXPECT_LT(resting, 20 * 720 * 3 / 4);
}

} // namespace
