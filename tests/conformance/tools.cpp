#include "tests/conformance/tools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>

namespace conformance {

namespace {

using korvane::BasicParameterInfo;
using korvane::CameraTool;

void checkDescription(const std::string& key, const BasicParameterInfo& info)
{
    EXPECT_EQ(key, info.name);
    EXPECT_FALSE(info.name.empty());
    EXPECT_EQ(info.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos)
        << "a name is lower case with underscores";
    EXPECT_FALSE(info.description.empty()) << "the description is the tooltip";
}

/// Answers false to every way of asking that is not for this kind.
void refusesOtherKinds(CameraTool& tool, const std::string& name, int kind)
{
    korvane::IntParameterInfo integer;
    korvane::FloatParameterInfo real;
    korvane::BoolParameterInfo boolean;
    korvane::EnumParameterInfo choice;
    int number = 0;
    bool flag = false;
    if (kind != BasicParameterInfo::Integer) {
        EXPECT_FALSE(tool.getIntParameterInfo(name, integer));
        EXPECT_FALSE(tool.getIntParameter(name, number));
        EXPECT_FALSE(tool.setIntParameter(name, 0));
    }
    if (kind != BasicParameterInfo::Float) {
        EXPECT_FALSE(tool.getFloatParameterInfo(name, real));
        EXPECT_FALSE(tool.setFloatParameter(name, 0.0F));
    }
    if (kind != BasicParameterInfo::Boolean) {
        EXPECT_FALSE(tool.getBoolParameterInfo(name, boolean));
        EXPECT_FALSE(tool.getBoolParameter(name, flag));
        EXPECT_FALSE(tool.setBoolParameter(name, false));
    }
    if (kind != BasicParameterInfo::Enumeration) {
        EXPECT_FALSE(tool.getEnumParameterInfo(name, choice));
        EXPECT_FALSE(tool.setEnumParameter(name, ""));
    }
}

/// Whether a value inside its range may be refused: where the parameters make something together, as the
/// coordinates of a window do, or the ends of a band.
bool limitEachOther(korvane::ToolType type)
{
    return type == korvane::ToolType::Roi || type == korvane::ToolType::AntiFlicker;
}

void checkInteger(CameraTool& tool, const std::string& name, bool dependent)
{
    korvane::IntParameterInfo info;
    ASSERT_TRUE(tool.getIntParameterInfo(name, info));
    EXPECT_LE(info.minimum, info.value);
    EXPECT_LE(info.value, info.maximum);
    EXPECT_LE(info.unit.size(), 6U);
    const auto reads = [&tool, &name](int wanted) {
        int found = 0;
        EXPECT_TRUE(tool.getIntParameter(name, found));
        EXPECT_EQ(found, wanted);
    };
    reads(info.value);
    int last = info.value;
    for (const int value : {info.minimum, info.maximum, info.value}) {
        if (tool.setIntParameter(name, value))
            last = value;
        else
            EXPECT_TRUE(dependent && value != info.value) << value;
        reads(last);
    }
    if (info.maximum < std::numeric_limits<int>::max()) {
        EXPECT_FALSE(tool.setIntParameter(name, info.maximum + 1)) << "nothing is clamped";
    }
    if (info.minimum > std::numeric_limits<int>::min()) {
        EXPECT_FALSE(tool.setIntParameter(name, info.minimum - 1)) << "nothing is clamped";
    }
    reads(info.value);
}

void checkFloat(CameraTool& tool, const std::string& name, bool dependent)
{
    korvane::FloatParameterInfo info;
    ASSERT_TRUE(tool.getFloatParameterInfo(name, info));
    EXPECT_LE(info.minimum, info.value);
    EXPECT_LE(info.value, info.maximum);
    EXPECT_LE(info.unit.size(), 6U);
    const auto reads = [&tool, &name](float wanted) {
        korvane::FloatParameterInfo now;
        EXPECT_TRUE(tool.getFloatParameterInfo(name, now));
        EXPECT_FLOAT_EQ(now.value, wanted);
    };
    float last = info.value;
    for (const float value : {info.minimum, info.maximum, info.value}) {
        if (tool.setFloatParameter(name, value))
            last = value;
        else
            EXPECT_TRUE(dependent && value != info.value) << value;
        reads(last);
    }
    EXPECT_FALSE(tool.setFloatParameter(name, info.maximum + std::fabs(info.maximum) + 1.0F));
    EXPECT_FALSE(tool.setFloatParameter(name, info.minimum - std::fabs(info.minimum) - 1.0F));
    EXPECT_FALSE(tool.setFloatParameter(name, std::numeric_limits<float>::quiet_NaN()));
    reads(info.value);
}

void checkBoolean(CameraTool& tool, const std::string& name)
{
    korvane::BoolParameterInfo info;
    ASSERT_TRUE(tool.getBoolParameterInfo(name, info));
    for (const bool value : {!info.value, info.value}) {
        EXPECT_TRUE(tool.setBoolParameter(name, value));
        bool found = !value;
        EXPECT_TRUE(tool.getBoolParameter(name, found));
        EXPECT_EQ(found, value);
    }
}

void checkEnumeration(CameraTool& tool, const std::string& name)
{
    korvane::EnumParameterInfo info;
    ASSERT_TRUE(tool.getEnumParameterInfo(name, info));
    ASSERT_FALSE(info.options.empty());
    for (const std::string& option : info.options) {
        EXPECT_TRUE(tool.setEnumParameter(name, option)) << option;
    }
    EXPECT_FALSE(tool.setEnumParameter(name, "no such option"));
    EXPECT_TRUE(tool.setEnumParameter(name, info.options.front()));
}

} // namespace

void checkTool(CameraTool& tool, korvane::ToolType type)
{
    std::map<std::string, BasicParameterInfo> all;
    all["left_over"] = {};
    tool.getAllParameterInfo(all);
    EXPECT_EQ(all.count("left_over"), 0U) << "the map's content is replaced";
    EXPECT_FALSE(all.empty()) << "a group without parameters is no group";
    for (const auto& [key, info] : all) {
        SCOPED_TRACE("parameter " + key);
        checkDescription(key, info);
        refusesOtherKinds(tool, key, info.kind);
        switch (info.kind) {
        case BasicParameterInfo::Integer:
            checkInteger(tool, key, limitEachOther(type));
            break;
        case BasicParameterInfo::Float:
            checkFloat(tool, key, limitEachOther(type));
            break;
        case BasicParameterInfo::Boolean:
            checkBoolean(tool, key);
            break;
        case BasicParameterInfo::Enumeration:
            checkEnumeration(tool, key);
            break;
        default:
            ADD_FAILURE() << "no kind has the number " << info.kind;
        }
    }
    refusesOtherKinds(tool, "no_such_parameter", -1);
}

} // namespace conformance
