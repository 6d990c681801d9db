#pragma once

class QString;
class QWidget;

/// Shows a parameter's description while the pointer rests on its item, in place of an earlier one. No bubble
/// for an empty description. GUI thread only.
void attachItemToolTip(QWidget* item, const QString& text);
