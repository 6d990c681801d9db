#include "widgets/cardcorners.h"

#include "widgets/roundedregion.h"

#include <QEvent>
#include <QWidget>

CardCorners::CardCorners(QWidget* clippedCard, int cornerRadius, Which corners)
    : QObject(clippedCard), card(clippedCard), radius(cornerRadius), which(corners)
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
    // Upper corners that stay square are those of a card that begins above the window.
    const int above = which == Which::Bottom ? radius : 0;
    const QRegion region = roundedRegion(card->size() + QSize(0, above), radius).translated(0, -above);
    card->setMask(region & card->rect());
}
