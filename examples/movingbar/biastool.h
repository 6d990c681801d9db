#pragma once

#include "camera/driver/cameratool.h"

#include <atomic>
#include <map>
#include <string>

namespace movingbar {

/// One bias. GUI thread, but for diffOn().
class BiasTool : public korvane::CameraTool
{
public:
    /// Any thread.
    int diffOn() const { return value; }

    void getAllParameterInfo(std::map<std::string, korvane::BasicParameterInfo>& out) override;
    bool getEnumParameterInfo(std::string, korvane::EnumParameterInfo&) override { return false; }
    bool getBoolParameterInfo(std::string, korvane::BoolParameterInfo&) override { return false; }
    bool getFloatParameterInfo(std::string, korvane::FloatParameterInfo&) override { return false; }
    bool getIntParameterInfo(std::string name, korvane::IntParameterInfo& out) override;
    bool getBoolParameter(std::string, bool&) override { return false; }
    bool getIntParameter(std::string name, int& out) override;
    bool setEnumParameter(std::string, const std::string&) override { return false; }
    bool setBoolParameter(std::string, const bool&) override { return false; }
    bool setFloatParameter(std::string, const float&) override { return false; }
    bool setIntParameter(std::string name, const int& wanted) override;

private:
    korvane::IntParameterInfo describe() const;

    std::atomic<int> value{0};
};

} // namespace movingbar
