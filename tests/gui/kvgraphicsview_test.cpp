#include "display/kvgraphicsview.h"
#include "tests/gui/wheelturns.h"

#include <QCursor>
#include <QGraphicsRectItem>
#include <QGraphicsSceneMouseEvent>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr int notch = 120;

/// An item that counts the double clicks that reach it.
class ClickedItem : public QGraphicsRectItem
{
public:
    using QGraphicsRectItem::QGraphicsRectItem;
    int doubleClicks = 0;

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override { event->accept(); }
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent*) override { ++doubleClicks; }
};

class KvGraphicsViewTest : public testing::Test
{
protected:
    KvGraphicsViewTest()
    {
        item = new ClickedItem(0, 0, 1280, 720);
        scene.addItem(item);
        view.setScene(&scene);
        view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.resize(640, 400);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
    }
    void turn(int delta, int times = 1)
    {
        for (int i = 0; i < times; ++i)
            turnWheel(view, delta);
    }
    double zoom() const { return view.transform().m11(); }

    QGraphicsScene scene;
    ClickedItem* item;
    KvGraphicsView view;
};

} // namespace

TEST_F(KvGraphicsViewTest, DragsByHandAndZoomsUnderTheMouse)
{
    const KvGraphicsView fresh;
    EXPECT_EQ(fresh.dragMode(), QGraphicsView::ScrollHandDrag);
    EXPECT_EQ(fresh.resizeAnchor(), QGraphicsView::NoAnchor);
    EXPECT_EQ(fresh.transformationAnchor(), QGraphicsView::AnchorUnderMouse);
    EXPECT_EQ(fresh.contentsMargins(), QMargins(0, 0, 0, 0));
    EXPECT_EQ(fresh.styleSheet(), QStringLiteral("border: 0px;"));
    EXPECT_DOUBLE_EQ(fresh.scaleFactor(), 1.0);
}

TEST_F(KvGraphicsViewTest, AStepInMagnifiesByOneTenthInBothDirections)
{
    turn(notch);
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 1.1);
    EXPECT_DOUBLE_EQ(view.transform().m11(), 1.1);
    EXPECT_DOUBLE_EQ(view.transform().m22(), 1.1);
    EXPECT_DOUBLE_EQ(view.transform().m12(), 0.0);
}

TEST_F(KvGraphicsViewTest, TenStepsInMagnifyAboutTwoAndAHalfTimesAndTenOutLeadBack)
{
    turn(notch, 10);
    EXPECT_NEAR(view.scaleFactor(), 2.5937, 1e-4);
    EXPECT_NEAR(zoom(), 2.5937, 1e-4);
    turn(-notch, 10);
    EXPECT_NEAR(view.scaleFactor(), 1.0, 1e-9);
    // From here on it stays.
    turn(-notch, 20);
    EXPECT_NEAR(view.scaleFactor(), 1.0, 1e-9);
    EXPECT_NEAR(zoom(), 1.0, 1e-9);
}

TEST_F(KvGraphicsViewTest, CannotBeZoomedOutBelowTheFit)
{
    turn(-notch, 5);
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 1.0);
    EXPECT_DOUBLE_EQ(zoom(), 1.0);
}

TEST_F(KvGraphicsViewTest, ZoomingInEndsWithTheStepThatPassesFifty)
{
    turn(notch, 41);
    EXPECT_LT(view.scaleFactor(), 50.0);
    turn(notch);
    EXPECT_GT(view.scaleFactor(), 50.0);
    EXPECT_LT(view.scaleFactor(), 55.0);
    const double highest = view.scaleFactor();
    turn(notch, 10);
    EXPECT_DOUBLE_EQ(view.scaleFactor(), highest);
    EXPECT_NEAR(zoom(), highest, 1e-6);
    turn(-notch);
    EXPECT_LT(view.scaleFactor(), 50.0);
}

