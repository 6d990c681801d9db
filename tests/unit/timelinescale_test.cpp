#include "playback/timelinescale.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <utility>

namespace {

constexpr std::uint64_t limit = std::uint64_t(1) << 31;
constexpr int largest = std::numeric_limits<int>::max();

} // namespace

TEST(TimelineScale, IsExactBelowTheLimit)
{
    for (const auto& [start, end] : {std::pair<std::uint64_t, std::uint64_t>{0, 10'500'000},
                                     {123, 123},
                                     {1'000'000'000, 2'000'000'000},
                                     {0, limit - 1}}) {
        const TimelineScale scale(start, end);
        for (const std::uint64_t time : {start, start + (end - start) / 3, start + (end - start) / 2, end}) {
            EXPECT_EQ(scale.toTimeline(time), static_cast<int>(time));
            EXPECT_EQ(scale.fromTimeline(static_cast<int>(time)), time);
        }
    }
}

TEST(TimelineScale, TheLargestExactEndIsOneBelowTheLimit)
{
    const TimelineScale scale(limit - 3, limit - 1);
    EXPECT_EQ(scale.toTimeline(limit - 1), largest);
    EXPECT_EQ(scale.fromTimeline(largest), limit - 1);
    EXPECT_EQ(scale.fromTimeline(largest - 1), limit - 2);
}

TEST(TimelineScale, AboveTheLimitItDividesByTheSmallestPowerOfTwoThatFits)
{
    EXPECT_EQ(TimelineScale(0, limit).toTimeline(limit), 1 << 30);
    EXPECT_EQ(TimelineScale(0, limit).toTimeline(1000), 500);
    EXPECT_EQ(TimelineScale(0, 2 * limit - 1).toTimeline(2 * limit - 1), largest);
    EXPECT_EQ(TimelineScale(0, 2 * limit).toTimeline(2 * limit), 1 << 30);
    EXPECT_EQ(TimelineScale(0, 2 * limit).toTimeline(1000), 250);
    EXPECT_EQ(TimelineScale(0, 2 * limit).fromTimeline(250), 1000u);
}

TEST(TimelineScale, AboveTheLimitBothEndsComeBackExactly)
{
    std::mt19937_64 random(5);
    for (int round = 0; round < 2000; ++round) {
        const std::uint64_t end = limit + (random() >> (random() % 31 + 2)) / 2;
        const std::uint64_t start = random() % 3 == 0 ? 0 : random() % (end / 2);
        const TimelineScale scale(start, end);
        ASSERT_GE(scale.toTimeline(start), 0);
        ASSERT_LT(scale.toTimeline(start), scale.toTimeline(end)) << start << " to " << end;
        ASSERT_EQ(scale.fromTimeline(scale.toTimeline(start)), start) << start << " to " << end;
        ASSERT_EQ(scale.fromTimeline(scale.toTimeline(end)), end) << start << " to " << end;
    }
}

TEST(TimelineScale, NeverStepsBackAndNeverLeavesTheRecording)
{
    std::mt19937_64 random(6);
    for (int round = 0; round < 200; ++round) {
        const std::uint64_t end = limit + random() % (std::uint64_t(1) << (20 + random() % 40));
        const std::uint64_t start = random() % end;
        const TimelineScale scale(start, end);
        int lastValue = scale.toTimeline(start);
        std::uint64_t time = start;
        while (time < end) {
            time += std::min(end - time, 1 + random() % ((end - start) / 50 + 1));
            const int value = scale.toTimeline(time);
            ASSERT_GE(value, lastValue);
            ASSERT_LE(value, scale.toTimeline(end));
            lastValue = value;
            const std::uint64_t back = scale.fromTimeline(value);
            ASSERT_GE(back, start);
            ASSERT_LE(back, end);
        }
        std::uint64_t last = 0;
        for (std::int64_t value = -5; value <= largest;
             value += 1 + static_cast<std::int64_t>(random() % 20'000'000)) {
            const std::uint64_t back = scale.fromTimeline(static_cast<int>(value));
            ASSERT_GE(back, last);
            ASSERT_GE(back, start);
            ASSERT_LE(back, end);
            last = back;
        }
    }
}

TEST(TimelineScale, TimesInBetweenAreWrongByLessThanOneStep)
{
    const std::uint64_t end = 3 * limit;
    const TimelineScale scale(0, end);
    for (std::uint64_t time = 0; time < end; time += 123'456'789) {
        const std::uint64_t back = scale.fromTimeline(scale.toTimeline(time));
        EXPECT_LE(back, time);
        EXPECT_LT(time - back, 4u);
    }
}

TEST(TimelineScale, AnEmptyRecordingLiesAtZero)
{
    const TimelineScale scale;
    EXPECT_EQ(scale.toTimeline(0), 0);
    EXPECT_EQ(scale.fromTimeline(0), 0u);
    EXPECT_EQ(scale.fromTimeline(-1), 0u) << "there is no time before the first";
}

TEST(TimelineScale, ATimeFarBeyondAnyRecordingIsTheLargestValue)
{
    const TimelineScale scale(0, 1000);
    EXPECT_EQ(scale.toTimeline(std::numeric_limits<std::uint64_t>::max()), largest);
}
