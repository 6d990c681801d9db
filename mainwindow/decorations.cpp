#include "mainwindow/decorations.h"

#include "widgets/kvtooltip.h"

#include <QFile>
#include <QGraphicsDropShadowEffect>
#include <QWidget>

void addPaneShadow(QWidget* pane)
{
    auto* const shadow = new QGraphicsDropShadowEffect(pane);
    shadow->setOffset(0, 3);
    shadow->setColor(QColor(0, 0, 0, 41));
    shadow->setBlurRadius(6);
    pane->setGraphicsEffect(shadow);
}

void addToolTip(QWidget* button, const QString& text)
{
    constexpr int aboveTheButton = 0;
    auto* const tip = new KvToolTip(text, aboveTheButton, button->window());
    tip->setTarget(button);
}

QString styleSheetFrom(const QString& address)
{
    QFile file(address);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
