#include "mainwindow/titlemenu.h"

#include <QStyleOptionMenuItem>

void TitleMenu::initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const
{
    QMenu::initStyleOption(option, action);
    option->state.setFlag(QStyle::State_MouseOver, byMouse && option->state.testFlag(QStyle::State_Selected));
}

void TitleMenu::mouseMoveEvent(QMouseEvent* event)
{
    byMouse = true;
    QMenu::mouseMoveEvent(event);
}

void TitleMenu::keyPressEvent(QKeyEvent* event)
{
    byMouse = false;
    QMenu::keyPressEvent(event);
}
