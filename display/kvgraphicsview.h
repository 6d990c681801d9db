#pragma once

#include <QGraphicsView>

/// The view that the picture is zoomed and moved in: wheel zooms about the mouse, dragging moves, a double
/// click fits. GUI thread.
class KvGraphicsView : public QGraphicsView
{
    Q_OBJECT

public:
    explicit KvGraphicsView(QWidget* parent = nullptr);

    /// Zoom relative to the last fit.
    double scaleFactor() const { return currentScale; }
    /// Shows the whole item, as large as the view lets it.
    void fit(const QGraphicsItem* item);

protected:
    void wheelEvent(QWheelEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    double currentScale = 1.0;
    double minimumScale = 1.0;
    double maximumScale = 50.0;
};
