#include "widgets/kvtooltip.h"

#include "widgets/roundedregion.h"

#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QTimerEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdlib>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int showDelayMs = 2000;
constexpr int shownMs = 3000;
constexpr int leaveDelayMs = 300;
constexpr int leastWidth = 100;
constexpr int fixedHeight = 20;
constexpr int cornerRadius = 5;
constexpr int above = 0;
constexpr int aboveLeft = 2;

} // namespace

KvToolTip::KvToolTip(QString text, int place, QWidget* parent)
    : QDialog(parent), label(new QLabel(text, this)), placement(place)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    label->setAlignment(Qt::AlignCenter);
    label->setTextFormat(Qt::PlainText);
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setStyleSheet(u".KvToolTip { min-width: 100px; min-height: 20px; max-height: 20px; }"
                  "QLabel { font: 10px \"Noto Sans SC Medium\"; color: #646464; background: #FFFFFF; "
                  "border: 1px solid #A7A7A7; border-radius: 5px; padding: 0px 10px; }"_s);
    hide();
    fitText();
}

KvToolTip::~KvToolTip() = default;

void KvToolTip::setTarget(QWidget* widget)
{
    if (widget == nullptr || widget == target)
        return;
    if (target != nullptr) {
        target->removeEventFilter(this);
        disconnect(target, &QObject::destroyed, this, &KvToolTip::dismiss);
    }
    target = widget;
    target->installEventFilter(this);
    target->setMouseTracking(true);
    connect(target, &QObject::destroyed, this, &KvToolTip::dismiss);
}

void KvToolTip::setXOffset(int offset)
{
    if (offset == x_offset)
        return;
    x_offset = offset;
    emit xOffsetChanged(offset);
}

void KvToolTip::setYOffset(int offset)
{
    if (offset == y_offset)
        return;
    y_offset = offset;
    emit yOffsetChanged(offset);
}

QString KvToolTip::text() const
{
    return label->text();
}

void KvToolTip::setText(const QString& text)
{
    if (text == label->text())
        return;
    label->setText(text);
    fitText();
    emit textChanged(text);
}

Qt::Alignment KvToolTip::alignment() const
{
    return label->alignment();
}

void KvToolTip::setAlignment(Qt::Alignment alignment)
{
    if (alignment == label->alignment())
        return;
    label->setAlignment(alignment);
    emit alignmentChanged(alignment);
}

void KvToolTip::fitText()
{
    // It is placed by its size before it is first shown.
    ensurePolished();
    label->ensurePolished();
    resize(std::max(leastWidth, label->sizeHint().width()), fixedHeight);
    setMask(roundedRegion(size(), cornerRadius));
}

bool KvToolTip::eventFilter(QObject* obj, QEvent* ev)
{
    if (obj == target) {
        if (ev->type() == QEvent::Enter)
            onEnter(*target);
        else if (ev->type() == QEvent::Leave)
            onLeave();
        else if (ev->type() == QEvent::Hide || ev->type() == QEvent::Wheel)
            // What scrolls away from under the pointer is not told that the pointer has left.
            dismiss();
    }
    return QDialog::eventFilter(obj, ev);
}

void KvToolTip::onEnter(const QWidget& over)
{
    const QPoint corner = over.mapToGlobal(QPoint(0, 0));
    if (placement == above)
        moveOnScreen({corner.x() - std::abs(width() - over.width()) / 2, corner.y() - height()}, over);
    else if (placement == aboveLeft)
        moveOnScreen({corner.x() - width(), corner.y() - height()}, over);
    else
        return;
    if (!showTimer.isActive())
        showTimer.start(showDelayMs, this);
}

void KvToolTip::onLeave()
{
    showTimer.stop();
    hideTimer.stop();
    hideTimer.start(leaveDelayMs, this);
}

void KvToolTip::dismiss()
{
    showTimer.stop();
    hideTimer.stop();
    hide();
}

void KvToolTip::moveOnScreen(QPoint corner, const QWidget& over)
{
    const QRect screen = over.screen()->geometry();
    const int rightmost = std::max(screen.left(), screen.right() + 1 - width());
    const int x = std::clamp(corner.x(), screen.left(), rightmost);
    // Without room above it goes below, not over the target, or the pointer would leave that.
    const int y = corner.y() >= screen.top() ? corner.y() : over.mapToGlobal(QPoint(0, over.height())).y();
    move(x, y);
}

void KvToolTip::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == showTimer.timerId()) {
        showTimer.stop();
        if (isHidden())
            show();
        if (!hideTimer.isActive())
            hideTimer.start(shownMs, this);
    } else if (event->timerId() == hideTimer.timerId()) {
        dismiss();
    } else {
        QDialog::timerEvent(event);
    }
}

void KvToolTip::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
}

void KvToolTip::paintEvent(QPaintEvent*)
{
    // Under the label's smoothed corners, where no compositor would mix them with what lies behind.
    QPainter painter(this);
    for (const QRect& part : roundedRegion(size(), cornerRadius))
        painter.fillRect(part, QColor(0xA7, 0xA7, 0xA7));
}
