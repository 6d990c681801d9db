#pragma once

#include <QObject>

class QWidget;

/// Brings the keys of the play bar to a window's own key handler wherever in the window the focus is, except
/// while a field, a combo box or a list is being edited: that one keeps them to itself. Other windows keep
/// theirs. GUI thread.
class WindowKeys : public QObject
{
    Q_OBJECT

public:
    /// The window owns this.
    explicit WindowKeys(QWidget* window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* window;
};
