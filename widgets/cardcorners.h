#pragma once

#include <QObject>

class QWidget;

/// Clips a frameless card's window to its rounded corners. Where no compositor runs, what is translucent
/// would be black there. GUI thread.
class CardCorners : public QObject
{
    Q_OBJECT

public:
    static constexpr int radius = 9; ///< pixels, as the cards' style sheets round them

    /// Follows the card's size from now on, and goes with it.
    explicit CardCorners(QWidget* card);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void clip();

    QWidget* card;
};
