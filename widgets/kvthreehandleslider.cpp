#include "widgets/kvthreehandleslider.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int horizontalOrientation = 1;

/// Bounds are compared unsigned, which makes a negative value larger than any positive one.
uint64_t extended(int value)
{
    return static_cast<uint64_t>(static_cast<int64_t>(value));
}

} // namespace

KvThreeHandleSlider::KvThreeHandleSlider(QWidget* parent, int axis, int handles)
    : QWidget(parent), center((upper - lower) / 2), baseRangeColor(0x00, 0x4B, 0x6A),
      disabledColor(0xC7, 0xC7, 0xC7), orientation(axis), mode(handles)
{
    setColors(true);
    if (allHandlesShown())
        metrics.rangeCornerRadius = 0;
    publishRange();
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setMinimumHeight(30);
}

void KvThreeHandleSlider::setHandleMode(int handles)
{
    mode = handles;
    metrics.rangeCornerRadius = allHandlesShown() ? 0 : ThreeHandleMetrics().rangeCornerRadius;
    upper = static_cast<int>(maximumBound);
    lower = static_cast<int>(minimumBound);
    publishRange();
}

int KvThreeHandleSlider::effectiveLowerValue() const
{
    return effectiveLower.load();
}

int KvThreeHandleSlider::effectiveUpperValue() const
{
    return effectiveUpper.load();
}

int KvThreeHandleSlider::lowerValue() const
{
    return lower;
}

int KvThreeHandleSlider::upperValue() const
{
    return upper;
}

int KvThreeHandleSlider::centerValue() const
{
    return center;
}

int KvThreeHandleSlider::handleMode() const
{
    return mode;
}

uint64_t KvThreeHandleSlider::minimum() const
{
    return minimumBound;
}

uint64_t KvThreeHandleSlider::maximum() const
{
    return maximumBound;
}

QSize KvThreeHandleSlider::minimumSizeHint() const
{
    return {2 * metrics.sideHandleWidth, metrics.sideHandleWidth};
}

bool KvThreeHandleSlider::allHandlesShown() const
{
    return mode == ThreeHandleGeometry::allHandles;
}

void KvThreeHandleSlider::publishRange()
{
    effectiveLower.store(allHandlesShown() ? lower : static_cast<int>(minimumBound));
    effectiveUpper.store(allHandlesShown() ? upper : static_cast<int>(maximumBound));
}

void KvThreeHandleSlider::setLowerValue(int aLowerValue)
{
    const uint64_t limited = std::min(extended(aLowerValue), maximumBound);
    lower = static_cast<int>(std::max(limited, minimumBound));
    publishRange();
    emit lowerValueChanged(lower);
    update();
}

void KvThreeHandleSlider::setUpperValue(int aUpperValue)
{
    const uint64_t limited = std::min(extended(aUpperValue), maximumBound);
    upper = allHandlesShown() ? std::max(static_cast<int>(limited), center)
                              : static_cast<int>(std::max(limited, minimumBound));
    publishRange();
    emit upperValueChanged(upper);
    update();
}

void KvThreeHandleSlider::setCenterValue(int center_value)
{
    center = std::max(std::min(center_value, upper), lower);
    emit centerValueChanged(center);
    update();
}

void KvThreeHandleSlider::setMinimum(int aMinimum)
{
    minimumBound = extended(aMinimum);
    resetToBounds();
}

void KvThreeHandleSlider::setMaximum(int aMaximum)
{
    maximumBound = extended(aMaximum);
    resetToBounds();
}

void KvThreeHandleSlider::resetToBounds()
{
    span = static_cast<int>(maximumBound - minimumBound);
    lower = static_cast<int>(std::min(minimumBound, maximumBound));
    publishRange();
    emit lowerValueChanged(lower);

    upper = allHandlesShown() ? std::max(static_cast<int>(maximumBound), center)
                              : static_cast<int>(std::max(maximumBound, minimumBound));
    publishRange();
    emit upperValueChanged(upper);
    update();
    emit rangeChanged(static_cast<int>(minimumBound), static_cast<int>(maximumBound));
}

ThreeHandleGeometry KvThreeHandleSlider::geometryNow() const
{
    ThreeHandleGeometry geometry;
    geometry.metrics = metrics;
    geometry.minimum = minimumBound;
    geometry.span = span;
    geometry.lower = lower;
    geometry.upper = upper;
    geometry.center = center;
    geometry.mode = mode;
    geometry.horizontal = orientation == horizontalOrientation;
    geometry.length = geometry.horizontal ? width() : height();
    geometry.breadth = geometry.horizontal ? height() : width();
    return geometry;
}

