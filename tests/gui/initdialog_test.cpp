#include "app/initdialog.h"

#include "app/productinfo.h"
#include "tests/support/capturedmessages.h"

#include <QElapsedTimer>
#include <QGraphicsDropShadowEffect>
#include <QLabel>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

QWidget* child(const QWidget& dialog, const char* name)
{
    auto* widget = dialog.findChild<QWidget*>(QLatin1StringView(name));
    EXPECT_NE(widget, nullptr) << name;
    return widget;
}

QRect placeOf(const QWidget& dialog, const char* name)
{
    const QWidget* widget = child(dialog, name);
    return widget ? QRect(widget->mapTo(&dialog, QPoint(0, 0)), widget->size()) : QRect();
}

void show(InitDialog& dialog)
{
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
}

} // namespace

TEST(InitDialog, ClosesItselfAfterTwoSeconds)
{
    QElapsedTimer timer;
    timer.start();
    InitDialog dialog(nullptr);
    dialog.exec();
    EXPECT_GE(timer.elapsed(), 1990);
    EXPECT_LT(timer.elapsed(), 10000);
    EXPECT_FALSE(dialog.isVisible());
}

TEST(InitDialog, CloseButtonSkipsTheRestOfTheWait)
{
    InitDialog dialog(nullptr);
    QElapsedTimer timer;
    timer.start();
    QTimer::singleShot(0, &dialog, [&dialog] {
        ASSERT_TRUE(dialog.isVisible());
        QTest::mouseClick(child(dialog, "btn_close"), Qt::LeftButton);
    });
    dialog.exec();
    EXPECT_LT(timer.elapsed(), 1900);
    EXPECT_FALSE(dialog.isVisible());
}

TEST(InitDialog, ShowsTheVersionAndNotTheFormsDefault)
{
    const InitDialog dialog(nullptr);
    EXPECT_EQ(qobject_cast<QLabel*>(child(dialog, "lb_version"))->text(), u"Version: 1.0.3"_s);
}

TEST(InitDialog, LogsTheVersion)
{
    const CapturedMessages log;
    const InitDialog dialog(nullptr);
    EXPECT_EQ(log.debug(), QStringList{u"KorvaneInsight Version: 1.0.3"_s});
}

TEST(InitDialog, ShowsTheCopyrightLine)
{
    const InitDialog dialog(nullptr);
    const auto* line = qobject_cast<QLabel*>(child(dialog, "label_2"));
    EXPECT_EQ(line->text(), QString::fromUtf8(productinfo::copyrightLine));
    EXPECT_TRUE(line->text().startsWith(QChar(0xA9)));
    EXPECT_EQ(line->alignment(), Qt::AlignCenter);
}

TEST(InitDialog, ShowsTheLogoInItsFullSize)
{
    InitDialog dialog(nullptr);
    show(dialog);
    const QImage picture = dialog.grab(placeOf(dialog, "label")).toImage();
    QImage logo(u":/img/assets/Korvane logo_ system-version.png"_s);
    ASSERT_EQ(logo.size(), QSize(136, 150));
    ASSERT_EQ(picture.size(), logo.size());
    int inked = 0;
    for (int y = 0; y < logo.height(); ++y) {
        for (int x = 0; x < logo.width(); ++x) {
            if (logo.pixelColor(x, y).alpha() < 255)
                continue;
            ++inked;
            ASSERT_EQ(picture.pixelColor(x, y).rgb(), logo.pixelColor(x, y).rgb()) << x << ", " << y;
        }
    }
    EXPECT_GT(inked, 1000);
}

TEST(InitDialog, IsAFramelessWindowOnATranslucentBackground)
{
    const InitDialog dialog(nullptr);
    EXPECT_EQ(dialog.windowType(), Qt::Window);
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(dialog.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_EQ(dialog.windowTitle(), u"Dialog"_s);
}

TEST(InitDialog, LeavesTenPixelsAroundTheCardForItsShadow)
{
    InitDialog dialog(nullptr);
    show(dialog);
    const auto* shadow = qobject_cast<QGraphicsDropShadowEffect*>(dialog.graphicsEffect());
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->offset(), QPointF(0, 0));
    EXPECT_EQ(shadow->color(), QColor(0x44, 0x44, 0x44));
    EXPECT_EQ(shadow->blurRadius(), 30);
    EXPECT_EQ(dialog.contentsMargins(), QMargins(10, 10, 10, 10));
    EXPECT_EQ(dialog.size(), QSize(520, 380));
    EXPECT_EQ(placeOf(dialog, "frame"), QRect(10, 10, 500, 360));
}

