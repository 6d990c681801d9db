#pragma once

#include <QSlider>

/// A slider whose handle jumps to a click beside it. GUI thread only.
class KvSlider : public QSlider
{
    Q_OBJECT

public:
    explicit KvSlider(QWidget* parent = nullptr);
    explicit KvSlider(Qt::Orientation orientation, QWidget* parent = nullptr);

signals:
    /// The value under a click beside the handle; past the bounds when the click lies beyond the track's end.
    void trackClicked(int value);

protected:
    void mousePressEvent(QMouseEvent* event) override;
};
