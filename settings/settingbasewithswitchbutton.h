#pragma once

#include <QWidget>

#include <memory>
#include <string>

namespace Ui {
class SettingBaseWithSwitchButton;
}

/// A row that switches a boolean parameter. GUI thread only.
class SettingBaseWithSwitchButton : public QWidget
{
    Q_OBJECT

public:
    SettingBaseWithSwitchButton(std::string name, QWidget* parent = nullptr);
    ~SettingBaseWithSwitchButton() override;

    /// Emits nothing.
    void setSwitchChecked(bool checked);
    void setItemToolTip(const QString& text);

signals:
    void signalItemValueChanged(std::string name, bool value);

private slots:
    void on_switchButton_clicked();

private:
    std::unique_ptr<Ui::SettingBaseWithSwitchButton> ui;
};
