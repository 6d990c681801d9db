#pragma once

#include <QLineEdit>

/// A line edit whose border takes the accent colour while it has the focus. GUI thread only.
class KvLineEditBase : public QLineEdit
{
    Q_OBJECT

public:
    explicit KvLineEditBase(QWidget* parent = nullptr);

    void setBorderColor(QString colour);

signals:
    /// The focus has come (true) or gone; the mouse has no part in it.
    void signalMouseHoverd(bool hovered);

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};
