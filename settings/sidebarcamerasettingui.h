#pragma once

#include "settings/settingpanel.h"

#include <cstdint>
#include <memory>

class SettingDisplayItem;

/// The panel of the display settings: how events become frames. GUI thread only.
class SidebarCameraSettingUI : public SettingPanel
{
    Q_OBJECT

public:
    explicit SidebarCameraSettingUI(QWidget* parent = nullptr);
    ~SidebarCameraSettingUI() override;

    /// Builds the section anew, folded and with its first values.
    void setDisplayUI();
    /// Whether the speed can be chosen.
    void setSlowRateEnabled(bool enabled);

signals:
    /// In microseconds, from 1 to 1000000.
    void signalCumulativeTimeChanged(uint64_t time_us);
    /// In frames per second; 0 for speeds below a frame per second.
    void signalFpsChanged(uint32_t fps);

private slots:
    void slotCumulativeTimeChanged(uint64_t time_us);
    void slotFpsChanged(uint32_t fps);

private:
    std::unique_ptr<SettingItemBox> displayBox;
    SettingDisplayItem* displayItem = nullptr; ///< displayBox owns it
};
