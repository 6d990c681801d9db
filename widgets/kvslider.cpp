#include "widgets/kvslider.h"

#include "widgets/slidertrack.h"

#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionSlider>

KvSlider::KvSlider(QWidget* parent) : QSlider(parent) {}

KvSlider::KvSlider(Qt::Orientation orientation, QWidget* parent) : QSlider(orientation, parent) {}

void KvSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QSlider::mousePressEvent(event);
        return;
    }

    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    const QPoint click = event->position().toPoint();
    if (handle.contains(click)) {
        QSlider::mousePressEvent(event);
        return;
    }

    const bool horizontal = orientation() == Qt::Horizontal;
    const SliderTrack track{
        .minimum = minimum(),
        .maximum = maximum(),
        .handleLength = horizontal ? handle.width() : handle.height(),
        .length = horizontal ? width() : height(),
    };
    const int value = track.valueAt(horizontal ? click.x() : click.y());
    setValue(value);
    emit trackClicked(value);
    event->accept();
}
