#pragma once

#include "camera/driver/parameterinfo.h"

#include <map>
#include <string>

namespace korvane {

/// One group of camera settings. Calls come from the GUI thread, or from the worker that opens the camera
/// before anyone else has it. The getters and setters answer false for a name they do not know or a value
/// they refuse; nothing is clamped silently. A panel may keep a tool, and set it, when its camera is closed.
class CameraTool
{
public:
    CameraTool() = default;
    virtual ~CameraTool() = default;
    CameraTool(const CameraTool&) = delete;
    CameraTool& operator=(const CameraTool&) = delete;

    virtual void getAllParameterInfo(std::map<std::string, BasicParameterInfo>& out) = 0;
    virtual bool getEnumParameterInfo(std::string name, EnumParameterInfo& out) = 0;
    virtual bool getBoolParameterInfo(std::string name, BoolParameterInfo& out) = 0;
    virtual bool getFloatParameterInfo(std::string name, FloatParameterInfo& out) = 0;
    virtual bool getIntParameterInfo(std::string name, IntParameterInfo& out) = 0;
    virtual bool getBoolParameter(std::string name, bool& value) = 0;
    virtual bool getIntParameter(std::string name, int& value) = 0;
    virtual bool setEnumParameter(std::string name, const std::string& value) = 0;
    virtual bool setBoolParameter(std::string name, const bool& value) = 0;
    virtual bool setFloatParameter(std::string name, const float& value) = 0;
    virtual bool setIntParameter(std::string name, const int& value) = 0;
};

} // namespace korvane
