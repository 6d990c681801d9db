#include "display/kvgraphicsview.h"

#include <QMouseEvent>
#include <QWheelEvent>

namespace {

constexpr double zoomStep = 1.1;

} // namespace

KvGraphicsView::KvGraphicsView(QWidget* parent) : QGraphicsView(parent)
{
    setDragMode(QGraphicsView::ScrollHandDrag);
    setResizeAnchor(QGraphicsView::NoAnchor);
    setTransformationAnchor(QGraphicsView::AnchorUnderMouse);
    setContentsMargins(0, 0, 0, 0);
    setStyleSheet(QStringLiteral("border: 0px;"));
}

void KvGraphicsView::fit(const QGraphicsItem* item)
{
    currentScale = 1.0;
    fitInView(item, Qt::KeepAspectRatio);
}

void KvGraphicsView::wheelEvent(QWheelEvent* event)
{
    // The limits are tested before the step: the scale may end a little beyond them.
    if (event->angleDelta().y() >= 1) {
        if (maximumScale > currentScale) {
            scale(zoomStep, zoomStep);
            currentScale *= zoomStep;
        }
    } else if (currentScale > minimumScale) {
        scale(1 / zoomStep, 1 / zoomStep);
        currentScale /= zoomStep;
    }
    event->accept();
}

void KvGraphicsView::mouseDoubleClickEvent(QMouseEvent* event)
{
    currentScale = 1.0;
    if (scene())
        fitInView(scene()->sceneRect(), Qt::KeepAspectRatio);
    QGraphicsView::mouseDoubleClickEvent(event);
}

void KvGraphicsView::resizeEvent(QResizeEvent* event)
{
    currentScale = 1.0;
    QGraphicsView::resizeEvent(event);
}
