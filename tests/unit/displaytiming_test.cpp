#include "display/displaytiming.h"

#include <gtest/gtest.h>

TEST(DisplayTiming, BeginsWith33PicturesASecondOfThirtyMilliseconds)
{
    const DisplayTiming timing;
    EXPECT_EQ(timing.frameRate, 33);
    EXPECT_EQ(timing.frameStep, 30303u);
    EXPECT_EQ(timing.accumulationTime, 33333u);
}

TEST(DisplayTiming, ThePeriodIsAMillionMicrosecondsThroughTheRate)
{
    DisplayTiming timing;
    ASSERT_TRUE(timing.setFrameRate(1));
    EXPECT_EQ(timing.frameRate, 1);
    EXPECT_EQ(timing.frameStep, 1'000'000u);
    ASSERT_TRUE(timing.setFrameRate(33));
    EXPECT_EQ(timing.frameStep, 30303u);
    ASSERT_TRUE(timing.setFrameRate(60));
    EXPECT_EQ(timing.frameStep, 16666u);
    ASSERT_TRUE(timing.setFrameRate(32767));
    EXPECT_EQ(timing.frameRate, 32767);
    EXPECT_EQ(timing.frameStep, 30u);
    EXPECT_EQ(timing.accumulationTime, 33333u);
}

TEST(DisplayTiming, RefusesARateThatIsNoneOrTooLarge)
{
    DisplayTiming timing;
    for (const int rate : {0, -1, -33, 32768, 65536 + 25}) {
        EXPECT_FALSE(timing.setFrameRate(rate)) << rate;
        EXPECT_EQ(timing.frameRate, 33) << rate;
        EXPECT_EQ(timing.frameStep, 30303u) << rate;
    }
}
