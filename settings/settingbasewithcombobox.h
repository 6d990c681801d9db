#pragma once

#include <QWidget>

#include <memory>
#include <string>

namespace Ui {
class SettingBaseWithComboBox;
}

/// A row that chooses one of a parameter's options. Fill it before connecting it: the first option becomes
/// the current one, which counts as a change. GUI thread only.
class SettingBaseWithComboBox : public QWidget
{
    Q_OBJECT

public:
    SettingBaseWithComboBox(std::string name, QWidget* parent = nullptr);
    ~SettingBaseWithComboBox() override;

    /// Appends an option.
    void addComboItem(const QString& text);
    void setItemToolTip(const QString& text);

signals:
    void signalItemValueChanged(std::string name, std::string item);

private slots:
    void cbCurrentTextChanged(const QString& arg1);

private:
    std::unique_ptr<Ui::SettingBaseWithComboBox> ui;
};
