#include "settings/settingbasewithswitchbutton.h"

#include "settings/itemtooltip.h"
#include "settings/parameternames.h"
#include "ui_settingbasewithswitchbutton.h"

#include <utility>

SettingBaseWithSwitchButton::SettingBaseWithSwitchButton(std::string name, QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SettingBaseWithSwitchButton>())
{
    ui->setupUi(this);
    const QString displayName = QString::fromStdString(toDisplayName(std::move(name)));
    ui->lb_item_name->setText(displayName);
    ui->switchButton->setAccessibleName(displayName);
}

SettingBaseWithSwitchButton::~SettingBaseWithSwitchButton() = default;

void SettingBaseWithSwitchButton::setSwitchChecked(bool checked)
{
    ui->switchButton->setChecked(checked);
}

void SettingBaseWithSwitchButton::setItemToolTip(const QString& text)
{
    attachItemToolTip(this, text);
}

void SettingBaseWithSwitchButton::on_switchButton_clicked()
{
    emit signalItemValueChanged(toParameterKey(ui->lb_item_name->text().toStdString()),
                                ui->switchButton->isChecked());
}
