#include <QWKWidgets/widgetwindowagent.h>

#include "mainwindow/frame/resizeedges.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>
#include <gtest/gtest.h>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using Agent = QWK::WidgetWindowAgent;

namespace {

constexpr QSize anySize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);

/// A form of the main window's shape: menu buttons, the empty title space, caption buttons; below it a body
/// that covers everything up to the edges.
template <typename Base>
struct Form : Base
{
    explicit Form(bool withMaximize)
    {
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        auto* bar = new QWidget(this);
        bar->setFixedHeight(40);
        auto* row = new QHBoxLayout(bar);
        for (QWidget* child : {static_cast<QWidget*>(menu), static_cast<QWidget*>(title),
                               static_cast<QWidget*>(maximize), static_cast<QWidget*>(close)})
            row->addWidget(child);
        title->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        title->setStyleSheet(titleStyle);
        column->addWidget(bar);
        column->addWidget(body, 1);

        auto* agent = new Agent(this);
        agent->setup(this);
        agent->setTitleBar(title);
        agent->setSystemButton(Agent::Close, close);
        if (withMaximize)
            agent->setSystemButton(Agent::Maximize, maximize);
        this->setGeometry(100, 120, 600, 400);
        this->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(this));
    }

    void dropNativeWindow() { this->destroy(); }

    const QString titleStyle = u"border-top-left-radius: 6px;"_s;
    QPushButton* menu = new QPushButton(u"File"_s);
    QWidget* title = new QWidget;
    QPushButton* maximize = new QPushButton(u"Max"_s);
    QPushButton* close = new QPushButton(u"Close"_s);
    QWidget* body = new QWidget;
};

using MainForm = Form<QWidget>;
using DialogForm = Form<QDialog>;

void drag(QWidget* widget, const QPoint& from, const QPoint& distance)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, from);
    QTest::mouseMove(widget, from + distance);
    // The widget has moved with the pointer.
    QTest::mouseRelease(widget, Qt::LeftButton, {}, from);
}

/// A whole double click: Qt Test itself leaves the button down.
void doubleClick(QWidget* widget, const QPoint& place, Qt::MouseButton button = Qt::LeftButton)
{
    QTest::mouseDClick(widget, button, {}, place);
    QTest::mouseRelease(widget, button, {}, place);
}

/// Presses at a place of the native window, as a user does, and lets go at another.
void dragEdge(QWidget& form, const QPoint& from, const QPoint& to)
{
    QWindow* window = form.windowHandle();
    const QPoint global = window->mapToGlobal(to);
    QTest::mousePress(window, Qt::LeftButton, {}, from);
    QTest::mouseMove(window, window->mapFromGlobal(global));
    QTest::mouseRelease(window, Qt::LeftButton, {}, window->mapFromGlobal(global));
    QCoreApplication::processEvents();
}

} // namespace

