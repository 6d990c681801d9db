#pragma once

#include "camera/driver/cameratool.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// A settings tool that tells what a test gave it and notes what is set as "<operation> <name> <value>". GUI
/// thread only.
class ScriptedTool : public korvane::CameraTool
{
public:
    void addInteger(const std::string& name, int minimum, int maximum, int value,
                    const std::string& unit = {})
    {
        korvane::IntParameterInfo info;
        describe(info, name, korvane::BasicParameterInfo::Integer);
        info.minimum = minimum;
        info.maximum = maximum;
        info.value = value;
        info.unit = unit;
        integers[name] = info;
    }
    void addFloat(const std::string& name, float minimum, float maximum, float value,
                  const std::string& unit = {})
    {
        korvane::FloatParameterInfo info;
        describe(info, name, korvane::BasicParameterInfo::Float);
        info.minimum = minimum;
        info.maximum = maximum;
        info.value = value;
        info.unit = unit;
        floats[name] = info;
    }
    void addBoolean(const std::string& name, bool value)
    {
        korvane::BoolParameterInfo info;
        describe(info, name, korvane::BasicParameterInfo::Boolean);
        info.value = value;
        booleans[name] = info;
    }
    void addEnumeration(const std::string& name, std::vector<std::string> options)
    {
        korvane::EnumParameterInfo info;
        describe(info, name, korvane::BasicParameterInfo::Enumeration);
        info.options = std::move(options);
        enumerations[name] = info;
    }
    /// A parameter of any kind that no typed query tells about.
    void addBare(const std::string& name, int kind)
    {
        korvane::BasicParameterInfo info;
        describe(info, name, kind);
    }

    void getAllParameterInfo(std::map<std::string, korvane::BasicParameterInfo>& out) override
    {
        out = table;
    }
    bool getEnumParameterInfo(std::string name, korvane::EnumParameterInfo& out) override
    {
        return tell(enumerations, name, out);
    }
    bool getBoolParameterInfo(std::string name, korvane::BoolParameterInfo& out) override
    {
        return tell(booleans, name, out);
    }
    bool getFloatParameterInfo(std::string name, korvane::FloatParameterInfo& out) override
    {
        return tell(floats, name, out);
    }
    bool getIntParameterInfo(std::string name, korvane::IntParameterInfo& out) override
    {
        return tell(integers, name, out);
    }
    bool getBoolParameter(std::string name, bool& value) override
    {
        return tell(currentBooleans, name, value);
    }
    bool getIntParameter(std::string name, int& value) override { return tell(currentIntegers, name, value); }
    bool setEnumParameter(std::string name, const std::string& value) override
    {
        return note("enum " + name + ' ' + value);
    }
    bool setBoolParameter(std::string name, const bool& value) override
    {
        return note("bool " + name + (value ? " true" : " false"));
    }
    bool setFloatParameter(std::string name, const float& value) override
    {
        return note("float " + name + ' ' + std::to_string(value));
    }
    bool setIntParameter(std::string name, const int& value) override
    {
        return note("int " + name + ' ' + std::to_string(value));
    }

    /// What has been set since the last call.
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    bool accepts = true; ///< the answer to whatever is set
    std::map<std::string, int> currentIntegers;
    std::map<std::string, bool> currentBooleans;

private:
    void describe(korvane::BasicParameterInfo& info, const std::string& name, int kind)
    {
        info.name = name;
        info.description = "What " + name + " does.";
        info.kind = kind;
        table[name] = info;
    }
    template <typename Value>
    static bool tell(const std::map<std::string, Value>& from, const std::string& name, Value& out)
    {
        const auto found = from.find(name);
        if (found == from.end())
            return false;
        out = found->second;
        return true;
    }
    bool note(std::string call)
    {
        calls.push_back(std::move(call));
        return accepts;
    }

    std::map<std::string, korvane::BasicParameterInfo> table;
    std::map<std::string, korvane::IntParameterInfo> integers;
    std::map<std::string, korvane::FloatParameterInfo> floats;
    std::map<std::string, korvane::BoolParameterInfo> booleans;
    std::map<std::string, korvane::EnumParameterInfo> enumerations;
    std::vector<std::string> calls;
};
