#pragma once

class QWidget;

/// Brings the layouts from a widget up to its scroll area into step with a child that was shown or hidden,
/// without waiting for the event loop: what the pointer presses next lies where it is drawn, and nothing is
/// painted twice. GUI thread only.
void settleLayouts(QWidget* widget);
