#include "widgets/nativeposition.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

NativePosition::NativePosition(QWidget* topLevel) : QObject(topLevel), widget(topLevel)
{
    widget->installEventFilter(this);
}

bool NativePosition::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == widget && event->type() == QEvent::Show)
        watchNative();
    else if (watched == native && event->type() == QEvent::Expose)
        settle();
    return false;
}

void NativePosition::watchNative()
{
    if (native == widget->windowHandle())
        return;
    if (native)
        native->removeEventFilter(this);
    native = widget->windowHandle();
    if (native)
        native->installEventFilter(this);
}

void NativePosition::settle()
{
    // A window that fills the screen is where the manager has put it.
    const bool filling = widget->windowState().testAnyFlags(Qt::WindowMaximized | Qt::WindowFullScreen);
    if (native->isExposed() && !filling && native->position() != widget->pos())
        native->setPosition(widget->pos());
}
