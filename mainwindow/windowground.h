#pragma once

#include <QObject>

class QWidget;

/// Fills the round corners of a translucent window while it covers its screen: nothing of what lies behind
/// shines through there. GUI thread.
class WindowGround : public QObject
{
    Q_OBJECT

public:
    /// Watches the window from now on, and goes with it.
    explicit WindowGround(QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* window;
};
