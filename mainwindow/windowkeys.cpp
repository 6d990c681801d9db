#include "mainwindow/windowkeys.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace {

bool isPlayBarKey(int key)
{
    return key == Qt::Key_Space || key == Qt::Key_Left || key == Qt::Key_Right;
}

bool isEditor(const QWidget* widget)
{
    return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QComboBox*>(widget)
        || qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QAbstractItemView*>(widget)
        || qobject_cast<const QTextEdit*>(widget) || qobject_cast<const QPlainTextEdit*>(widget);
}

} // namespace

WindowKeys::WindowKeys(QWidget* mainWindow) : QObject(mainWindow), window(mainWindow)
{
    // The application's, for the filters of single widgets would have to follow every widget that comes.
    qApp->installEventFilter(this);
}

bool WindowKeys::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType())
        return false;
    const auto* const receiver = static_cast<const QWidget*>(watched);
    if (receiver->window() != window || !isPlayBarKey(static_cast<QKeyEvent*>(event)->key()))
        return false;
    const QWidget* const focused = window->focusWidget();
    const bool editing = isEditor(focused);
    // A combo box hands its keys on to the field inside it.
    if (editing ? receiver == focused || focused->isAncestorOf(receiver) : receiver == window)
        return false;
    // What an editor leaves over must not play or step either: at the end of a text the arrow does nothing.
    if (!editing)
        QCoreApplication::sendEvent(window, event);
    event->accept();
    return true;
}
