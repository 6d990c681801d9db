#include "settings/settingitems.h"

#include "settings/settingbasewithcombobox.h"
#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithswitchbutton.h"
#include "widgets/saturate.h"

using korvane::BasicParameterInfo;

namespace {

QString descriptionOf(const BasicParameterInfo& parameter)
{
    return QString::fromStdString(parameter.description);
}

int wholePart(float value)
{
    return saturateToInt(static_cast<double>(value));
}

} // namespace

std::unique_ptr<SettingBaseWithLineEdit>
makeIntegerItem(const SettingSection& section, const std::string& name, const BasicParameterInfo& parameter,
                const std::function<int(const korvane::IntParameterInfo&)>& initialValue)
{
    korvane::IntParameterInfo info;
    if (parameter.kind != BasicParameterInfo::Integer || !section.tool->getIntParameterInfo(name, info))
        return nullptr;
    auto item = std::make_unique<SettingBaseWithLineEdit>(name, section.box->itemParent());
    item->setItemToolTip(descriptionOf(parameter));
    item->setRange(info.minimum, info.maximum);
    item->setValue(initialValue(info));
    item->setUnit(info.unit);
    return item;
}

std::unique_ptr<SettingBaseWithLineEdit> makeFloatItem(const SettingSection& section, const std::string& name,
                                                       const BasicParameterInfo& parameter)
{
    korvane::FloatParameterInfo info;
    if (parameter.kind != BasicParameterInfo::Float || !section.tool->getFloatParameterInfo(name, info))
        return nullptr;
    auto item = std::make_unique<SettingBaseWithLineEdit>(name, section.box->itemParent());
    item->setItemToolTip(descriptionOf(parameter));
    item->setRange(wholePart(info.minimum), wholePart(info.maximum));
    item->setValue(wholePart(info.value));
    item->setUnit(info.unit);
    return item;
}

std::unique_ptr<SettingBaseWithSwitchButton>
makeSwitchItem(const SettingSection& section, const std::string& name, const BasicParameterInfo& parameter,
               const std::function<bool(const korvane::BoolParameterInfo&)>& initialState)
{
    korvane::BoolParameterInfo info;
    if (parameter.kind != BasicParameterInfo::Boolean || !section.tool->getBoolParameterInfo(name, info))
        return nullptr;
    auto item = std::make_unique<SettingBaseWithSwitchButton>(name, section.box->itemParent());
    item->setItemToolTip(descriptionOf(parameter));
    item->setSwitchChecked(initialState(info));
    return item;
}

std::unique_ptr<SettingBaseWithComboBox> makeComboItem(const SettingSection& section, const std::string& name,
                                                       const BasicParameterInfo& parameter)
{
    korvane::EnumParameterInfo info;
    if (parameter.kind != BasicParameterInfo::Enumeration || !section.tool->getEnumParameterInfo(name, info))
        return nullptr;
    auto item = std::make_unique<SettingBaseWithComboBox>(name, section.box->itemParent());
    item->setItemToolTip(descriptionOf(parameter));
    for (const std::string& option : info.options)
        item->addComboItem(QString::fromStdString(option));
    return item;
}
