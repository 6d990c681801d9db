#include "settings/sidebarcamerasettingui.h"

#include "settings/settingitembox.h"

SidebarCameraSettingUI::SidebarCameraSettingUI(QWidget* parent) : SettingPanel(tr("Camera Setting"), parent)
{
    setDisplayUI();
}

SidebarCameraSettingUI::~SidebarCameraSettingUI() = default;

void SidebarCameraSettingUI::setDisplayUI()
{
    removeBox(displayBox);
    displayBox = std::make_unique<SettingItemBox>();
    displayBox->setTitle(tr("Display"));
    displayBox->setFold(true);
    insertBox(displayBox.get());
}

void SidebarCameraSettingUI::setSlowRateEnabled(bool) {}

void SidebarCameraSettingUI::slotCumulativeTimeChanged(uint64_t time_us)
{
    emit signalCumulativeTimeChanged(time_us);
}

void SidebarCameraSettingUI::slotFpsChanged(uint32_t fps)
{
    emit signalFpsChanged(fps);
}
