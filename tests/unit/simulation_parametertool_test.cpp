#include "camera/simulation/parametertool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace korvane;
using namespace korvane::simulation;

std::vector<ToolParameter> exampleTable()
{
    return {{"period", "How long one turn takes.", ToolParameter::Integer{-5, 300, 40}, "us"},
            {"enable", "Switches it on.", ToolParameter::Switch{}, ""},
            {"low", "The least frequency.", ToolParameter::Real{50.0F, 500.0F, 100.0F}, "Hz"},
            {"mode", "What it does.", ToolParameter::Choice{{"stc", "trail"}}, ""}};
}

/// A tool that notes what reaches its hook, which refuses periods of 13.
class ParameterToolTest : public testing::Test
{
protected:
    ToolValues applied;
    int calls = 0;
    ParameterTool tool{exampleTable(), [this](const ToolValues& wanted) {
                           ++calls;
                           if (wanted.integer("period") == 13)
                               return false;
                           applied = wanted;
                           return true;
                       }};
};

} // namespace

TEST_F(ParameterToolTest, TellsEachParameterWithItsKindRangeAndUnit)
{
    std::map<std::string, BasicParameterInfo> all{{"stale", {}}};
    tool.getAllParameterInfo(all);
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all.at("period").kind, 0);
    EXPECT_EQ(all.at("low").kind, 1);
    EXPECT_EQ(all.at("enable").kind, 2);
    EXPECT_EQ(all.at("mode").kind, 4);
    EXPECT_EQ(all.at("mode").name, "mode");
    EXPECT_EQ(all.at("mode").description, "What it does.");

    IntParameterInfo period;
    ASSERT_TRUE(tool.getIntParameterInfo("period", period));
    EXPECT_EQ(period.name, "period");
    EXPECT_EQ(period.kind, 0);
    EXPECT_EQ(period.minimum, -5);
    EXPECT_EQ(period.maximum, 300);
    EXPECT_EQ(period.value, 40);
    EXPECT_EQ(period.unit, "us");
    FloatParameterInfo low;
    ASSERT_TRUE(tool.getFloatParameterInfo("low", low));
    EXPECT_EQ(low.minimum, 50.0F);
    EXPECT_EQ(low.maximum, 500.0F);
    EXPECT_EQ(low.value, 100.0F);
    EXPECT_EQ(low.unit, "Hz");
    BoolParameterInfo enable;
    ASSERT_TRUE(tool.getBoolParameterInfo("enable", enable));
    EXPECT_FALSE(enable.value);
    EnumParameterInfo mode;
    ASSERT_TRUE(tool.getEnumParameterInfo("mode", mode));
    EXPECT_EQ(mode.options, (std::vector<std::string>{"stc", "trail"}));
}

TEST_F(ParameterToolTest, HandsOnWhatIsSetAndKeepsIt)
{
    EXPECT_TRUE(tool.setIntParameter("period", 300));
    EXPECT_TRUE(tool.setBoolParameter("enable", true));
    EXPECT_TRUE(tool.setFloatParameter("low", 120.0F));
    EXPECT_TRUE(tool.setEnumParameter("mode", "trail"));
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(applied.integer("period"), 300);
    EXPECT_TRUE(applied.isOn("enable"));
    EXPECT_EQ(applied.real("low"), 120.0F);
    EXPECT_EQ(applied.option("mode"), "trail");

    int period = 0;
    bool enable = false;
    FloatParameterInfo low;
    BoolParameterInfo enableInfo;
    EXPECT_TRUE(tool.getIntParameter("period", period));
    EXPECT_TRUE(tool.getBoolParameter("enable", enable));
    ASSERT_TRUE(tool.getFloatParameterInfo("low", low));
    ASSERT_TRUE(tool.getBoolParameterInfo("enable", enableInfo));
    EXPECT_EQ(period, 300);
    EXPECT_TRUE(enable);
    EXPECT_EQ(low.value, 120.0F);
    EXPECT_TRUE(enableInfo.value);
}

