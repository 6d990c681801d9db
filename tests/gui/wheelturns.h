#pragma once

#include <QAbstractScrollArea>
#include <QApplication>
#include <QWheelEvent>

/// Turns the wheel over a view by `delta` eighths of a degree; answers whether the view took it.
inline bool turnWheel(QAbstractScrollArea& view, QPoint delta, QPointF place)
{
    QWheelEvent event(place, view.viewport()->mapToGlobal(place), QPoint(), delta, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    event.ignore();
    QApplication::sendEvent(view.viewport(), &event);
    return event.isAccepted();
}

inline bool turnWheel(QAbstractScrollArea& view, int delta)
{
    return turnWheel(view, QPoint(0, delta), view.viewport()->rect().center());
}
