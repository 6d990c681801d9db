#pragma once

#include <QObject>
#include <QPointer>

class QWidget;
class QWindow;

/// Lets Qt know where a window stands. GUI thread.
///
/// Under X11 a window manager puts a new window into a frame of its own; taken over at the wrong moment, the
/// native window goes on believing that it stands at the frame's origin, the screen's corner. Nothing tells
/// it better, and menus and clicks would go astray. The widget knows its place, and the first picture is when
/// the manager is done.
class NativePosition : public QObject
{
public:
    /// `topLevel` owns it.
    explicit NativePosition(QWidget* topLevel);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watchNative();
    void settle();

    QWidget* widget;
    QPointer<QWindow> native;
};
