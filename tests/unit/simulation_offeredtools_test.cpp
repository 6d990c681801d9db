#include "camera/simulation/simulatedbackend.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace {

using namespace korvane;
using namespace korvane::simulation;

/// Every tool of every camera that is offered, under "<serial> <type>".
std::map<std::string, std::shared_ptr<CameraTool>> offeredTools()
{
    SimulatedBackend backend;
    std::map<std::string, std::shared_ptr<CameraTool>> tools;
    const auto gather = [&tools](const std::string& serial, const auto& camera) {
        for (int type = 0; type <= 7; ++type) {
            if (const auto tool = camera->getTool(static_cast<ToolType>(type)))
                tools[serial + ' ' + std::to_string(type)] = tool;
        }
    };
    for (const CameraDescription& found : backend.cameraDescriptions()) {
        if (found.product == "Pellix")
            gather(found.serial, backend.openFusionCamera(found.serial));
        else
            gather(found.serial, backend.openCamera(found.serial));
    }
    return tools;
}

/// The kinds of parameter that the panel shows for a type of tool.
std::set<int> shownKinds(int type)
{
    using Info = BasicParameterInfo;
    switch (static_cast<ToolType>(type)) {
    case ToolType::Biases:
        return {Info::Integer};
    case ToolType::TriggerIn:
        return {Info::Boolean};
    case ToolType::AntiFlicker:
        return {Info::Integer, Info::Float, Info::Boolean, Info::Enumeration};
    case ToolType::EventTrailFilter:
        return {Info::Integer, Info::Boolean, Info::Enumeration};
    case ToolType::EventRateControl:
    case ToolType::Roi:
    case ToolType::Aps:
        return {Info::Integer, Info::Boolean};
    }
    return {};
}

bool isLowerCase(const std::string& name)
{
    return !name.empty()
        && name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") == std::string::npos;
}

} // namespace

TEST(OfferedTools, AreThoseOfEveryCameraWithParametersThatTheirPanelShowsWhereTheyStand)
{
    const auto tools = offeredTools();
    for (const char* serial : {"HAL-000001", "HAL-000002", "QRT-000001", "PEL-000001"}) {
        for (const char* type : {" 0", " 1", " 3", " 4", " 5", " 6"})
            EXPECT_TRUE(tools.contains(serial + std::string(type))) << serial << type;
        EXPECT_FALSE(tools.contains(serial + std::string(" 2")));
        EXPECT_EQ(tools.contains(serial + std::string(" 7")), serial == std::string("PEL-000001"));
    }
    for (const auto& [label, tool] : tools) {
        const int type = label.back() - '0';
        std::map<std::string, BasicParameterInfo> all;
        tool->getAllParameterInfo(all);
        EXPECT_FALSE(all.empty()) << label;
        for (const auto& [name, parameter] : all) {
            SCOPED_TRACE(label + ' ' + name);
            EXPECT_EQ(parameter.name, name);
            EXPECT_TRUE(isLowerCase(name));
            EXPECT_TRUE(shownKinds(type).contains(parameter.kind));
            EXPECT_GT(parameter.description.size(), 10U);
            IntParameterInfo integer;
            FloatParameterInfo real;
            BoolParameterInfo boolean;
            EnumParameterInfo choice;
            if (tool->getIntParameterInfo(name, integer)) {
                EXPECT_LE(integer.unit.size(), 6U);
                EXPECT_LT(integer.minimum, integer.maximum);
                EXPECT_GE(integer.value, integer.minimum);
                EXPECT_LE(integer.value, integer.maximum);
                if (type == 0) {
                    EXPECT_EQ(integer.value, 0);
                }
            } else if (tool->getFloatParameterInfo(name, real)) {
                EXPECT_LE(real.unit.size(), 6U);
                EXPECT_LT(real.minimum, real.maximum);
                // The panel shows whole numbers.
                EXPECT_EQ(real.value, std::trunc(real.value));
                EXPECT_GE(real.value, real.minimum);
                EXPECT_LE(real.value, real.maximum);
            } else if (tool->getBoolParameterInfo(name, boolean)) {
                EXPECT_FALSE(boolean.value);
            } else {
                ASSERT_TRUE(tool->getEnumParameterInfo(name, choice));
                EXPECT_GE(choice.options.size(), 2U);
            }
        }
    }
}
