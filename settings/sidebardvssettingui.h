#pragma once

#include "settings/settingpanel.h"
#include "settings/settingsection.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class SettingBaseWithLineEdit;

/// The panel in which the event sensor of the open camera is tuned: one section for each of its settings
/// tools. Everything changed is written to the tool at once; filling writes nothing. GUI thread only.
class SidebarDvsSettingUI : public SettingPanel
{
    Q_OBJECT

public:
    explicit SidebarDvsSettingUI(QWidget* parent = nullptr);
    ~SidebarDvsSettingUI() override;

    // Each fills its section anew, folded and below the others. Without a tool, or with one that has no
    // parameters, the section goes.
    void setBiasesToolUI(std::shared_ptr<korvane::CameraTool> tool);
    void setTriggerInToolUI(std::shared_ptr<korvane::CameraTool> tool);
    void setAntiFlickerToolUI(std::shared_ptr<korvane::CameraTool> tool);
    void setEventRateControlToolUI(std::shared_ptr<korvane::CameraTool> tool);
    void setEventTrailFilterToolUI(std::shared_ptr<korvane::CameraTool> tool);
    void setROIToolUI(std::shared_ptr<korvane::CameraTool> tool);
    /// Removes all sections.
    void clearAllToolUI();

signals:
    void signalCumulativeTimeChanged(uint64_t time_us);
    void signalFpsChanged(uint32_t fps);

private slots:
    void onBiasSliderValueChanged(std::string name, int value);
    void onTriggerInSliderValueChanged(std::string name, bool value);
    void onAntiFlickerSliderValueChanged(std::string name, int value);
    void onAntiFlickerSliderValueChanged(std::string name, bool value);
    void onAntiFlickerSliderFloatValueChanged(std::string name, int value);
    void onAntiFlickerSliderEnumValueChanged(std::string name, std::string value);
    void onEventRateControlSliderValueChanged(std::string name, int value);
    void onEventRateControlSliderValueChanged(std::string name, bool value);
    void onEventTrailFilterSliderValueChanged(std::string name, int value);
    void onEventTrailFilterSliderValueChanged(std::string name, bool en);
    void onEventTrailFilterSliderValueChanged(std::string name, std::string value);
    void onROISliderValueChanged(std::string name, int value);
    void onROISliderValueChanged(std::string name, bool value);
    void onROISliderValueChanged(std::string name, std::string value);
    void slotCumulativeTimeChanged(uint64_t time_us);
    void slotFpsChanged(uint32_t fps);

private:
    /// Connects an item, if there is one, and puts it into the section's box: at the end, or where asked.
    template <typename Item, typename Slot>
    void addItem(SettingSection& section, std::unique_ptr<Item> item, Slot slot, int index = -1);
    bool setRoiCoordinate(const std::string& name, int value);

    SettingSection biases;
    SettingSection triggerIn;
    SettingSection antiFlicker;
    SettingSection eventTrailFilter;
    SettingSection eventRateControl;
    SettingSection roi;
    std::vector<SettingBaseWithLineEdit*> roiItems; ///< in order of creation; roi.box owns them
};
