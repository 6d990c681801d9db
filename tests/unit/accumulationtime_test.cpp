#include "settings/accumulationtime.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

TEST(AccumulationTime, IsReadInMillisecondsAndMicroseconds)
{
    EXPECT_EQ(parseAccumulationTime(u"33.33ms"_s), 33330U);
    EXPECT_EQ(parseAccumulationTime(u"100ms"_s), 100000U);
    EXPECT_EQ(parseAccumulationTime(u"0.5ms"_s), 500U);
    EXPECT_EQ(parseAccumulationTime(u"250us"_s), 250U);
}

TEST(AccumulationTime, LosesFractionsOfAMicrosecond)
{
    EXPECT_EQ(parseAccumulationTime(u"1.9us"_s), 1U);
    EXPECT_EQ(parseAccumulationTime(u"0.9us"_s), 0U);
    EXPECT_EQ(parseAccumulationTime(u"0.0019ms"_s), 1U);
}

TEST(AccumulationTime, IsCountedInSinglePrecision)
{
    // 999.9999 ms lie nearest to 999.99988 in single precision, and 999999.88 nearest to 999999.875.
    EXPECT_EQ(parseAccumulationTime(u"999.9999ms"_s), 999999U);
    // In double precision it would be 1000000 us.
    EXPECT_EQ(parseAccumulationTime(u"16777217us"_s), 16777216U);
}

TEST(AccumulationTime, TakesItsUnitInAnyCase)
{
    EXPECT_EQ(parseAccumulationTime(u"10MS"_s), 10000U);
    EXPECT_EQ(parseAccumulationTime(u"10Ms"_s), 10000U);
    EXPECT_EQ(parseAccumulationTime(u"10uS"_s), 10U);
    EXPECT_TRUE(hasTimeUnit(u"10MS"_s));
    EXPECT_TRUE(hasTimeUnit(u"US"_s));
}

TEST(AccumulationTime, IsNothingWithoutAUnit)
{
    EXPECT_EQ(parseAccumulationTime(u"50"_s), 0U);
    EXPECT_EQ(parseAccumulationTime(u"50s"_s), 0U);
    EXPECT_EQ(parseAccumulationTime(QString()), 0U);
    EXPECT_FALSE(hasTimeUnit(u"50"_s));
    EXPECT_FALSE(hasTimeUnit(u"s"_s));
    EXPECT_FALSE(hasTimeUnit(QString()));
}

TEST(AccumulationTime, IsNothingForWhatIsNoPositiveNumber)
{
    for (const QString& text :
         {u"ms"_s, u"us"_s, u"abcms"_s, u"0ms"_s, u"-5ms"_s, u"-5us"_s, u"nanms"_s, u"1,5ms"_s})
        EXPECT_EQ(parseAccumulationTime(text), 0U) << text.toStdString();
}

TEST(AccumulationTime, NumbersTooLargeToHoldAreAboveTheLimit)
{
    EXPECT_FALSE(isAccumulationTime(parseAccumulationTime(u"1e30ms"_s)));
    EXPECT_FALSE(isAccumulationTime(parseAccumulationTime(u"infus"_s)));
    EXPECT_FALSE(isAccumulationTime(parseAccumulationTime(u"18446744073709551616us"_s)));
}

TEST(AccumulationTime, IsAboveNothingAndAtMostASecond)
{
    EXPECT_FALSE(isAccumulationTime(0));
    EXPECT_TRUE(isAccumulationTime(1));
    EXPECT_TRUE(isAccumulationTime(1'000'000));
    EXPECT_FALSE(isAccumulationTime(1'000'001));
    EXPECT_TRUE(isAccumulationTime(parseAccumulationTime(u"1000ms"_s)));
    EXPECT_TRUE(isAccumulationTime(parseAccumulationTime(u"1000000us"_s)));
    EXPECT_FALSE(isAccumulationTime(parseAccumulationTime(u"2000ms"_s)));
}
