#include "settings/settingitembox.h"

#include "settings/layoutsettling.h"
#include "ui_settingitembox.h"
#include "widgets/styledeclaration.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

#include <algorithm>

namespace {

void putDeclaration(QString& styleSheet, const QString& property, const QString& declaration)
{
    if (!replaceStyleDeclaration(styleSheet, property, declaration))
        styleSheet += u' ' + declaration;
}

} // namespace

SettingItemBox::SettingItemBox(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::SettingItemBox>())
{
    ui->setupUi(this);
    setMouseTracking(true);
    setAttribute(Qt::WA_TranslucentBackground);
    setFold(true);
}

SettingItemBox::~SettingItemBox() = default;

void SettingItemBox::setTitle(const QString& title)
{
    ui->lb_setting_box_title_text->setText(title);
    ui->pb_fold->setAccessibleName(title);
}

void SettingItemBox::addItem(QWidget* item)
{
    ui->verticalLayout->addWidget(item);
    settle(item);
}

void SettingItemBox::insertItem(QWidget* item, int index)
{
    // The layout itself does not survive a place past its end.
    ui->verticalLayout->insertWidget(std::min(index, ui->verticalLayout->count()), item);
    settle(item);
}

void SettingItemBox::setFold(bool folded)
{
    applyFold(folded);
    ui->pb_fold->setChecked(folded);
}

QWidget* SettingItemBox::itemParent() const
{
    return ui->widget_container;
}

void SettingItemBox::paintEvent(QPaintEvent*)
{
    // The style sheet's background; Qt paints it by itself for a plain QWidget only.
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}

void SettingItemBox::on_pb_fold_clicked(bool checked)
{
    applyFold(checked);
}

void SettingItemBox::applyFold(bool folded)
{
    QString styleSheet = ui->widget_setting_box_title->styleSheet();
    // Else the focus would wander from a hidden item to one of another section, and open its slider.
    QWidget* const focused = focusWidget();
    if (folded && focused != nullptr && ui->widget_container->isAncestorOf(focused))
        focused->clearFocus();
    ui->widget_container->setVisible(!folded);
    putDeclaration(styleSheet, QStringLiteral("border"),
                   folded ? QStringLiteral("border-left: 0px solid #004B6A;")
                          : QStringLiteral("border-left: 2px solid #004B6A;"));
    putDeclaration(styleSheet, QStringLiteral("background"),
                   folded ? QStringLiteral("background: #F4F5F7;") : QStringLiteral("background: #E1E9ED;"));
    // Setting a style sheet costs, even the same one.
    if (styleSheet != ui->widget_setting_box_title->styleSheet())
        ui->widget_setting_box_title->setStyleSheet(styleSheet);
    settleLayouts(this);
}

void SettingItemBox::settle(QWidget* item)
{
    adjustSize();
    update();
    ui->widget_container->adjustSize();
    ui->widget_container->update();
    item->adjustSize();
}
