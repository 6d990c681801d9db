#pragma once

#include "settings/settingsection.h"

#include <functional>
#include <memory>
#include <string>

class SettingBaseWithComboBox;
class SettingBaseWithLineEdit;
class SettingBaseWithSwitchButton;

// Makes the row for a parameter that a section's tool reports, filled but neither connected nor placed: a
// child of the box from the beginning, for reparenting would have all its parts styled anew. Gives none when
// the parameter is of another kind or the tool tells nothing about it. GUI thread only.

/// The row shows the value that initialValue makes of what the tool tells.
std::unique_ptr<SettingBaseWithLineEdit> makeIntegerItem(
    const SettingSection& section, const std::string& name, const korvane::BasicParameterInfo& parameter,
    const std::function<int(const korvane::IntParameterInfo&)>& initialValue
    = [](const korvane::IntParameterInfo& info) { return info.value; });
/// Range and value lose their fractions.
std::unique_ptr<SettingBaseWithLineEdit> makeFloatItem(const SettingSection& section, const std::string& name,
                                                       const korvane::BasicParameterInfo& parameter);
/// The switch shows the state that initialState makes of what the tool tells.
std::unique_ptr<SettingBaseWithSwitchButton>
makeSwitchItem(const SettingSection& section, const std::string& name,
               const korvane::BasicParameterInfo& parameter,
               const std::function<bool(const korvane::BoolParameterInfo&)>& initialState);
/// The first option is the current one.
std::unique_ptr<SettingBaseWithComboBox> makeComboItem(const SettingSection& section, const std::string& name,
                                                       const korvane::BasicParameterInfo& parameter);
