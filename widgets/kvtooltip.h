#pragma once

#include <QBasicTimer>
#include <QDialog>
#include <QPointer>

class QLabel;

/// A bubble that appears when the pointer has rested on its target for two seconds and goes three seconds
/// later, or 0.3 s after the pointer has left. GUI thread only.
class KvToolTip : public QDialog
{
    Q_OBJECT
    Q_PROPERTY(int x_offset READ xOffset WRITE setXOffset NOTIFY xOffsetChanged)
    Q_PROPERTY(int y_offset READ yOffset WRITE setYOffset NOTIFY yOffsetChanged)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(Qt::Alignment alignment READ alignment WRITE setAlignment NOTIFY alignmentChanged)

public:
    /// place: 0 centred above the target, 2 at its upper left corner; with any other it never appears.
    KvToolTip(QString text, int place, QWidget* parent);
    ~KvToolTip() override;

    /// The widget whose tip this is, not owned.
    void setTarget(QWidget* widget);

    /// The offsets are kept for their readers; the placement does not use them.
    int xOffset() const { return x_offset; }
    void setXOffset(int offset);
    int yOffset() const { return y_offset; }
    void setYOffset(int offset);
    QString text() const;
    void setText(const QString& text);
    Qt::Alignment alignment() const;
    void setAlignment(Qt::Alignment alignment);

    bool eventFilter(QObject* obj, QEvent* ev) override;

signals:
    void xOffsetChanged(int offset);
    void yOffsetChanged(int offset);
    void textChanged(QString text);
    void alignmentChanged(Qt::Alignment alignment);

protected:
    void timerEvent(QTimerEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void fitText();
    void onEnter(const QWidget& over);
    void onLeave();
    void dismiss();
    void moveOnScreen(QPoint corner, const QWidget& over);

    QLabel* label = nullptr;
    int x_offset = 0;
    int y_offset = 0;
    QPointer<QWidget> target;
    QBasicTimer showTimer;
    QBasicTimer hideTimer;
    int placement = 0;
};
