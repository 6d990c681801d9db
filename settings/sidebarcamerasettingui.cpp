#include "settings/sidebarcamerasettingui.h"

#include "settings/settingdisplayitem.h"
#include "settings/settingitembox.h"

SidebarCameraSettingUI::SidebarCameraSettingUI(QWidget* parent) : SettingPanel(tr("Camera Setting"), parent)
{
    setDisplayUI();
}

SidebarCameraSettingUI::~SidebarCameraSettingUI() = default;

void SidebarCameraSettingUI::setDisplayUI()
{
    displayItem = nullptr;
    removeBox(displayBox);
    displayBox = std::make_unique<SettingItemBox>();
    displayBox->setTitle(tr("Display"));
    auto item = std::make_unique<SettingDisplayItem>();
    displayItem = item.get();
    displayBox->addItem(item.release());
    displayBox->setFold(true);
    connect(displayItem, &SettingDisplayItem::signalCumulativeTimeChanged, this,
            &SidebarCameraSettingUI::slotCumulativeTimeChanged);
    connect(displayItem, &SettingDisplayItem::signalFpsChanged, this,
            &SidebarCameraSettingUI::slotFpsChanged);
    insertBox(displayBox.get());
}

void SidebarCameraSettingUI::setSlowRateEnabled(bool enabled)
{
    if (displayItem != nullptr)
        displayItem->setSlowRateEnabled(enabled);
}

void SidebarCameraSettingUI::slotCumulativeTimeChanged(uint64_t time_us)
{
    emit signalCumulativeTimeChanged(time_us);
}

void SidebarCameraSettingUI::slotFpsChanged(uint32_t fps)
{
    emit signalFpsChanged(fps);
}