TEST(WindowAgent, SetupMakesAFormFramelessTranslucentAndNative)
{
    QDialog form;
    Agent agent(&form);
    EXPECT_TRUE(agent.setup(&form));
    EXPECT_TRUE(form.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(form.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_TRUE(form.testAttribute(Qt::WA_NativeWindow));
    form.show();
    EXPECT_TRUE(form.windowHandle()->flags().testFlag(Qt::FramelessWindowHint));
}

TEST(WindowAgent, SetupKeepsTheOtherWindowFlags)
{
    QWidget form(nullptr, Qt::Tool | Qt::WindowStaysOnTopHint);
    Agent agent(&form);
    agent.setup(&form);
    EXPECT_EQ(form.windowFlags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_TRUE(form.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QDialog dialog;
    Agent dialogAgent(&dialog);
    dialogAgent.setup(&dialog);
    EXPECT_EQ(dialog.windowFlags() & Qt::WindowType_Mask, Qt::Dialog);
}

TEST(WindowAgent, SetupRefusesNothingAndASecondForm)
{
    QWidget form;
    QWidget other;
    Agent agent(&form);
    EXPECT_FALSE(agent.setup(nullptr));
    EXPECT_TRUE(agent.setup(&form));
    EXPECT_FALSE(agent.setup(&other));
    EXPECT_FALSE(other.windowFlags().testFlag(Qt::FramelessWindowHint));
}

TEST(WindowAgent, MayOutliveItsForm)
{
    QObject owner;
    Agent agent(&owner);
    auto form = std::make_unique<QWidget>();
    QWidget title;
    agent.setup(form.get());
    agent.setTitleBar(&title);
    form.reset();
    title.show();
    QTest::mousePress(&title, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mouseMove(&title, QPoint(50, 50));
    QTest::mouseRelease(&title, Qt::LeftButton, {}, QPoint(50, 50));
    EXPECT_TRUE(title.isVisible());
}

TEST(WindowAgent, TheTitleSpaceDragsTheWindow)
{
    MainForm form(true);
    drag(form.title, QPoint(50, 10), QPoint(40, 25));
    EXPECT_EQ(form.pos(), QPoint(140, 145));
    EXPECT_EQ(form.size(), QSize(600, 400));
}

TEST(WindowAgent, ADialogIsDraggedByItsTitle)
{
    DialogForm form(false);
    drag(form.title, QPoint(50, 10), QPoint(-30, 60));
    EXPECT_EQ(form.pos(), QPoint(70, 180));
}

TEST(WindowAgent, ADialogOfFixedSizeIsDraggedByItsTitle)
{
    DialogForm form(false);
    form.setFixedSize(600, 400);
    drag(form.title, QPoint(50, 10), QPoint(-30, 60));
    EXPECT_EQ(form.pos(), QPoint(70, 180));
}

TEST(WindowAgent, ALabelInTheTitleDragsLikeTheTitle)
{
    MainForm form(true);
    auto* label = new QLabel(u"Open a camera"_s, form.title);
    label->setGeometry(0, 0, 90, 30);
    label->show();
    drag(label, QPoint(20, 10), QPoint(33, 44));
    EXPECT_EQ(form.pos(), QPoint(133, 164));
}

TEST(WindowAgent, ATitleFollowsThePointerOverSeveralMoves)
{
    MainForm form(true);
    const QPoint start = form.title->mapToGlobal(QPoint(50, 10));
    QTest::mousePress(form.title, Qt::LeftButton, {}, QPoint(50, 10));
    for (const QPoint step : {QPoint(20, 0), QPoint(60, 30), QPoint(5, -7)}) {
        QTest::mouseMove(form.title, form.title->mapFromGlobal(start + step));
        EXPECT_EQ(form.pos(), QPoint(100, 120) + step);
    }
    QTest::mouseRelease(form.title, Qt::LeftButton, {}, QPoint(50, 10));
    QTest::mouseMove(form.title, QPoint(90, 20));
    EXPECT_EQ(form.pos(), QPoint(105, 113)) << "released";
}

TEST(WindowAgent, ATremblingClickDoesNotMoveTheWindow)
{
    MainForm form(true);
    drag(form.title, QPoint(50, 10), QPoint(1, 1));
    EXPECT_EQ(form.pos(), QPoint(100, 120));
}

TEST(WindowAgent, OtherButtonsOfTheMouseDoNotDrag)
{
    MainForm form(true);
    QTest::mousePress(form.title, Qt::RightButton, {}, QPoint(50, 10));
    QTest::mouseMove(form.title, QPoint(90, 35));
    QTest::mouseRelease(form.title, Qt::RightButton, {}, QPoint(90, 35));
    EXPECT_EQ(form.pos(), QPoint(100, 120));
}

TEST(WindowAgent, MenuButtonsAndBodyDoNotDrag)
{
    MainForm form(true);
    drag(form.menu, QPoint(5, 5), QPoint(40, 25));
    drag(form.body, QPoint(200, 100), QPoint(40, 25));
    EXPECT_EQ(form.pos(), QPoint(100, 120));
}

TEST(WindowAgent, ButtonsInsideTheTitleDoNotDragEvenWhenDisabled)
{
    MainForm form(true);
    auto* button = new QPushButton(u"x"_s, form.title);
    button->setGeometry(0, 0, 60, 20);
    button->show();
    drag(button, QPoint(10, 10), QPoint(40, 25));
    button->setEnabled(false);
    drag(button, QPoint(10, 10), QPoint(40, 25));
    drag(form.title, QPoint(10, 10), QPoint(40, 25));
    EXPECT_EQ(form.pos(), QPoint(100, 120));
}

TEST(WindowAgent, CaptionAreasThatAreNoButtonsDoNotDragEither)
{
    MainForm form(true);
    auto* icon = new QLabel(u"icon"_s, form.title);
    icon->setGeometry(0, 0, 60, 20);
    icon->show();
    auto* agent = form.findChild<Agent*>();
    agent->setSystemButton(Agent::WindowIcon, icon);
    drag(icon, QPoint(10, 10), QPoint(40, 25));
    EXPECT_EQ(form.pos(), QPoint(100, 120));
    agent->setSystemButton(Agent::WindowIcon, nullptr);
    drag(icon, QPoint(10, 10), QPoint(40, 25));
    EXPECT_EQ(form.pos(), QPoint(140, 145)) << "no longer a caption area";
}

TEST(WindowAgent, CaptionButtonsDoNotActByThemselves)
{
    MainForm form(true);
    QSignalSpy maximizeClicked(form.maximize, &QPushButton::clicked);
    QSignalSpy closeClicked(form.close, &QPushButton::clicked);
    QTest::mouseClick(form.maximize, Qt::LeftButton);
    QTest::mouseClick(form.close, Qt::LeftButton);
    EXPECT_EQ(maximizeClicked.count(), 1);
    EXPECT_EQ(closeClicked.count(), 1);
    EXPECT_TRUE(form.isVisible());
    EXPECT_FALSE(form.isMaximized());
}

TEST(WindowAgent, ADoubleClickOnTheTitleSpaceMaximisesAndRestores)
{
    MainForm form(true);
    doubleClick(form.title, QPoint(50, 10));
    EXPECT_TRUE(form.isMaximized());
    doubleClick(form.title, QPoint(50, 10));
    EXPECT_FALSE(form.isMaximized());
    EXPECT_EQ(form.title->styleSheet(), form.titleStyle) << "the title bar's look is not the agent's";
    EXPECT_EQ(form.size(), QSize(600, 400));
}

TEST(WindowAgent, ADoubleClickDoesNothingWithoutAMaximiseButton)
{
    DialogForm form(false);
    doubleClick(form.title, QPoint(50, 10));
    EXPECT_FALSE(form.isMaximized());
    MainForm mainForm(true);
    doubleClick(mainForm.body, QPoint(50, 100));
    doubleClick(mainForm.title, QPoint(50, 10), Qt::RightButton);
    EXPECT_FALSE(mainForm.isMaximized());
}

TEST(WindowAgent, AMaximisedWindowStaysWhereItIs)
{
    MainForm form(true);
    form.showMaximized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return form.isMaximized() && form.size() != QSize(600, 400); }));
    const QRect filling = form.geometry();
    drag(form.title, QPoint(50, 10), QPoint(40, 25));
    dragEdge(form, QPoint(2, 200), QPoint(60, 200));
    EXPECT_EQ(form.geometry(), filling);
    EXPECT_TRUE(form.isMaximized());
}

TEST(WindowAgent, EdgesResizeTheWindowThroughTheChildrenThatCoverThem)
{
    MainForm form(true);
    auto* button = new QPushButton(u"all over"_s, form.body);
    button->setGeometry(0, 0, 900, 900);
    button->show();
    dragEdge(form, QPoint(597, 200), QPoint(647, 230));
    EXPECT_EQ(form.geometry(), QRect(100, 120, 650, 400)) << "right";
    dragEdge(form, QPoint(2, 200), QPoint(-28, 260));
    EXPECT_EQ(form.geometry(), QRect(70, 120, 680, 400)) << "left";
    dragEdge(form, QPoint(300, 397), QPoint(350, 437));
    EXPECT_EQ(form.geometry(), QRect(70, 120, 680, 440)) << "bottom";
    dragEdge(form, QPoint(300, 2), QPoint(350, 22));
    EXPECT_EQ(form.geometry(), QRect(70, 140, 680, 420)) << "top";
    dragEdge(form, QPoint(678, 418), QPoint(668, 428));
    EXPECT_EQ(form.geometry(), QRect(70, 140, 670, 430)) << "bottom right";
}

TEST(WindowAgent, EdgesStillWorkAfterTheNativeWindowWasMadeAnew)
{
    MainForm form(true);
    auto* button = new QPushButton(u"at the edge"_s, form.body);
    button->setGeometry(500, 100, 100, 120);
    button->show();
    form.hide();
    form.dropNativeWindow();
    ASSERT_EQ(form.windowHandle(), nullptr);
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    dragEdge(form, QPoint(597, 200), QPoint(647, 230));
    EXPECT_EQ(form.geometry(), QRect(100, 120, 650, 400));
}

TEST(WindowAgent, AnEdgeStopsAtTheSmallestAndLargestSize)
{
    MainForm form(true);
    form.setMinimumSize(500, 300);
    form.setMaximumSize(700, 450);
    dragEdge(form, QPoint(2, 200), QPoint(400, 200));
    EXPECT_EQ(form.geometry(), QRect(200, 120, 500, 400)) << "the right edge stays";
    dragEdge(form, QPoint(497, 200), QPoint(900, 200));
    EXPECT_EQ(form.geometry(), QRect(200, 120, 700, 400));
}

TEST(WindowAgent, AFormOfFixedSizeIsNotResized)
{
    MainForm form(true);
    form.setFixedSize(600, 400);
    dragEdge(form, QPoint(597, 200), QPoint(640, 200));
    dragEdge(form, QPoint(300, 397), QPoint(300, 440));
    EXPECT_EQ(form.geometry(), QRect(100, 120, 600, 400));
    QTest::mouseMove(form.windowHandle(), QPoint(2, 200));
    EXPECT_EQ(form.cursor().shape(), Qt::ArrowCursor);
}

TEST(WindowAgent, TheEdgesShowWhichWayTheyResize)
{
    MainForm form(true);
    QWindow* window = form.windowHandle();
    const auto shapeAt = [&](const QPoint& place) {
        QTest::mouseMove(window, place);
        return form.cursor().shape();
    };
    // First the middle: a move to where the pointer was before would be none.
    EXPECT_EQ(shapeAt(QPoint(300, 200)), Qt::ArrowCursor);
    EXPECT_EQ(shapeAt(QPoint(2, 200)), Qt::SizeHorCursor);
    EXPECT_EQ(shapeAt(QPoint(597, 200)), Qt::SizeHorCursor);
    EXPECT_EQ(shapeAt(QPoint(300, 2)), Qt::SizeVerCursor);
    EXPECT_EQ(shapeAt(QPoint(2, 2)), Qt::SizeFDiagCursor);
    EXPECT_EQ(shapeAt(QPoint(597, 3)), Qt::SizeBDiagCursor);
    EXPECT_EQ(shapeAt(QPoint(300, 200)), Qt::ArrowCursor);
}

TEST(WindowAgent, APressBesideTheEdgesReachesTheBody)
{
    MainForm form(true);
    auto* button = new QPushButton(u"inside"_s, form.body);
    button->setGeometry(0, 0, 100, 40);
    button->show();
    QSignalSpy clicked(button, &QPushButton::clicked);
    QTest::mouseClick(form.windowHandle(), Qt::LeftButton, {}, QPoint(3, 60));
    EXPECT_EQ(clicked.count(), 0) << "the edge's press is not the child's";
    QTest::mouseClick(form.windowHandle(), Qt::LeftButton, {}, QPoint(6, 60));
    EXPECT_EQ(clicked.count(), 1);
}

TEST(ResizeEdges, AreSixPixelsWide)
{
    const QSize size(600, 400);
    const auto at = [&](int x, int y) { return resizeEdgesAt(QPoint(x, y), size, QSize(1, 1), anySize); };
    EXPECT_EQ(at(0, 200), Qt::Edges(Qt::LeftEdge));
    EXPECT_EQ(at(5, 200), Qt::Edges(Qt::LeftEdge));
    EXPECT_EQ(at(6, 200), Qt::Edges());
    EXPECT_EQ(at(599, 200), Qt::Edges(Qt::RightEdge));
    EXPECT_EQ(at(594, 200), Qt::Edges(Qt::RightEdge));
    EXPECT_EQ(at(593, 200), Qt::Edges());
    EXPECT_EQ(at(300, 5), Qt::Edges(Qt::TopEdge));
    EXPECT_EQ(at(300, 6), Qt::Edges());
    EXPECT_EQ(at(300, 394), Qt::Edges(Qt::BottomEdge));
    EXPECT_EQ(at(-1, 200), Qt::Edges());
    EXPECT_EQ(at(600, 200), Qt::Edges());
}

TEST(ResizeEdges, CornersReachTwelvePixelsAlongTheEdges)
{
    const QSize size(600, 400);
    const auto at = [&](int x, int y) { return resizeEdgesAt(QPoint(x, y), size, QSize(1, 1), anySize); };
    EXPECT_EQ(at(0, 0), Qt::LeftEdge | Qt::TopEdge);
    EXPECT_EQ(at(11, 2), Qt::LeftEdge | Qt::TopEdge);
    EXPECT_EQ(at(12, 2), Qt::Edges(Qt::TopEdge));
    EXPECT_EQ(at(2, 11), Qt::LeftEdge | Qt::TopEdge);
    EXPECT_EQ(at(8, 8), Qt::Edges());
    EXPECT_EQ(at(599, 399), Qt::RightEdge | Qt::BottomEdge);
    EXPECT_EQ(at(590, 398), Qt::RightEdge | Qt::BottomEdge);
}

TEST(ResizeEdges, AreOnlyThoseThatCanMove)
{
    const QSize size(600, 400);
    EXPECT_EQ(resizeEdgesAt(QPoint(2, 2), size, size, size), Qt::Edges());
    EXPECT_EQ(resizeEdgesAt(QPoint(2, 2), size, QSize(600, 1), QSize(600, 900)), Qt::Edges(Qt::TopEdge));
    EXPECT_EQ(resizeEdgesAt(QPoint(2, 200), size, QSize(600, 1), QSize(600, 900)), Qt::Edges());
    EXPECT_EQ(resizeEdgesAt(QPoint(2, 9), size, QSize(600, 1), QSize(600, 900)), Qt::Edges());
    EXPECT_EQ(resizeEdgesAt(QPoint(2, 2), size, QSize(1, 400), QSize(900, 400)), Qt::Edges(Qt::LeftEdge));
    EXPECT_EQ(resizeEdgesAt(QPoint(9, 2), size, QSize(1, 400), QSize(900, 400)), Qt::Edges());
}

TEST(ResizeEdges, MoveOneSideAndLeaveTheOther)
{
    const QRect start(100, 200, 300, 400);
    const QSize least(50, 60);
    const auto moved = [&](Qt::Edges edges, const QPoint& distance) {
        return resizedAtEdges(start, edges, distance, least, QSize(1000, 1000));
    };
    EXPECT_EQ(moved(Qt::LeftEdge, QPoint(10, 77)), QRect(110, 200, 290, 400));
    EXPECT_EQ(moved(Qt::RightEdge, QPoint(10, 77)), QRect(100, 200, 310, 400));
    EXPECT_EQ(moved(Qt::TopEdge, QPoint(77, -10)), QRect(100, 190, 300, 410));
    EXPECT_EQ(moved(Qt::BottomEdge | Qt::RightEdge, QPoint(-20, -30)), QRect(100, 200, 280, 370));
    EXPECT_EQ(moved(Qt::LeftEdge, QPoint(900, 0)), QRect(350, 200, 50, 400));
    EXPECT_EQ(moved(Qt::TopEdge, QPoint(0, -5000)), QRect(100, -400, 300, 1000));
    EXPECT_EQ(moved(Qt::Edges(), QPoint(5, 5)), start);
}

TEST(ResizeEdges, ShowTheirDirection)
{
    EXPECT_EQ(resizeCursor(Qt::Edges()), Qt::ArrowCursor);
    EXPECT_EQ(resizeCursor(Qt::LeftEdge), Qt::SizeHorCursor);
    EXPECT_EQ(resizeCursor(Qt::BottomEdge), Qt::SizeVerCursor);
    EXPECT_EQ(resizeCursor(Qt::LeftEdge | Qt::TopEdge), Qt::SizeFDiagCursor);
    EXPECT_EQ(resizeCursor(Qt::RightEdge | Qt::BottomEdge), Qt::SizeFDiagCursor);
    EXPECT_EQ(resizeCursor(Qt::RightEdge | Qt::TopEdge), Qt::SizeBDiagCursor);
    EXPECT_EQ(resizeCursor(Qt::LeftEdge | Qt::BottomEdge), Qt::SizeBDiagCursor);
}
