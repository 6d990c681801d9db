#include "camera/simulation/parametertool.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace korvane::simulation {

namespace {

int kindOf(const ToolParameter& parameter)
{
    constexpr BasicParameterInfo::Kind kinds[]
        = {BasicParameterInfo::Integer, BasicParameterInfo::Float, BasicParameterInfo::Boolean,
           BasicParameterInfo::Enumeration};
    return kinds[parameter.kind.index()];
}

void describe(const ToolParameter& parameter, BasicParameterInfo& out)
{
    out.name = parameter.name;
    out.description = QCoreApplication::translate("CameraTools", parameter.description).toStdString();
    out.kind = kindOf(parameter);
}

} // namespace

ParameterTool::ParameterTool(std::vector<ToolParameter> table, Apply hook, Refused becomes)
    : apply(std::move(hook)), refused(becomes)
{
    for (ToolParameter& parameter : table) {
        auto& value = values.values[parameter.name];
        if (const auto* integer = std::get_if<ToolParameter::Integer>(&parameter.kind))
            value = integer->value;
        else if (const auto* real = std::get_if<ToolParameter::Real>(&parameter.kind))
            value = real->value;
        else if (const auto* toggle = std::get_if<ToolParameter::Switch>(&parameter.kind))
            value = toggle->value;
        else
            value = std::get<ToolParameter::Choice>(parameter.kind).options.front();
        std::string name = parameter.name;
        parameters.emplace(std::move(name), std::move(parameter));
    }
}

template <typename Kind>
const Kind* ParameterTool::find(const std::string& name, BasicParameterInfo* out) const
{
    const auto found = parameters.find(name);
    if (found == parameters.end())
        return nullptr;
    const auto* const kind = std::get_if<Kind>(&found->second.kind);
    if (kind != nullptr && out != nullptr)
        describe(found->second, *out);
    return kind;
}

template <typename Value>
Value ParameterTool::current(const std::string& name) const
{
    const std::lock_guard lock(mutex);
    return std::get<Value>(values.values.at(name));
}

template <typename Value>
bool ParameterTool::set(const std::string& name, const Value& value)
{
    const std::lock_guard lock(mutex);
    ToolValues wanted = values;
    wanted.values.at(name) = value;
    if (apply && !apply(wanted))
        return false;
    values = std::move(wanted);
    return true;
}

template <typename Value>
bool ParameterTool::setNumber(const std::string& name, const Value& value)
{
    if (refused == Refused::Forgotten)
        return set(name, value);
    const std::lock_guard lock(mutex);
    waiting[name] = value;
    ToolValues wanted = values;
    for (const auto& [other, number] : waiting)
        wanted.values.at(other) = number;
    if (apply && !apply(wanted))
        return false;
    values = std::move(wanted);
    waiting.clear();
    return true;
}

void ParameterTool::getAllParameterInfo(std::map<std::string, BasicParameterInfo>& out)
{
    out.clear();
    for (const auto& [name, parameter] : parameters)
        describe(parameter, out[name]);
}

bool ParameterTool::getEnumParameterInfo(std::string name, EnumParameterInfo& out)
{
    const auto* const choice = find<ToolParameter::Choice>(name, &out);
    if (choice == nullptr)
        return false;
    out.options = choice->options;
    return true;
}

bool ParameterTool::getBoolParameterInfo(std::string name, BoolParameterInfo& out)
{
    if (find<ToolParameter::Switch>(name, &out) == nullptr)
        return false;
    out.value = current<bool>(name);
    return true;
}

bool ParameterTool::getFloatParameterInfo(std::string name, FloatParameterInfo& out)
{
    const auto* const real = find<ToolParameter::Real>(name, &out);
    if (real == nullptr)
        return false;
    out.minimum = real->minimum;
    out.maximum = real->maximum;
    out.value = current<float>(name);
    out.unit = parameters.at(name).unit;
    return true;
}

bool ParameterTool::getIntParameterInfo(std::string name, IntParameterInfo& out)
{
    const auto* const integer = find<ToolParameter::Integer>(name, &out);
    if (integer == nullptr)
        return false;
    out.minimum = integer->minimum;
    out.maximum = integer->maximum;
    out.value = current<int>(name);
    out.unit = parameters.at(name).unit;
    return true;
}

bool ParameterTool::getBoolParameter(std::string name, bool& value)
{
    if (find<ToolParameter::Switch>(name, nullptr) == nullptr)
        return false;
    value = current<bool>(name);
    return true;
}

bool ParameterTool::getIntParameter(std::string name, int& value)
{
    if (find<ToolParameter::Integer>(name, nullptr) == nullptr)
        return false;
    value = current<int>(name);
    return true;
}

bool ParameterTool::setEnumParameter(std::string name, const std::string& value)
{
    const auto* const choice = find<ToolParameter::Choice>(name, nullptr);
    if (choice == nullptr
        || std::find(choice->options.begin(), choice->options.end(), value) == choice->options.end())
        return false;
    return set(name, value);
}

bool ParameterTool::setBoolParameter(std::string name, const bool& value)
{
    return find<ToolParameter::Switch>(name, nullptr) != nullptr && set(name, value);
}

bool ParameterTool::setFloatParameter(std::string name, const float& value)
{
    const auto* const real = find<ToolParameter::Real>(name, nullptr);
    // What is not a number lies in no range.
    return real != nullptr && value >= real->minimum && value <= real->maximum && setNumber(name, value);
}

bool ParameterTool::setIntParameter(std::string name, const int& value)
{
    const auto* const integer = find<ToolParameter::Integer>(name, nullptr);
    return integer != nullptr && value >= integer->minimum && value <= integer->maximum
        && setNumber(name, value);
}

} // namespace korvane::simulation
