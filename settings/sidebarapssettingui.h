#pragma once

#include "settings/settingpanel.h"
#include "settings/settingsection.h"

#include <memory>
#include <string>

/// The panel in which the picture sensor of an open fusion camera is tuned. Everything changed is written to
/// the tool at once; filling writes nothing. GUI thread only.
class SidebarApsSettingUI : public SettingPanel
{
    Q_OBJECT

public:
    explicit SidebarApsSettingUI(QWidget* parent = nullptr);
    ~SidebarApsSettingUI() override;

    /// Fills the section anew, folded. Without a tool, or with one that has no parameters, the section goes.
    void setApsToolUI(std::shared_ptr<korvane::CameraTool> tool);
    /// Removes the section.
    void clearApsToolUI();

private slots:
    void onApsBoolValueChanged(std::string name, bool value);
    void onApsSliderValueChanged(std::string name, int value);

private:
    SettingSection aps;
};
