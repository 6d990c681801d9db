#include "settings/sidebarapssettingui.h"

#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithswitchbutton.h"
#include "settings/settingitems.h"

#include <utility>

SidebarApsSettingUI::SidebarApsSettingUI(QWidget* parent) : SettingPanel(tr("APS Setting"), parent) {}

SidebarApsSettingUI::~SidebarApsSettingUI() = default;

void SidebarApsSettingUI::setApsToolUI(std::shared_ptr<korvane::CameraTool> tool)
{
    const auto parameters = beginSection(aps, tr("APS"), std::move(tool), "camera device is null .",
                                         "camera aps infos is null .");
    for (const auto& [name, parameter] : parameters) {
        const auto asReported = [](const korvane::BoolParameterInfo& info) { return info.value; };
        if (auto item = makeSwitchItem(aps, name, parameter, asReported)) {
            connect(item.get(), &SettingBaseWithSwitchButton::signalItemValueChanged, this,
                    &SidebarApsSettingUI::onApsBoolValueChanged);
            aps.box->addItem(item.release());
        } else if (auto number = makeIntegerItem(aps, name, parameter)) {
            connect(number.get(), &SettingBaseWithLineEdit::signalItemValueChanged, this,
                    &SidebarApsSettingUI::onApsSliderValueChanged);
            aps.box->addItem(number.release());
        }
    }
    endSection(aps);
}

void SidebarApsSettingUI::clearApsToolUI()
{
    setApsToolUI(nullptr);
}

void SidebarApsSettingUI::onApsBoolValueChanged(std::string name, bool value)
{
    aps.tool->setBoolParameter(std::move(name), value);
}

void SidebarApsSettingUI::onApsSliderValueChanged(std::string name, int value)
{
    aps.tool->setIntParameter(std::move(name), value);
}
