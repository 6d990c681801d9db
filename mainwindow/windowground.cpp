#include "mainwindow/windowground.h"

#include <QEvent>
#include <QPainter>
#include <QWidget>

WindowGround::WindowGround(QWidget* watchedWindow) : QObject(watchedWindow), window(watchedWindow)
{
    window->installEventFilter(this);
}

bool WindowGround::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window && event->type() == QEvent::Paint
        && (window->isMaximized() || window->isFullScreen())) {
        // As the window's own surface, which keeps its corners.
        QPainter(window).fillRect(window->rect(), QColor(0xF2, 0xF2, 0xF2));
    }
    return QObject::eventFilter(watched, event);
}
