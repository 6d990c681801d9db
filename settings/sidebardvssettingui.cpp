#include "settings/sidebardvssettingui.h"

#include "settings/settingbasewithcombobox.h"
#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithswitchbutton.h"
#include "settings/settingitems.h"

#include <utility>

using korvane::CameraTool;

namespace {

/// What switches a filter on is off at first, whatever the tool tells.
bool off(const korvane::BoolParameterInfo&)
{
    return false;
}

} // namespace

SidebarDvsSettingUI::SidebarDvsSettingUI(QWidget* parent) : SettingPanel(tr("DVS Setting"), parent) {}

SidebarDvsSettingUI::~SidebarDvsSettingUI() = default;

void SidebarDvsSettingUI::setBiasesToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters = beginSection(biases, tr("Biases"), std::move(tool), "Camera tool is null .",
                                         "camera biases is null .");
    for (const auto& [name, parameter] : parameters) {
        // Biases are offsets: they start at none, whatever the tool tells.
        const auto none = [](const korvane::IntParameterInfo&) { return 0; };
        addItem(biases, makeIntegerItem(biases, name, parameter, none),
                &SidebarDvsSettingUI::onBiasSliderValueChanged);
    }
    endSection(biases);
}

void SidebarDvsSettingUI::setTriggerInToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters = beginSection(triggerIn, tr("Trigger In"), std::move(tool),
                                         "camera device is null .", "camera trigger is null .");
    for (const auto& [name, parameter] : parameters) {
        const auto asReported = [](const korvane::BoolParameterInfo& info) { return info.value; };
        addItem(triggerIn, makeSwitchItem(triggerIn, name, parameter, asReported),
                &SidebarDvsSettingUI::onTriggerInSliderValueChanged);
    }
    endSection(triggerIn);
}

void SidebarDvsSettingUI::setAntiFlickerToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters = beginSection(antiFlicker, tr("Anti Flicker"), std::move(tool),
                                         "camera device is null .", "camera trigger is null .");
    for (const auto& [name, parameter] : parameters) {
        addItem(antiFlicker, makeIntegerItem(antiFlicker, name, parameter),
                qOverload<std::string, int>(&SidebarDvsSettingUI::onAntiFlickerSliderValueChanged));
        addItem(antiFlicker, makeFloatItem(antiFlicker, name, parameter),
                &SidebarDvsSettingUI::onAntiFlickerSliderFloatValueChanged);
        addItem(antiFlicker, makeSwitchItem(antiFlicker, name, parameter, off),
                qOverload<std::string, bool>(&SidebarDvsSettingUI::onAntiFlickerSliderValueChanged), 0);
        addItem(antiFlicker, makeComboItem(antiFlicker, name, parameter),
                &SidebarDvsSettingUI::onAntiFlickerSliderEnumValueChanged, 1);
    }
    endSection(antiFlicker);
}

void SidebarDvsSettingUI::setEventRateControlToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters = beginSection(eventRateControl, tr("Event Rate Control"), std::move(tool),
                                         "camera device is null .", "camera trigger is null .");
    for (const auto& [name, parameter] : parameters) {
        addItem(eventRateControl, makeIntegerItem(eventRateControl, name, parameter),
                qOverload<std::string, int>(&SidebarDvsSettingUI::onEventRateControlSliderValueChanged));
        addItem(eventRateControl, makeSwitchItem(eventRateControl, name, parameter, off),
                qOverload<std::string, bool>(&SidebarDvsSettingUI::onEventRateControlSliderValueChanged));
    }
    endSection(eventRateControl);
}

void SidebarDvsSettingUI::setEventTrailFilterToolUI(std::shared_ptr<CameraTool> tool)
{
    const auto parameters = beginSection(eventTrailFilter, tr("Event Trail Filter"), std::move(tool),
                                         "camera device is null .", "camera trigger is null .");
    for (const auto& [name, parameter] : parameters) {
        addItem(eventTrailFilter, makeIntegerItem(eventTrailFilter, name, parameter),
                qOverload<std::string, int>(&SidebarDvsSettingUI::onEventTrailFilterSliderValueChanged));
        addItem(eventTrailFilter, makeSwitchItem(eventTrailFilter, name, parameter, off),
                qOverload<std::string, bool>(&SidebarDvsSettingUI::onEventTrailFilterSliderValueChanged));
        addItem(
            eventTrailFilter, makeComboItem(eventTrailFilter, name, parameter),
            qOverload<std::string, std::string>(&SidebarDvsSettingUI::onEventTrailFilterSliderValueChanged));
    }
    endSection(eventTrailFilter);
}

void SidebarDvsSettingUI::setROIToolUI(std::shared_ptr<CameraTool> tool)
{
    roiItems.clear();
    const auto parameters
        = beginSection(roi, tr("ROI"), std::move(tool), "camera device is null .", "camera roi is null .");
    for (const auto& [key, parameter] : parameters) {
        const std::string& name = key;
        const auto currentValue = [&](const korvane::IntParameterInfo&) {
            int value = 0;
            roi.tool->getIntParameter(name, value);
            return value;
        };
        const auto currentState = [&](const korvane::BoolParameterInfo&) {
            bool state = false;
            roi.tool->getBoolParameter(name, state);
            return state;
        };
        if (auto item = makeIntegerItem(roi, name, parameter, currentValue)) {
            item->setValueChangedCallback([this](const std::string& coordinate, int value) {
                return setRoiCoordinate(coordinate, value);
            });
            roiItems.push_back(item.get());
            roi.box->addItem(item.release());
        }
        addItem(roi, makeSwitchItem(roi, name, parameter, currentState),
                qOverload<std::string, bool>(&SidebarDvsSettingUI::onROISliderValueChanged));
    }
    endSection(roi);
}

bool SidebarDvsSettingUI::setRoiCoordinate(const std::string& name, int value)
{
    const bool accepted = roi.tool->setIntParameter(name, value);
    // The coordinates make a window together, so they are right or wrong together.
    for (SettingBaseWithLineEdit* const item : roiItems)
        item->setLineEditBorderState(accepted);
    return accepted;
}

template <typename Item, typename Slot>
void SidebarDvsSettingUI::addItem(SettingSection& section, std::unique_ptr<Item> item, Slot slot, int index)
{
    if (item == nullptr)
        return;
    connect(item.get(), &Item::signalItemValueChanged, this, slot);
    if (index < 0)
        section.box->addItem(item.release());
    else
        section.box->insertItem(item.release(), index);
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
