#pragma once

#include <QStyledItemDelegate>

/// Draws the items of a list without the frame around the focused one. GUI thread only.
class NoFocusFrameDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};
