#include "settings/parameternames.h"

#include <gtest/gtest.h>

TEST(ParameterNames, AreShownWithCapitalsAndSpaces)
{
    EXPECT_EQ(toDisplayName("bias_diff_on"), "Bias Diff On");
    EXPECT_EQ(toDisplayName("exposure_time"), "Exposure Time");
    EXPECT_EQ(toDisplayName("ROI_x0"), "ROI X0");
    EXPECT_EQ(toDisplayName("x"), "X");
    EXPECT_EQ(toDisplayName(""), "");
}

TEST(ParameterNames, KeepLettersInsideAWordAndCountWhitespaceAsItsEnd)
{
    EXPECT_EQ(toDisplayName("autoGain mode"), "AutoGain Mode");
    EXPECT_EQ(toDisplayName("low\tpass"), "Low\tPass");
    EXPECT_EQ(toDisplayName("__a"), "  A");
    EXPECT_EQ(toDisplayName("b-c"), "B-c");
}

TEST(ParameterNames, ADigitLeavesTheCapitalToTheLetterAfterIt)
{
    EXPECT_EQ(toDisplayName("2nd_order"), "2Nd Order");
    EXPECT_EQ(toDisplayName("gain_10x"), "Gain 10X");
}

TEST(ParameterNames, BytesOutsideAsciiStayAsTheyAre)
{
    EXPECT_EQ(toDisplayName("\xC3\xA9tat"), "\xC3\xA9Tat");
    EXPECT_EQ(toParameterKey("\xC3\x89tat"), "\xC3\x89tat");
}

TEST(ParameterNames, AreReportedInLowerCaseWithUnderscores)
{
    EXPECT_EQ(toParameterKey("Bias Diff On"), "bias_diff_on");
    EXPECT_EQ(toParameterKey("Exposure Time"), "exposure_time");
    EXPECT_EQ(toParameterKey("ROI X0"), "roi_x0");
    EXPECT_EQ(toParameterKey(""), "");
}
