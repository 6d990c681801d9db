#pragma once

#include "settings/settingsection.h"

#include <QWidget>

#include <map>
#include <memory>
#include <string>

class QVBoxLayout;

namespace Ui {
class SettingUI;
}

/// The frame of every settings panel: a heading above a stack of foldable sections that scrolls with the
/// wheel. GUI thread only.
class SettingPanel : public QWidget
{
    Q_OBJECT

public:
    ~SettingPanel() override;

protected:
    SettingPanel(const QString& heading, QWidget* parent);

    /// Begins to fill a section anew: takes away the box it had and keeps the tool. Gives the tool's
    /// parameters, none when there is nothing to show, which is logged with the text that fits.
    std::map<std::string, korvane::BasicParameterInfo> beginSection(SettingSection& section,
                                                                    std::shared_ptr<korvane::CameraTool> tool,
                                                                    const char* noToolText,
                                                                    const char* noParametersText);
    /// Shows a section that has got its items: folded, and below the others.
    void endSection(SettingSection& section);
    /// Puts a section below the others. The panel shows it, the caller keeps it.
    void insertBox(SettingItemBox* box);
    /// Takes a section off the panel, with its items, and ends it; nothing when there is none.
    void removeBox(std::unique_ptr<SettingItemBox>& box);

    void paintEvent(QPaintEvent* event) override;

private:
    void ensureTrailingStretch();

    std::unique_ptr<Ui::SettingUI> ui;
    QVBoxLayout* contentLayout; ///< of the widget that the scroll area shows and owns
};
