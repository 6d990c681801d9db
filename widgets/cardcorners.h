#pragma once

#include <QObject>

class QWidget;

/// Clips a frameless window to its rounded corners. Where no compositor runs, what is translucent would be
/// black there. GUI thread.
class CardCorners : public QObject
{
    Q_OBJECT

public:
    enum class Which { All, Bottom };

    /// Follows the card's size from now on, and goes with it. `radius`: pixels, as its style sheet rounds it.
    explicit CardCorners(QWidget* card, int radius = 9, Which which = Which::All);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void clip();

    QWidget* card;
    int radius;
    Which which;
};
