#pragma once

#include <QWidget>

#include <memory>
#include <string>

namespace Ui {
class SettingBaseWithSlider;
}

/// A row that edits an integer with a slider that is always in view. GUI thread only.
class SettingBaseWithSlider : public QWidget
{
    Q_OBJECT

public:
    SettingBaseWithSlider(std::string name, QWidget* parent = nullptr);
    ~SettingBaseWithSlider() override;

    void setRange(int minimum, int maximum);

signals:
    /// With the name as it is shown, unlike the other rows.
    void signalItemValueChanged(std::string name, int value);

private slots:
    void on_pb_sub_item_value_clicked();
    void on_pb_add_item_value_clicked();
    void on_slider_item_value_valueChanged(int value);
    void on_le_set_item_value_returnPressed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::unique_ptr<Ui::SettingBaseWithSlider> ui;
    int currentValue = 0;
};
