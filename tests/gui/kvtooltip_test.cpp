#include "widgets/kvtooltip.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

void enter(QWidget& target)
{
    QEnterEvent event(QPointF(1, 1), QPointF(1, 1), target.mapToGlobal(QPointF(1, 1)));
    QApplication::sendEvent(&target, &event);
}

void leave(QWidget& target)
{
    QEvent event(QEvent::Leave);
    QApplication::sendEvent(&target, &event);
}

/// A window with a small button in its middle.
class KvToolTipTest : public testing::Test
{
protected:
    KvToolTipTest()
    {
        window.setWindowFlag(Qt::FramelessWindowHint); // else it does not stand exactly where it is put
        window.setGeometry(200, 200, 300, 200);
        button->setGeometry(140, 90, 30, 24);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    QPoint corner() const { return button->mapToGlobal(QPoint(0, 0)); }

    QWidget window;
    QWidget* button = new QWidget(&window);
};

} // namespace

TEST_F(KvToolTipTest, AppearsAfterTwoSecondsAndGoesThreeSecondsLater)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    KvToolTip never(u"Play"_s, 1, &window);
    KvToolTip left(u"Play"_s, 2, &window);
    for (KvToolTip* each : {&tip, &never, &left})
        each->setTarget(button);
    bool neverShown = true;
    QElapsedTimer clock;
    clock.start();
    enter(*button);
    ASSERT_TRUE(QTest::qWaitFor([&] { return tip.isVisible(); }, 4000));
    EXPECT_GE(clock.elapsed(), 1900);
    EXPECT_EQ(tip.pos(), corner() - QPoint((tip.width() - 30) / 2, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return left.isVisible(); }, 1000));
    EXPECT_EQ(left.pos(), corner() - QPoint(left.width(), 20));
    clock.restart();
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            neverShown = neverShown && !never.isVisible();
            return !tip.isVisible();
        },
        5000));
    EXPECT_GE(clock.elapsed(), 2800);
    EXPECT_TRUE(neverShown);
}

TEST_F(KvToolTipTest, GoesSoonAfterThePointerHasLeft)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    tip.setTarget(button);
    enter(*button);
    ASSERT_TRUE(QTest::qWaitFor([&] { return tip.isVisible(); }, 4000));
    QElapsedTimer clock;
    clock.start();
    leave(*button);
    EXPECT_TRUE(tip.isVisible());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !tip.isVisible(); }, 2000));
    EXPECT_GE(clock.elapsed(), 250);
    EXPECT_LT(clock.elapsed(), 1500) << "not only when its time was up";
}

TEST_F(KvToolTipTest, StaysAwayWhenThePointerLeavesInTime)
{
    KvToolTip early(u"Play"_s, 0, &window);
    KvToolTip witness(u"Play"_s, 0, &window);
    auto* neighbour = new QWidget(&window);
    early.setTarget(button);
    witness.setTarget(neighbour);
    enter(*button);
    leave(*button);
    enter(*neighbour);
    ASSERT_TRUE(QTest::qWaitFor([&] { return witness.isVisible(); }, 4000));
    EXPECT_FALSE(early.isVisible());
}

TEST_F(KvToolTipTest, GoesWithItsTarget)
{
    KvToolTip hidden(u"Play"_s, 0, &window);
    KvToolTip destroyed(u"Play"_s, 0, &window);
    auto* neighbour = new QWidget(&window);
    neighbour->setGeometry(10, 90, 30, 24);
    neighbour->show();
    hidden.setTarget(button);
    destroyed.setTarget(neighbour);
    enter(*button);
    enter(*neighbour);
    ASSERT_TRUE(QTest::qWaitFor([&] { return hidden.isVisible() && destroyed.isVisible(); }, 4000));
    delete neighbour;
    EXPECT_FALSE(destroyed.isVisible());
    window.hide();
    EXPECT_FALSE(hidden.isVisible());
}

TEST_F(KvToolTipTest, GoesWhenTheWheelScrollsItsTargetAway)
{
    KvToolTip shown(u"Play"_s, 0, &window);
    KvToolTip due(u"Play"_s, 0, &window);
    KvToolTip witness(u"Play"_s, 0, &window);
    auto* neighbour = new QWidget(&window);
    auto* third = new QWidget(&window);
    shown.setTarget(button);
    due.setTarget(neighbour);
    witness.setTarget(third);
    const auto turnWheelOver = [](QWidget& widget) {
        const QPointF place(widget.rect().center());
        QWheelEvent event(place, widget.mapToGlobal(place), QPoint(), QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&widget, &event);
    };
    enter(*button);
    ASSERT_TRUE(QTest::qWaitFor([&] { return shown.isVisible(); }, 4000));
    turnWheelOver(*button);
    EXPECT_FALSE(shown.isVisible());
    enter(*neighbour);
    turnWheelOver(*neighbour);
    enter(*third);
    ASSERT_TRUE(QTest::qWaitFor([&] { return witness.isVisible(); }, 4000));
    EXPECT_FALSE(due.isVisible());
}

TEST_F(KvToolTipTest, ANewTargetReplacesTheOldOne)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    auto* next = new QWidget(&window);
    next->setGeometry(40, 150, 30, 24);
    tip.setTarget(button);
    EXPECT_TRUE(button->hasMouseTracking());
    tip.setTarget(nullptr);
    enter(*button);
    EXPECT_EQ(tip.pos(), corner() - QPoint((tip.width() - 30) / 2, 20)) << "null is ignored";
    tip.setTarget(next);
    enter(*next);
    const QPoint atNext = tip.pos();
    EXPECT_EQ(atNext.y(), next->mapToGlobal(QPoint(0, 0)).y() - 20);
    enter(*button);
    EXPECT_EQ(tip.pos(), atNext);
}

