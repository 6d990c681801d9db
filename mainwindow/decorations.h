#pragma once

#include <QString>

class QWidget;

// What the window adds to its form. GUI thread.

/// The shadow that a pane casts.
void addPaneShadow(QWidget* pane);
/// A bubble above a button, the window's.
void addToolTip(QWidget* button, const QString& text);
/// The style sheet at a resource's address; none where there is nothing.
QString styleSheetFrom(const QString& address);