void KvThreeHandleSlider::paintEvent(QPaintEvent*)
{
    const ThreeHandleGeometry geometry = geometryNow();
    const QRect groove = geometry.groove();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    const auto drawRounded = [&painter](const QRect& area, const QColor& fill, int radius) {
        painter.setBrush(fill);
        painter.drawRoundedRect(area, radius, radius);
    };

    drawRounded(groove, QColor(208, 208, 208), ThreeHandleMetrics().rangeCornerRadius);
    if (allHandlesShown()) {
        drawRounded(geometry.lowerHandle(), startHandleFill, metrics.sideHandleCornerRadius);
        drawRounded(geometry.upperHandle(), endHandleFill, metrics.sideHandleCornerRadius);
    }
    const QRect range = geometry.range();
    if (range.isValid())
        drawRounded(range.intersected(groove), rangeFill, metrics.rangeCornerRadius);
    if ((mode & ThreeHandleGeometry::centerBit) != 0) {
        painter.setPen(
            QPen(centerOutline, metrics.centerOutlineWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
        drawRounded(geometry.centerHandle(), centerFill, metrics.centerHandleCornerRadius);
    }
}

int KvThreeHandleSlider::alongAxis(const QPoint& position) const
{
    return orientation == horizontalOrientation ? position.x() : position.y();
}

void KvThreeHandleSlider::mousePressEvent(QMouseEvent* event)
{
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        QWidget::mousePressEvent(event);
        return;
    }
    // A release is lost when the slider is disabled under a drag.
    lowerPressed = upperPressed = centerPressed = false;

    const QPoint point = event->position().toPoint();
    const int position = alongAxis(point);
    const ThreeHandleGeometry geometry = geometryNow();
    if (geometry.centerHandle().contains(point)) {
        centerPressed = true;
        dragOffset = position - metrics.centerTrackMargin / 2 - geometry.centerPosition();
    } else if (geometry.lowerHandle().contains(point)) {
        lowerPressed = true;
        dragOffset = position - metrics.sideHandleWidth / 2 - geometry.lowerPosition();
    } else if (geometry.upperHandle().contains(point)) {
        upperPressed = true;
        dragOffset = position - metrics.sideHandleWidth / 2 - geometry.upperPosition();
    } else {
        setCenterValue(geometry.valueAt(position));
        emit centerValueTrackClick(center);
    }
}

void KvThreeHandleSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    const int position = alongAxis(event->position().toPoint());
    const bool sides = (mode & ThreeHandleGeometry::sidesBit) != 0;
    const bool middle = (mode & ThreeHandleGeometry::centerBit) != 0;
    if (lowerPressed && sides)
        dragLower(position);
    else if (upperPressed && sides && middle)
        dragUpper(position);
    else if (centerPressed && middle)
        dragCenter(position);
}

void KvThreeHandleSlider::dragLower(int position)
{
    if (position < 0)
        return;
    const ThreeHandleGeometry geometry = geometryNow();
    const int rightEdge = position + metrics.sideHandleWidth / 2 - dragOffset;
    setLowerValue(rightEdge > geometry.centerPosition() ? center
                                                        : geometry.lowerValueAt(position, dragOffset));
}

void KvThreeHandleSlider::dragUpper(int position)
{
    const ThreeHandleGeometry geometry = geometryNow();
    const int limit = geometry.centerPosition() + metrics.centerHandleWidth + metrics.sideHandleWidth;
    setUpperValue(limit > position - dragOffset ? center : geometry.upperValueAt(position, dragOffset));
}

void KvThreeHandleSlider::dragCenter(int position)
{
    const ThreeHandleGeometry geometry = geometryNow();
    if (allHandlesShown()) {
        if (position > geometry.upperPosition()
            || position < geometry.lowerPosition() + metrics.sideHandleWidth) {
            setCenterValue(center);
            return;
        }
    } else {
        // The limits are meant to be the widget's own place in its parent, though the position is counted in
        // it.
        const int begin = alongAxis(pos());
        if (position < begin || position > begin + geometry.length)
            return;
    }
    setCenterValue(std::max(std::min(geometry.valueAt(position - dragOffset), upper), lower));
    emit centerValueMove(center);
}

void KvThreeHandleSlider::mouseReleaseEvent(QMouseEvent*)
{
    lowerPressed = upperPressed = centerPressed = false;
}

void KvThreeHandleSlider::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::EnabledChange)
        return;
    setColors(isEnabled());
    update();
}

void KvThreeHandleSlider::setColors(bool enabled)
{
    const QColor accent = baseRangeColor;
    const QColor grey = disabledColor;
    rangeFill = enabled ? accent : grey;
    currentRangeColor = enabled ? baseRangeColor : disabledColor;
    startHandleFill = enabled ? accent : grey;
    endHandleFill = enabled ? accent : grey;
    centerFill = enabled ? QColor(0xFF, 0xFF, 0xFF) : grey;
    centerOutline = enabled ? accent : QColor(0x70, 0x70, 0x70);
}
