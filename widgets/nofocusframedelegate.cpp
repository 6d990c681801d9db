#include "widgets/nofocusframedelegate.h"

void NoFocusFrameDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const
{
    QStyleOptionViewItem filled(option);
    initStyleOption(&filled, index);
    filled.state &= ~QStyle::State_HasFocus;
    QStyledItemDelegate::paint(painter, filled, index);
}
