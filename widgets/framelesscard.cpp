#include "widgets/framelesscard.h"

#include "widgets/cardcorners.h"
#include "widgets/nativeposition.h"

#include <QWidget>

#include <QWKWidgets/widgetwindowagent.h>

void makeFramelessCard(QWidget* dialog, QWidget* titleBar)
{
    // Not every agent does this, and without it the card's round corners stand in a square.
    dialog->setAttribute(Qt::WA_TranslucentBackground);
    auto* const agent = new QWK::WidgetWindowAgent(dialog);
    agent->setup(dialog);
    agent->setTitleBar(titleBar);
    new CardCorners(dialog);
    new NativePosition(dialog);
}