TEST_F(KvGraphicsViewTest, TheSmallestTurnIsAStepAndNoVerticalTurnIsAStepOut)
{
    turn(1);
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 1.1);
    turn(600);
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 1.1 * 1.1) << "however far, one step";
    turnWheel(view, QPoint(notch, 0), QPointF(300, 200));
    EXPECT_NEAR(view.scaleFactor(), 1.1, 1e-12);
    turn(-1);
    EXPECT_NEAR(view.scaleFactor(), 1.0, 1e-12);
}

TEST_F(KvGraphicsViewTest, TakesEveryTurnOfTheWheelAndScrollsOnNone)
{
    EXPECT_TRUE(turnWheel(view, -notch)) << "at the lower limit";
    turn(notch, 42);
    const int vertical = view.verticalScrollBar()->value();
    EXPECT_TRUE(turnWheel(view, notch)) << "at the upper limit";
    EXPECT_EQ(view.verticalScrollBar()->value(), vertical);
    EXPECT_TRUE(turnWheel(view, QPoint(0, 0), QPointF(10, 10)));
}

TEST_F(KvGraphicsViewTest, ThePlaceUnderTheMouseStays)
{
    // Larger than the view, so that there is room to move it.
    turn(notch, 10);
    view.centerOn(640, 360);
    const QPoint place(150, 300);
    QCursor::setPos(view.viewport()->mapToGlobal(QPoint(5, 5)));
    QCursor::setPos(view.viewport()->mapToGlobal(place));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return view.underMouse() && QCursor::pos() == view.viewport()->mapToGlobal(place); }));
    QTest::mouseMove(view.viewport(), place);
    const QPointF before = view.mapToScene(place);
    turnWheel(view, QPoint(0, notch), place);
    // The view scrolls by whole pixels; zoomed about its middle the place would have moved 17 of them.
    const QPointF moved = (view.mapToScene(place) - before) * zoom();
    EXPECT_LT(std::abs(moved.x()), 2.5);
    EXPECT_LT(std::abs(moved.y()), 2.5);
}

TEST_F(KvGraphicsViewTest, DraggingMovesThePicture)
{
    item->setAcceptedMouseButtons(Qt::NoButton);
    turn(notch, 20);
    view.centerOn(640, 360);
    const QPoint from(320, 200);
    const QPointF held = view.mapToScene(from);
    QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(view.viewport(), from + QPoint(20, 10));
    QTest::mouseMove(view.viewport(), from + QPoint(60, -40));
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, Qt::NoModifier, from + QPoint(60, -40));
    const QPointF there = view.mapToScene(from + QPoint(60, -40));
    EXPECT_NEAR(there.x(), held.x(), 1.0);
    EXPECT_NEAR(there.y(), held.y(), 1.0);
}

TEST_F(KvGraphicsViewTest, ADoubleClickFitsTheSceneAndIsPassedOn)
{
    turn(notch, 7);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(320, 200));
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 1.0);
    // 640 x 400 for 1280 x 720: the width decides, the aspect ratio stays.
    EXPECT_NEAR(view.transform().m11(), 0.5, 0.01);
    EXPECT_DOUBLE_EQ(view.transform().m22(), view.transform().m11());
    const QRect shown = view.mapFromScene(scene.sceneRect()).boundingRect();
    EXPECT_GE(shown.left(), 0);
    EXPECT_LE(shown.right(), view.viewport()->width());
    EXPECT_EQ(item->doubleClicks, 1);
}

TEST_F(KvGraphicsViewTest, ADoubleClickWithoutASceneOnlyResetsTheScale)
{
    turn(notch, 3);
    const double before = zoom();
    view.setScene(nullptr);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton);
    EXPECT_DOUBLE_EQ(view.scaleFactor(), 1.0);
    EXPECT_DOUBLE_EQ(zoom(), before);
}

TEST_F(KvGraphicsViewTest, AResizeResetsTheScaleAndLeavesTheTransform)
{
    turn(notch, 3);
    const double before = zoom();
    view.resize(800, 500);
    ASSERT_TRUE(QTest::qWaitFor([this] { return view.scaleFactor() == 1.0; }));
    EXPECT_DOUBLE_EQ(zoom(), before);
    // So the limits count anew from here.
    turn(-notch);
    EXPECT_DOUBLE_EQ(zoom(), before);
}
