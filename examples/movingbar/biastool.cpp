#include "examples/movingbar/biastool.h"

namespace movingbar {

namespace {

constexpr const char* diffOnName = "bias_diff_on";
constexpr int minimum = -50;
constexpr int maximum = 50;

} // namespace

void BiasTool::getAllParameterInfo(std::map<std::string, korvane::BasicParameterInfo>& out)
{
    out.clear();
    out.emplace(diffOnName, describe());
}

bool BiasTool::getIntParameterInfo(std::string name, korvane::IntParameterInfo& out)
{
    if (name != diffOnName)
        return false;
    out = describe();
    return true;
}

bool BiasTool::getIntParameter(std::string name, int& out)
{
    if (name != diffOnName)
        return false;
    out = value;
    return true;
}

bool BiasTool::setIntParameter(std::string name, const int& wanted)
{
    if (name != diffOnName || wanted < minimum || wanted > maximum)
        return false;
    value = wanted;
    return true;
}

korvane::IntParameterInfo BiasTool::describe() const
{
    korvane::IntParameterInfo info;
    info.name = diffOnName;
    info.description = "Contrast that makes an event: higher values give fewer events.";
    info.kind = korvane::BasicParameterInfo::Integer;
    info.minimum = minimum;
    info.maximum = maximum;
    info.value = value;
    return info;
}

} // namespace movingbar
