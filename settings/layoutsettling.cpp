#include "settings/layoutsettling.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLayout>
#include <QScrollArea>

void settleLayouts(QWidget* widget)
{
    for (; widget != nullptr; widget = widget->parentWidget()) {
        if (qobject_cast<QScrollArea*>(widget) != nullptr) {
            QEvent request(QEvent::LayoutRequest);
            QCoreApplication::sendEvent(widget, &request);
            return;
        }
        if (widget->layout() != nullptr)
            widget->layout()->activate();
    }
}
