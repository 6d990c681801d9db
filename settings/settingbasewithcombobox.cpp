#include "settings/settingbasewithcombobox.h"

#include "settings/itemtooltip.h"
#include "settings/parameternames.h"
#include "ui_settingbasewithcombobox.h"

#include <utility>

SettingBaseWithComboBox::SettingBaseWithComboBox(std::string name, QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SettingBaseWithComboBox>())
{
    ui->setupUi(this);
    ui->lb_set_item_name->setText(QString::fromStdString(toDisplayName(std::move(name))));
    connect(ui->cb_item, &KvComboBox::currentTextChanged, this,
            &SettingBaseWithComboBox::cbCurrentTextChanged);
    ui->cb_item->setTextEditable(false);
}

SettingBaseWithComboBox::~SettingBaseWithComboBox() = default;

void SettingBaseWithComboBox::addComboItem(const QString& text)
{
    ui->cb_item->addItem(text);
}

void SettingBaseWithComboBox::setItemToolTip(const QString& text)
{
    attachItemToolTip(this, text);
}

void SettingBaseWithComboBox::cbCurrentTextChanged(const QString& arg1)
{
    emit signalItemValueChanged(toParameterKey(ui->lb_set_item_name->text().toStdString()),
                                arg1.toStdString());
}
