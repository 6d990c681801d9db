#include "widgets/framelesscard.h"

#include <QDialog>
#include <QEvent>
#include <QExposeEvent>
#include <QTest>
#include <QWindow>
#include <gtest/gtest.h>

namespace {

/// Keeps from a window's widget that the window has been moved.
class MovesUntold : public QObject
{
    Q_OBJECT

public:
    bool eventFilter(QObject*, QEvent* event) override { return event->type() == QEvent::Move; }
};

} // namespace

TEST(FramelessCard, WithItsPictureItsWindowTakesThePlaceUpThatTheCardHas)
{
    QDialog card;
    auto* const title = new QWidget(&card);
    card.resize(200, 100);
    makeFramelessCard(&card, title);
    card.move(140, 180);
    card.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&card));

    // As a window manager leaves it that takes the window over while it is shown.
    MovesUntold untold;
    QWindow& native = *card.windowHandle();
    native.installEventFilter(&untold);
    native.setPosition(0, 0);
    QCoreApplication::processEvents();
    ASSERT_EQ(card.pos(), QPoint(140, 180));

    QExposeEvent picture(card.rect());
    QCoreApplication::sendEvent(&native, &picture);
    EXPECT_EQ(native.position(), QPoint(140, 180));
    EXPECT_EQ(card.mapToGlobal(QPoint(0, 0)), QPoint(140, 180)) << "where pop-ups are placed";
}

#include "framelesscard_test.moc"
