#include "widgets/timestamptotext.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

TEST(TimestampToText, ZeroFillsEveryPart)
{
    EXPECT_EQ(timestampToText(0), QStringLiteral("00:00:000000"));
    EXPECT_EQ(timestampToText(1), QStringLiteral("00:00:000001"));
    EXPECT_EQ(timestampToText(75'000'250), QStringLiteral("01:15:000250"));
    EXPECT_EQ(timestampToText(75'123'456), QStringLiteral("01:15:123456"));
}

TEST(TimestampToText, CarriesSecondsAndMinutes)
{
    EXPECT_EQ(timestampToText(999'999), QStringLiteral("00:00:999999"));
    EXPECT_EQ(timestampToText(1'000'000), QStringLiteral("00:01:000000"));
    EXPECT_EQ(timestampToText(59'999'999), QStringLiteral("00:59:999999"));
    EXPECT_EQ(timestampToText(60'000'000), QStringLiteral("01:00:000000"));
}

TEST(TimestampToText, DoesNotWrapMinutesAtAnHour)
{
    EXPECT_EQ(timestampToText(3'600'000'000), QStringLiteral("60:00:000000"));
    EXPECT_EQ(timestampToText(6'000'000'001), QStringLiteral("100:00:000001"));
}

TEST(TimestampToText, HoldsTheLargestTime)
{
    EXPECT_EQ(timestampToText(std::numeric_limits<uint64_t>::max()),
              QStringLiteral("307445734561:49:551615"));
}
