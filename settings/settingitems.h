#pragma once

#include "camera/driver/cameratool.h"

#include <functional>
#include <memory>
#include <string>

class SettingBaseWithComboBox;
class SettingBaseWithLineEdit;
class SettingBaseWithSwitchButton;

// Makes the row for a parameter that a tool reports, filled but neither connected nor placed. Gives none when
// the parameter is of another kind or the tool tells nothing about it. GUI thread only.

/// The row shows the value that initialValue makes of what the tool tells.
std::unique_ptr<SettingBaseWithLineEdit> makeIntegerItem(
    korvane::CameraTool& tool, const std::string& name, const korvane::BasicParameterInfo& parameter,
    const std::function<int(const korvane::IntParameterInfo&)>& initialValue
    = [](const korvane::IntParameterInfo& info) { return info.value; });
/// Range and value lose their fractions.
std::unique_ptr<SettingBaseWithLineEdit> makeFloatItem(korvane::CameraTool& tool, const std::string& name,
                                                       const korvane::BasicParameterInfo& parameter);
/// The switch shows the state that initialState makes of what the tool tells.
std::unique_ptr<SettingBaseWithSwitchButton>
makeSwitchItem(korvane::CameraTool& tool, const std::string& name,
               const korvane::BasicParameterInfo& parameter,
               const std::function<bool(const korvane::BoolParameterInfo&)>& initialState);
/// The first option is the current one.
std::unique_ptr<SettingBaseWithComboBox> makeComboItem(korvane::CameraTool& tool, const std::string& name,
                                                       const korvane::BasicParameterInfo& parameter);