TEST_F(KvToolTipTest, IsCentredByTheAbsoluteDifferenceOfTheWidths)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    button->resize(200, 24);
    tip.setTarget(button);
    enter(*button);
    EXPECT_EQ(tip.width(), 100);
    EXPECT_EQ(tip.pos(), corner() - QPoint(50, 20));
}

TEST_F(KvToolTipTest, StaysOnTheScreen)
{
    const QRect screen = window.screen()->geometry();
    KvToolTip above(u"Play"_s, 0, &window);
    KvToolTip left(u"Play"_s, 2, &window);
    above.setTarget(button);
    left.setTarget(button);
    button->move(0, 0);
    window.move(screen.topLeft());
    ASSERT_EQ(corner(), screen.topLeft());
    enter(*button);
    EXPECT_EQ(above.pos(), screen.topLeft() + QPoint(0, 24)) << "below, where above is no room";
    EXPECT_EQ(left.pos(), screen.topLeft() + QPoint(0, 24));
    window.move(screen.right() - 20, 300);
    enter(*button);
    EXPECT_EQ(above.geometry().right(), screen.right());
    EXPECT_EQ(above.y(), 280);
}

TEST_F(KvToolTipTest, TheOffsetsAreKeptAndToldAndMoveNothing)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    tip.setTarget(button);
    QSignalSpy x(&tip, &KvToolTip::xOffsetChanged);
    QSignalSpy y(&tip, &KvToolTip::yOffsetChanged);
    EXPECT_TRUE(tip.setProperty("x_offset", 7));
    EXPECT_TRUE(tip.setProperty("y_offset", 9));
    EXPECT_EQ(tip.property("x_offset").toInt(), 7);
    EXPECT_EQ(tip.property("y_offset").toInt(), 9);
    EXPECT_EQ(x.count(), 1);
    EXPECT_EQ(y.count(), 1);
    enter(*button);
    EXPECT_EQ(tip.pos(), corner() - QPoint((tip.width() - 30) / 2, 20));
}

TEST_F(KvToolTipTest, TextAndAlignmentAreToldWhenTheyChange)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    const auto* label = tip.findChild<QLabel*>();
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text(), u"Play"_s);
    EXPECT_EQ(label->alignment(), Qt::AlignCenter);
    QSignalSpy text(&tip, &KvToolTip::textChanged);
    QSignalSpy alignment(&tip, &KvToolTip::alignmentChanged);
    tip.setText(u"Play"_s);
    tip.setAlignment(Qt::AlignCenter);
    EXPECT_EQ(text.count(), 0);
    EXPECT_EQ(alignment.count(), 0);
    tip.setProperty("text", u"Shows the events since the last frame"_s);
    tip.setProperty("alignment", QVariant::fromValue<Qt::Alignment>(Qt::AlignLeft));
    EXPECT_EQ(text.count(), 1);
    EXPECT_EQ(alignment.count(), 1);
    EXPECT_EQ(label->text(), u"Shows the events since the last frame"_s);
    EXPECT_EQ(label->alignment(), Qt::AlignLeft);
    EXPECT_GT(tip.width(), 100) << "wide enough for the text";
}

TEST_F(KvToolTipTest, IsAWhiteBubbleWithCleanCorners)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    EXPECT_FALSE(tip.isVisible());
    EXPECT_EQ(tip.size(), QSize(100, 20));
    EXPECT_EQ(tip.windowFlags() & Qt::WindowType_Mask, Qt::ToolTip);
    EXPECT_TRUE(tip.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(tip.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_TRUE(tip.testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(tip.testAttribute(Qt::WA_QuitOnClose));
    const QImage image = tip.grab().toImage();
    EXPECT_EQ(image.pixelColor(8, 10), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(50, 0), QColor(0xA7, 0xA7, 0xA7));
    EXPECT_EQ(image.pixelColor(0, 10), QColor(0xA7, 0xA7, 0xA7));
    const QRegion shape = tip.mask();
    EXPECT_FALSE(shape.contains(QPoint(0, 0)));
    EXPECT_FALSE(shape.contains(QPoint(99, 19)));
    for (const QRect& part : shape)
        for (int y = part.top(); y <= part.bottom(); ++y)
            for (int x = part.left(); x <= part.right(); ++x)
                ASSERT_EQ(image.pixelColor(x, y).alpha(), 255) << x << ", " << y;
    const auto* label = tip.findChild<QLabel*>();
    EXPECT_EQ(label->palette().color(QPalette::WindowText), QColor(0x64, 0x64, 0x64));
    EXPECT_EQ(label->font().pixelSize(), 10);
    EXPECT_EQ(label->font().family(), u"Noto Sans SC Medium"_s);
    // Ten pixels and the border's one at each side.
    const int text = QFontMetrics(label->font()).horizontalAdvance(label->text());
    EXPECT_NEAR(label->sizeHint().width(), text + 2 * (10 + 1), 1);
}

TEST_F(KvToolTipTest, TakesNoFocusAndNoEvents)
{
    KvToolTip tip(u"Play"_s, 0, &window);
    tip.setTarget(button);
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    tip.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tip));
    EXPECT_EQ(QApplication::activeWindow(), &window);
    QEvent event(QEvent::Leave);
    EXPECT_FALSE(tip.eventFilter(button, &event));
}