TEST(InitDialog, LaysTheCardOutFromHeaderToCopyright)
{
    InitDialog dialog(nullptr);
    show(dialog);
    EXPECT_EQ(placeOf(dialog, "widget"), QRect(10, 10, 500, 50));
    EXPECT_EQ(placeOf(dialog, "frame_2"), QRect(10, 60, 500, 310));
    EXPECT_EQ(child(dialog, "btn_close")->size(), QSize(30, 30));
    EXPECT_TRUE(placeOf(dialog, "widget").contains(placeOf(dialog, "btn_close")));

    const QRect logo = placeOf(dialog, "label");
    const QRect version = placeOf(dialog, "lb_version");
    const QRect copyright = placeOf(dialog, "label_2");
    EXPECT_EQ(logo.size(), QSize(136, 150));
    EXPECT_GE(version.width(), 308);
    EXPECT_GE(version.height(), 25);
    EXPECT_GE(copyright.width(), 308);
    EXPECT_GE(copyright.height(), 28);
    EXPECT_LT(logo.bottom(), version.top());
    EXPECT_LT(version.bottom(), copyright.top());
    for (const QRect& place : {logo, version, copyright})
        EXPECT_NEAR(place.center().x(), 260, 1);
}

TEST(InitDialog, PaintsTheCardInItsColours)
{
    InitDialog dialog(nullptr);
    show(dialog);
    const QImage picture = dialog.grab().toImage();
    EXPECT_EQ(picture.pixelColor(40, 35), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(picture.pixelColor(40, 200), QColor(0xF2, 0xF2, 0xF2));
    EXPECT_LT(picture.pixelColor(10, 10).alpha(), 255);
    EXPECT_LT(picture.pixelColor(509, 369).alpha(), 255);
}

TEST(InitDialog, WritesVersionAndCopyrightSmallInGreyOnTheDialogsFont)
{
    InitDialog dialog(nullptr);
    show(dialog);
    EXPECT_EQ(dialog.font().pixelSize(), 16);
    EXPECT_EQ(dialog.font().family(), u"Noto Sans SC Medium"_s);
    for (const char* const name : {"lb_version", "label_2"}) {
        const QWidget& label = *child(dialog, name);
        EXPECT_EQ(label.font().pixelSize(), 14) << name;
        EXPECT_EQ(label.font().family(), u"Noto Sans Myanmar"_s) << name;
        EXPECT_EQ(label.palette().color(label.foregroundRole()), QColor(0x7C, 0x7C, 0x7C)) << name;
    }
}

TEST(InitDialog, TheCrossShowsItsImagesOnTheHeader)
{
    InitDialog dialog(nullptr);
    show(dialog);
    auto* const cross = qobject_cast<QToolButton*>(child(dialog, "btn_close"));
    const auto onHeader = [](QToolButton& button) {
        QImage image(button.size(), QImage::Format_RGB32);
        image.fill(QColor(0x00, 0x4B, 0x6A));
        button.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image;
    };
    const auto showing = [&](const char* image) {
        QToolButton plain(cross->parentWidget());
        plain.setFixedSize(cross->size());
        plain.setStyleSheet(
            u"QToolButton { border: none; background: transparent; image: url(:/img/assets/%1.svg); }"_s.arg(
                QLatin1StringView(image)));
        return onHeader(plain);
    };
    const QImage rest = onHeader(*cross);
    EXPECT_EQ(rest, showing("btn_Nav_CloseWindow_White"));
    cross->setAttribute(Qt::WA_UnderMouse);
    EXPECT_EQ(onHeader(*cross), showing("btn_Nav_CloseWindow_White_Hover"));
    EXPECT_NE(onHeader(*cross), rest);
}
