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

    /// Begins to fill a section anew: takes away the box it had, keeps the tool, and puts a new box below the
    /// others. Gives the tool's parameters, none when there is nothing to show; then there is no box, and the
    /// text that fits is logged.
    std::map<std::string, korvane::BasicParameterInfo>
    beginSection(SettingSection& section, const QString& title, std::shared_ptr<korvane::CameraTool> tool,
                 const char* noToolText, const char* noParametersText);
    /// Folds a section that has got its items; nothing when it has no box.
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
