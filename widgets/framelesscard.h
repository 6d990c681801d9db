#pragma once

class QWidget;

/// Makes a dialog a card without the platform's frame: translucent at its rounded corners, dragged by
/// `titleBar`, one of its widgets, and aware of its place on the screen. Once, right after its form was
/// built. GUI thread.
void makeFramelessCard(QWidget* dialog, QWidget* titleBar);
