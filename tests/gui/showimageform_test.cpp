#include "display/kvgraphicsview.h"
#include "display/showimageform.h"
#include "tests/gui/wheelturns.h"

#include <QGraphicsPixmapItem>
#include <QGridLayout>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

QPixmap coloured(QSize size, const QColor& colour)
{
    QPixmap pixmap(size);
    pixmap.fill(colour);
    return pixmap;
}

class ShowImageFormTest : public testing::Test
{
protected:
    ShowImageFormTest()
    {
        form.resize(644, 364);
        form.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&form));
        view = form.findChild<KvGraphicsView*>(QStringLiteral("graphicsView"));
    }
    void SetUp() override { ASSERT_NE(view, nullptr); }

    QGraphicsPixmapItem* item() const
    {
        return qgraphicsitem_cast<QGraphicsPixmapItem*>(view->scene()->items().value(0));
    }
    /// Where the picture lies on the view.
    QRectF shown() const { return view->mapFromScene(item()->sceneBoundingRect()).boundingRect(); }
    double zoom() const { return view->transform().m11(); }
    /// The picture fits as well as its aspect ratio allows, up to the small margin that Qt leaves.
    void expectFitted() const
    {
        const QSize picture = item()->pixmap().size();
        const double expected = std::min((view->viewport()->width() - 4.0) / picture.width(),
                                         (view->viewport()->height() - 4.0) / picture.height());
        EXPECT_NEAR(zoom(), expected, expected * 0.005);
        EXPECT_DOUBLE_EQ(view->transform().m22(), zoom());
        EXPECT_NEAR(shown().center().x(), view->viewport()->rect().center().x(), 2.0);
        EXPECT_NEAR(shown().center().y(), view->viewport()->rect().center().y(), 2.0);
    }

    ShowImageForm form;
    KvGraphicsView* view;
};

} // namespace

TEST_F(ShowImageFormTest, ShowsAGreyPictureOfTheSensorsSizeAtFirst)
{
    EXPECT_EQ(form.shownPixmap().size(), QSize(1280, 720));
    const QImage image = form.shownPixmap().toImage();
    EXPECT_EQ(image.pixel(0, 0), qRgb(0x70, 0x70, 0x70));
    EXPECT_EQ(image.pixel(1279, 719), qRgb(0x70, 0x70, 0x70));
    ASSERT_EQ(view->scene()->items().size(), 1);
    ASSERT_NE(item(), nullptr);
    EXPECT_EQ(item()->pixmap().toImage(), image);
    expectFitted();
}

TEST_F(ShowImageFormTest, HasTheLayoutsAndLooksOfItsDesign)
{
    EXPECT_NE(form.findChild<QGridLayout*>(QStringLiteral("gridLayout_3")), nullptr);
    EXPECT_NE(form.findChild<QVBoxLayout*>(QStringLiteral("verticalLayout")), nullptr);
    for (const QWidget* widget : {static_cast<const QWidget*>(&form), static_cast<const QWidget*>(view)}) {
        EXPECT_TRUE(widget->styleSheet().contains(QStringLiteral("background-color: transparent;")));
        EXPECT_TRUE(widget->styleSheet().contains(QStringLiteral("border: 0px;")));
    }
    EXPECT_EQ(view->size(), form.size()) << "nothing lies around the view";
}

