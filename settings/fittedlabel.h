#pragma once

#include <QLabel>

/// A label whose text is made to fit: where the place is too narrow, the letters move together; only what
/// even that does not fit is cut, with an ellipsis. The text itself stays whole. GUI thread only.
class FittedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit FittedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