TEST_F(ParameterToolTest, RefusesUnknownNamesAndOtherTypes)
{
    EXPECT_FALSE(tool.setIntParameter("perio", 1));
    EXPECT_FALSE(tool.setIntParameter("Period", 1));
    EXPECT_FALSE(tool.setIntParameter("low", 100));
    EXPECT_FALSE(tool.setFloatParameter("period", 100.0F));
    EXPECT_FALSE(tool.setBoolParameter("period", true));
    EXPECT_FALSE(tool.setEnumParameter("enable", "stc"));
    EXPECT_EQ(calls, 0);

    int number = 7;
    bool state = true;
    IntParameterInfo integer;
    FloatParameterInfo real;
    BoolParameterInfo boolean;
    EnumParameterInfo choice;
    EXPECT_FALSE(tool.getIntParameter("low", number));
    EXPECT_FALSE(tool.getIntParameter("", number));
    EXPECT_FALSE(tool.getBoolParameter("mode", state));
    EXPECT_FALSE(tool.getIntParameterInfo("enable", integer));
    EXPECT_FALSE(tool.getFloatParameterInfo("period", real));
    EXPECT_FALSE(tool.getBoolParameterInfo("nothing", boolean));
    EXPECT_FALSE(tool.getEnumParameterInfo("low", choice));
    EXPECT_EQ(number, 7);
    EXPECT_TRUE(state);
}

TEST_F(ParameterToolTest, RefusesWhatLiesOutsideTheRangeAndClampsNothing)
{
    EXPECT_FALSE(tool.setIntParameter("period", 301));
    EXPECT_FALSE(tool.setIntParameter("period", -6));
    EXPECT_FALSE(tool.setFloatParameter("low", 49.9F));
    EXPECT_FALSE(tool.setFloatParameter("low", 500.1F));
    EXPECT_FALSE(tool.setFloatParameter("low", std::numeric_limits<float>::quiet_NaN()));
    EXPECT_FALSE(tool.setEnumParameter("mode", "Trail"));
    EXPECT_FALSE(tool.setEnumParameter("mode", ""));
    EXPECT_EQ(calls, 0);
    int period = 0;
    EXPECT_TRUE(tool.getIntParameter("period", period));
    EXPECT_EQ(period, 40);
    EXPECT_TRUE(tool.setIntParameter("period", -5));
    EXPECT_TRUE(tool.setFloatParameter("low", 50.0F));
    EXPECT_TRUE(tool.setFloatParameter("low", 500.0F));
}

TEST_F(ParameterToolTest, KeepsWhatWasSetWhenTheHookRefuses)
{
    ASSERT_TRUE(tool.setIntParameter("period", 12));
    EXPECT_FALSE(tool.setIntParameter("period", 13));
    EXPECT_EQ(calls, 2);
    int period = 0;
    EXPECT_TRUE(tool.getIntParameter("period", period));
    EXPECT_EQ(period, 12);
    EXPECT_EQ(applied.integer("period"), 12);
    EXPECT_TRUE(tool.setBoolParameter("enable", true));
    EXPECT_EQ(applied.integer("period"), 12);
}

TEST_F(ParameterToolTest, TakesTheNameThatItsRowReportsBack)
{
    // Rows report lower case with underscores, whatever they were called; the table has just that form.
    std::map<std::string, BasicParameterInfo> all;
    tool.getAllParameterInfo(all);
    for (const auto& [name, parameter] : all)
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos);
}

TEST(ParameterTool, WorksWithoutAHook)
{
    ParameterTool tool(exampleTable(), {});
    EXPECT_TRUE(tool.setIntParameter("period", 12));
    int period = 0;
    EXPECT_TRUE(tool.getIntParameter("period", period));
    EXPECT_EQ(period, 12);
}

TEST(ParameterTool, IsSetByOneThreadWhileAnotherReads)
{
    std::atomic<int> newest{0};
    ParameterTool tool(exampleTable(), [&newest](const ToolValues& wanted) {
        newest = wanted.integer("period");
        return true;
    });
    std::thread setter([&tool] {
        for (int i = 0; i <= 300; ++i)
            EXPECT_TRUE(tool.setIntParameter("period", i));
    });
    int last = 0;
    while (last < 300) {
        IntParameterInfo info;
        ASSERT_TRUE(tool.getIntParameterInfo("period", info));
        // 40 is what the tool starts with.
        ASSERT_TRUE(info.value >= last || last == 40);
        last = info.value;
    }
    setter.join();
    EXPECT_EQ(newest, 300);
}
