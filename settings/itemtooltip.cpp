#include "settings/itemtooltip.h"

#include "widgets/kvtooltip.h"

namespace {

constexpr int leftOfTheItem = 2;

} // namespace

void attachItemToolTip(QWidget* item, const QString& text)
{
    delete item->findChild<KvToolTip*>(QString(), Qt::FindDirectChildrenOnly);
    if (text.isEmpty())
        return;
    auto* const toolTip = new KvToolTip(text, leftOfTheItem, item);
    toolTip->setTarget(item);
}
