#include "settings/sidebarapssettingui.h"

#include <utility>

SidebarApsSettingUI::SidebarApsSettingUI(QWidget* parent) : SettingPanel(tr("APS Setting"), parent) {}

SidebarApsSettingUI::~SidebarApsSettingUI() = default;

void SidebarApsSettingUI::setApsToolUI(std::shared_ptr<korvane::CameraTool> tool)
{
    const auto parameters
        = beginSection(aps, std::move(tool), "camera device is null .", "camera aps infos is null .");
    if (parameters.empty())
        return;
    aps.box = std::make_unique<SettingItemBox>();
    aps.box->setTitle(tr("APS"));
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
