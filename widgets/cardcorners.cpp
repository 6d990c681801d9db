#include "widgets/cardcorners.h"

#include "widgets/roundedregion.h"

#include <QEvent>
#include <QWidget>

CardCorners::CardCorners(QWidget* clippedCard) : QObject(clippedCard), card(clippedCard)
{
    card->installEventFilter(this);
    clip();
}

bool CardCorners::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == card && event->type() == QEvent::Resize)
        clip();
    return QObject::eventFilter(watched, event);
}

void CardCorners::clip()
{
    card->setMask(roundedRegion(card->size(), radius));
}