TEST_F(ShowImageFormTest, NeverShowsScrollBars)
{
    EXPECT_EQ(view->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(view->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    for (int i = 0; i < 10; ++i)
        turnWheel(*view, 120);
    EXPECT_EQ(view->viewport()->size(), view->size());
}

TEST_F(ShowImageFormTest, TakesNoFocusSoThatTheArrowsStepThroughARecording)
{
    QWidget window;
    auto* const field = new QLineEdit(&window);
    auto* const inside = new ShowImageForm(&window);
    inside->setGeometry(0, 40, 300, 200);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    field->setFocus();
    ASSERT_TRUE(field->hasFocus());
    auto* const insideView = inside->findChild<KvGraphicsView*>();
    QTest::mouseClick(insideView->viewport(), Qt::LeftButton);
    turnWheel(*insideView, 120);
    QTest::keyClick(field, Qt::Key_Tab);
    EXPECT_TRUE(field->hasFocus());
    EXPECT_EQ(insideView->focusPolicy(), Qt::NoFocus);
}

TEST_F(ShowImageFormTest, APictureIsShownAndReplacesTheOneBefore)
{
    form.showPixMap(coloured({1280, 720}, Qt::red));
    EXPECT_EQ(form.shownPixmap().toImage().pixel(5, 5), qRgb(255, 0, 0));
    EXPECT_EQ(item()->pixmap().toImage().pixel(5, 5), qRgb(255, 0, 0));
    QImage image(1280, 720, QImage::Format_BGR888);
    image.fill(Qt::blue);
    form.slotShowImage(image);
    EXPECT_EQ(item()->pixmap().toImage().pixel(5, 5), qRgb(0, 0, 255));
    EXPECT_EQ(view->scene()->items().size(), 1);
    // It reaches the screen.
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return view->grab().toImage().pixelColor(view->rect().center()) == QColor(Qt::blue); }));
}

TEST_F(ShowImageFormTest, ANewPictureKeepsZoomAndPlace)
{
    for (int i = 0; i < 6; ++i)
        turnWheel(*view, QPoint(0, 120), QPointF(100, 100));
    const QTransform before = view->viewportTransform();
    const double scale = view->scaleFactor();
    form.showPixMap(coloured({1280, 720}, Qt::red));
    QApplication::processEvents();
    EXPECT_EQ(view->viewportTransform(), before);
    EXPECT_DOUBLE_EQ(view->scaleFactor(), scale);
}

TEST_F(ShowImageFormTest, APictureOfAnotherSizeKeepsTheTransformUntilTheNextFit)
{
    turnWheel(*view, 120);
    const QTransform before = view->transform();
    form.showPixMap(coloured({3840, 2160}, Qt::red));
    QApplication::processEvents();
    EXPECT_EQ(view->transform(), before);
    form.resize(700, 500);
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->transform() != before; }));
    expectFitted();
}

TEST_F(ShowImageFormTest, ADoubleClickAfterZoomingReturnsToTheFit)
{
    const double fitted = zoom();
    for (int i = 0; i < 9; ++i)
        turnWheel(*view, QPoint(0, 120), QPointF(10, 10));
    EXPECT_GT(zoom(), fitted * 2);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 50));
    EXPECT_DOUBLE_EQ(view->scaleFactor(), 1.0);
    EXPECT_NEAR(zoom(), fitted, fitted * 1e-9);
    expectFitted();
}

TEST_F(ShowImageFormTest, AResizeFitsAgainAndCountsTheZoomAnew)
{
    for (int i = 0; i < 9; ++i)
        turnWheel(*view, 120);
    form.resize(1284, 724);
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->width() == 1284; }));
    EXPECT_DOUBLE_EQ(view->scaleFactor(), 1.0);
    expectFitted();
    // A flat window: the height decides.
    form.resize(1600, 300);
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->width() == 1600; }));
    expectFitted();
}

TEST_F(ShowImageFormTest, FitsWhenItIsShown)
{
    form.hide();
    turnWheel(*view, 120);
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    expectFitted();
    // Zooming begins anew with it: the picture gets no smaller than the view.
    EXPECT_DOUBLE_EQ(view->scaleFactor(), 1.0);
    turnWheel(*view, -120);
    expectFitted();
}

TEST_F(ShowImageFormTest, AnEmptyPictureIsNotFitted)
{
    turnWheel(*view, 120);
    const QTransform before = view->transform();
    form.showPixMap(QPixmap());
    form.resize(700, 500);
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->width() == 700; }));
    EXPECT_EQ(view->transform(), before);
    form.slotShowImage(QImage());
    EXPECT_TRUE(form.shownPixmap().isNull());
    form.showPixMap(coloured({1280, 720}, Qt::red));
    form.resize(800, 500);
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->width() == 800; }));
    expectFitted();
}
