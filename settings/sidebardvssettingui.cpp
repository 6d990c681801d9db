#include "settings/sidebardvssettingui.h"

#include <utility>

using korvane::CameraTool;

SidebarDvsSettingUI::SidebarDvsSettingUI(QWidget* parent) : SettingPanel(tr("DVS Setting"), parent) {}

SidebarDvsSettingUI::~SidebarDvsSettingUI() = default;

void SidebarDvsSettingUI::setBiasesToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters
        = beginSection(biases, std::move(tool), "Camera tool is null .", "camera biases is null .");
    if (parameters.empty())
        return;
    biases.box = std::make_unique<SettingItemBox>();
    biases.box->setTitle(tr("Biases"));
    endSection(biases);
}

void SidebarDvsSettingUI::setTriggerInToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters
        = beginSection(triggerIn, std::move(tool), "camera device is null .", "camera trigger is null .");
    if (parameters.empty())
        return;
    triggerIn.box = std::make_unique<SettingItemBox>();
    triggerIn.box->setTitle(tr("Trigger In"));
    endSection(triggerIn);
}

void SidebarDvsSettingUI::setAntiFlickerToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters
        = beginSection(antiFlicker, std::move(tool), "camera device is null .", "camera trigger is null .");
    if (parameters.empty())
        return;
    antiFlicker.box = std::make_unique<SettingItemBox>();
    antiFlicker.box->setTitle(tr("Anti Flicker"));
    endSection(antiFlicker);
}

void SidebarDvsSettingUI::setEventRateControlToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters = beginSection(eventRateControl, std::move(tool), "camera device is null .",
                                         "camera trigger is null .");
    if (parameters.empty())
        return;
    eventRateControl.box = std::make_unique<SettingItemBox>();
    eventRateControl.box->setTitle(tr("Event Rate Control"));
    endSection(eventRateControl);
}

void SidebarDvsSettingUI::setEventTrailFilterToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters = beginSection(eventTrailFilter, std::move(tool), "camera device is null .",
                                         "camera trigger is null .");
    if (parameters.empty())
        return;
    eventTrailFilter.box = std::make_unique<SettingItemBox>();
    eventTrailFilter.box->setTitle(tr("Event Trail Filter"));
    endSection(eventTrailFilter);
}

void SidebarDvsSettingUI::setROIToolUI(std::shared_ptr<CameraTool> tool)
{
    roiItems.clear();
    const auto parameters
        = beginSection(roi, std::move(tool), "camera device is null .", "camera roi is null .");
    if (parameters.empty())
        return;
    roi.box = std::make_unique<SettingItemBox>();
    roi.box->setTitle(tr("ROI"));
    endSection(roi);
}

void SidebarDvsSettingUI::clearAllToolUI()
{
    setBiasesToolUI(nullptr);
    setTriggerInToolUI(nullptr);
    setAntiFlickerToolUI(nullptr);
    setEventRateControlToolUI(nullptr);
    setEventTrailFilterToolUI(nullptr);
    setROIToolUI(nullptr);
}

void SidebarDvsSettingUI::onBiasSliderValueChanged(std::string name, int value)
{
    biases.tool->setIntParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onTriggerInSliderValueChanged(std::string name, bool value)
{
    triggerIn.tool->setBoolParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onAntiFlickerSliderValueChanged(std::string name, int value)
{
    antiFlicker.tool->setIntParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onAntiFlickerSliderValueChanged(std::string name, bool value)
{
    antiFlicker.tool->setBoolParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onAntiFlickerSliderFloatValueChanged(std::string name, int value)
{
    antiFlicker.tool->setFloatParameter(std::move(name), static_cast<float>(value));
}

void SidebarDvsSettingUI::onAntiFlickerSliderEnumValueChanged(std::string name, std::string value)
{
    antiFlicker.tool->setEnumParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onEventRateControlSliderValueChanged(std::string name, int value)
{
    eventRateControl.tool->setIntParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onEventRateControlSliderValueChanged(std::string name, bool value)
{
    eventRateControl.tool->setBoolParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onEventTrailFilterSliderValueChanged(std::string name, int value)
{
    eventTrailFilter.tool->setIntParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onEventTrailFilterSliderValueChanged(std::string name, bool en)
{
    eventTrailFilter.tool->setBoolParameter(std::move(name), en);
}

void SidebarDvsSettingUI::onEventTrailFilterSliderValueChanged(std::string name, std::string value)
{
    eventTrailFilter.tool->setEnumParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onROISliderValueChanged(std::string name, int value)
{
    roi.tool->setIntParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onROISliderValueChanged(std::string name, bool value)
{
    roi.tool->setBoolParameter(std::move(name), value);
}

void SidebarDvsSettingUI::onROISliderValueChanged(std::string name, std::string value)
{
    roi.tool->setEnumParameter(std::move(name), value);
}

void SidebarDvsSettingUI::slotCumulativeTimeChanged(uint64_t time_us)
{
    emit signalCumulativeTimeChanged(time_us);
}

void SidebarDvsSettingUI::slotFpsChanged(uint32_t fps)
{
    emit signalFpsChanged(fps);
}
