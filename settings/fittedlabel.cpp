#include "settings/fittedlabel.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace {

/// What the narrowest pane leaves for a name beside its unit and its editor, in pixels.
constexpr int widthToClaim = 102;
/// How far letters may move together before they are hard to read, in percent.
constexpr int narrowestStretch = 75;

} // namespace

FittedLabel::FittedLabel(QWidget* parent) : QLabel(parent) {}

QSize FittedLabel::minimumSizeHint() const
{
    const QSize whole = QLabel::minimumSizeHint();
    return {std::min(whole.width(), widthToClaim), whole.height()};
}

void FittedLabel::paintEvent(QPaintEvent* event)
{
    const int available = contentsRect().width();
    const int needed = fontMetrics().horizontalAdvance(text());
    if (needed <= available) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    QFont narrow = font();
    narrow.setStretch(std::clamp(available * 100 / std::max(needed, 1), narrowestStretch, 100));
    painter.setFont(narrow);
    const QString shown = QFontMetrics(narrow, this).elidedText(text(), Qt::ElideRight, available);
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(),
                          shown, foregroundRole());
}
