#include "settings/settingbasewithslider.h"

#include "settings/parameternames.h"
#include "ui_settingbasewithslider.h"

#include <QEvent>

#include <utility>

SettingBaseWithSlider::SettingBaseWithSlider(std::string name, QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SettingBaseWithSlider>())
{
    ui->setupUi(this);
    ui->lb_set_item_name->setText(QString::fromStdString(toDisplayName(std::move(name))));
    ui->slider_item_value->installEventFilter(this);
}

SettingBaseWithSlider::~SettingBaseWithSlider() = default;

void SettingBaseWithSlider::setRange(int minimum, int maximum)
{
    ui->slider_item_value->setRange(minimum, maximum);
}

void SettingBaseWithSlider::on_pb_sub_item_value_clicked()
{
    if (currentValue > ui->slider_item_value->minimum())
        ui->slider_item_value->setValue(--currentValue);
}

void SettingBaseWithSlider::on_pb_add_item_value_clicked()
{
    if (currentValue < ui->slider_item_value->maximum())
        ui->slider_item_value->setValue(++currentValue);
}

void SettingBaseWithSlider::on_slider_item_value_valueChanged(int value)
{
    currentValue = value;
    ui->le_set_item_value->setText(QString::number(value));
    emit signalItemValueChanged(ui->lb_set_item_name->text().toStdString(), value);
}

void SettingBaseWithSlider::on_le_set_item_value_returnPressed()
{
    ui->slider_item_value->setValue(ui->le_set_item_value->text().toInt());
}

bool SettingBaseWithSlider::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui->slider_item_value && event->type() == QEvent::Wheel) {
        // The wheel scrolls the panel; ignored here, it goes on to it.
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
