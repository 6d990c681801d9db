#pragma once

#include "widgets/threehandlegeometry.h"

#include <QColor>
#include <QWidget>

#include <atomic>
#include <cstdint>

/// The playback timeline: a playhead and, in mode 3, handles for the start and end of a range that confines
/// it.
///
/// GUI thread only, but for effectiveLowerValue() and effectiveUpperValue(), which any thread may call.
class KvThreeHandleSlider : public QWidget
{
    Q_OBJECT

public:
    /// axis: 1 is horizontal, anything else vertical. handles: bit 0 shows the playhead, bit 1 the side
    /// handles.
    KvThreeHandleSlider(QWidget* parent, int axis, int handles);

    /// Changes which handles are shown and resets start and end to the bounds. Emits nothing; the caller
    /// repaints.
    void setHandleMode(int handles);

    /// The start of the range in mode 3, else the minimum. Any thread.
    int effectiveLowerValue() const;
    /// The end of the range in mode 3, else the maximum. Any thread.
    int effectiveUpperValue() const;

    int lowerValue() const;
    int upperValue() const;
    int centerValue() const;
    int handleMode() const;
    /// The bounds as they are compared: a negative bound is larger than every positive one.
    uint64_t minimum() const;
    uint64_t maximum() const;

    QSize minimumSizeHint() const override;

public slots:
    /// Held between the bounds only: the playhead and the upper value are not consulted.
    void setLowerValue(int aLowerValue);
    /// Held below the maximum and, in mode 3, at or above the playhead, else at or above the minimum.
    void setUpperValue(int aUpperValue);
    /// Held between the lower and the upper value.
    void setCenterValue(int center_value);
    /// Sets a bound and resets the lower and upper values to the bounds; the playhead stays as it is.
    void setMinimum(int aMinimum);
    void setMaximum(int aMaximum);

signals:
    void lowerValueChanged(int aLowerValue);
    void upperValueChanged(int aUpperValue);
    void rangeChanged(int aMin, int aMax);
    /// The playhead was set, by whomever.
    void centerValueChanged(int center_value);
    /// The user clicked beside the handles.
    void centerValueTrackClick(int center_value);
    /// The user dragged the playhead.
    void centerValueMove(int center_value);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    ThreeHandleGeometry geometryNow() const;
    bool allHandlesShown() const;
    int alongAxis(const QPoint& position) const;
    void resetToBounds();
    void dragLower(int position);
    void dragUpper(int position);
    void dragCenter(int position);
    void publishRange();
    void setColors(bool enabled);

    uint64_t minimumBound = 0;
    uint64_t maximumBound = ~uint64_t{0};
    ThreeHandleMetrics metrics;
    int lower = 0;
    int upper = -1;
    int center = 0;
    bool lowerPressed = false;
    bool upperPressed = false;
    bool centerPressed = false;
    int span = -1;
    int dragOffset = 0;
    QColor baseRangeColor;
    QColor disabledColor;
    QColor rangeFill;
    QColor currentRangeColor;
    QColor startHandleFill;
    QColor endHandleFill;
    QColor centerFill;
    QColor centerOutline;
    int orientation;
    int mode;
    // What effectiveLowerValue() and effectiveUpperValue() give, for the threads that play.
    std::atomic<int> effectiveLower{0};
    std::atomic<int> effectiveUpper{-1};
};
