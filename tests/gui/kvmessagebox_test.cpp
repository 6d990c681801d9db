#include "widgets/kvmessagebox.h"

#include <QFile>
#include <QFontMetrics>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

std::unique_ptr<KVMessageBox> boxOf(const QString& message = u"Is it open in the browser?"_s)
{
    return std::make_unique<KVMessageBox>(message, u"Tips"_s, u"Open"_s, u"Close"_s, nullptr);
}

template <typename Widget = QPushButton>
Widget* part(const KVMessageBox& box, const QString& name)
{
    return box.findChild<Widget*>(name);
}

/// Runs the box and acts on it once its loop runs.
int answer(KVMessageBox& box, const std::function<void()>& act)
{
    QTimer::singleShot(0, &box, act);
    return box.exec();
}

} // namespace

TEST(KVMessageBox, ShowsItsTexts)
{
    const auto box = boxOf();
    EXPECT_EQ(part<QLabel>(*box, u"lb_title"_s)->text(), u"Tips"_s);
    EXPECT_EQ(part<QLabel>(*box, u"lb_show_message"_s)->text(), u"Is it open in the browser?"_s);
    EXPECT_EQ(part(*box, u"pb_open"_s)->text(), u"Open"_s);
    EXPECT_EQ(part(*box, u"pb_close"_s)->text(), u"Close"_s);
    EXPECT_EQ(box->windowTitle(), u"KVMessageBox"_s);
}

TEST(KVMessageBox, TheOpenButtonAccepts)
{
    const auto box = boxOf();
    EXPECT_EQ(answer(*box, [&] { QTest::mouseClick(part(*box, u"pb_open"_s), Qt::LeftButton); }),
              QDialog::Accepted);
}

TEST(KVMessageBox, TheCloseButtonRejects)
{
    const auto box = boxOf();
    EXPECT_EQ(answer(*box, [&] { QTest::mouseClick(part(*box, u"pb_close"_s), Qt::LeftButton); }),
              QDialog::Rejected);
}

TEST(KVMessageBox, TheTitleBarsCrossRejects)
{
    const auto box = boxOf();
    EXPECT_EQ(answer(*box, [&] { QTest::mouseClick(part(*box, u"pb_win_close"_s), Qt::LeftButton); }),
              QDialog::Rejected);
}

TEST(KVMessageBox, ClosingAndEscapeReject)
{
    const auto closed = boxOf();
    EXPECT_EQ(answer(*closed, [&] { closed->close(); }), QDialog::Rejected);
    const auto escaped = boxOf();
    EXPECT_EQ(answer(*escaped, [&] { QTest::keyClick(escaped.get(), Qt::Key_Escape); }), QDialog::Rejected);
}

TEST(KVMessageBox, ReturnAccepts)
{
    const auto box = boxOf();
    EXPECT_EQ(answer(*box,
                     [&] {
                         EXPECT_TRUE(QTest::qWaitForWindowActive(box.get()));
                         QTest::keyClick(box->focusWidget(), Qt::Key_Return);
                     }),
              QDialog::Accepted);
}

TEST(KVMessageBox, ReturnOnTheCloseButtonRejects)
{
    const auto box = boxOf();
    EXPECT_EQ(answer(*box,
                     [&] {
                         QPushButton* close = part(*box, u"pb_close"_s);
                         close->setFocus();
                         QTest::keyClick(close, Qt::Key_Return);
                     }),
              QDialog::Rejected);
}

TEST(KVMessageBox, IsFramelessAndSeeThroughAtItsCorners)
{
    const auto box = boxOf();
    EXPECT_TRUE(box->windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(box->windowFlags() & Qt::WindowType_Mask, Qt::Dialog) << "it stays a dialog";
    box->show();
    const QImage image = box->grab().toImage();
    for (const QPoint corner : {QPoint(0, 0), QPoint(image.width() - 1, 0), QPoint(0, image.height() - 1),
                                QPoint(image.width() - 1, image.height() - 1)})
        EXPECT_EQ(image.pixelColor(corner).alpha(), 0) << corner.x() << "," << corner.y();
}

TEST(KVMessageBox, PaintsItsCard)
{
    const auto box = boxOf();
    box->show();
    const QImage image = box->grab().toImage();
    EXPECT_EQ(image.pixelColor(250, 3), QColor(0x00, 0x4B, 0x6A)) << "title bar";
    EXPECT_EQ(image.pixelColor(10, 25), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(image.pixelColor(10, 60), QColor(Qt::white)) << "body";
    const auto at = [&](const QString& name, QPoint offset) {
        const QPushButton* button = part(*box, name);
        return image.pixelColor(button->mapTo(box.get(), offset));
    };
    EXPECT_EQ(at(u"pb_open"_s, QPoint(30, 10)), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(at(u"pb_close"_s, QPoint(75, 1)), QColor(0x00, 0x4B, 0x6A)) << "three pixels of border";
    EXPECT_EQ(at(u"pb_close"_s, QPoint(30, 10)), QColor(Qt::white));
}

TEST(KVMessageBox, ItsButtonsChangeTheirColourUnderTheMouseAndWhenPressed)
{
    const auto box = boxOf();
    box->show();
    const auto colour = [&box](const QString& name, bool pressed) {
        QPushButton* button = part(*box, name);
        button->setAttribute(Qt::WA_UnderMouse);
        QTest::mouseMove(button, button->rect().center());
        button->setDown(pressed);
        return button->grab().toImage().pixelColor(30, 10);
    };
    EXPECT_EQ(colour(u"pb_open"_s, false), QColor(0x00, 0x44, 0x60));
    EXPECT_EQ(colour(u"pb_open"_s, true), QColor(0x00, 0x2D, 0x40));
    EXPECT_EQ(colour(u"pb_close"_s, false), QColor(0xE5, 0xEC, 0xF0));
    EXPECT_EQ(colour(u"pb_close"_s, true), QColor(0x2C, 0x65, 0x80));
}

TEST(KVMessageBox, HasTheStatedSizes)
{
    const auto box = boxOf();
    box->show();
    EXPECT_EQ(box->minimumSize(), QSize(500, 270));
    EXPECT_EQ(box->size(), QSize(500, 270));
    EXPECT_EQ(part<QWidget>(*box, u"widget_title_bar"_s)->minimumHeight(), 50);
    EXPECT_EQ(part<QWidget>(*box, u"widget_title_name"_s)->minimumWidth(), 100);
    EXPECT_EQ(part(*box, u"pb_win_close"_s)->size(), QSize(30, 30));
    EXPECT_GE(part(*box, u"pb_open"_s)->width(), 150);
    EXPECT_GE(part(*box, u"pb_open"_s)->height(), 47);
    const QPushButton* close = part(*box, u"pb_close"_s);
    const QPushButton* open = part(*box, u"pb_open"_s);
    EXPECT_EQ(open->x() - close->geometry().right() - 1, 20) << "the gap between the buttons";
}

TEST(KVMessageBox, ItsImagesExist)
{
    for (const QString& variant : {u""_s, u"_Hover"_s, u"_Pressed"_s})
        EXPECT_TRUE(QFile::exists(u":/img/assets/btn_Nav_CloseWindow_White%1.svg"_s.arg(variant)));
}

TEST(KVMessageBox, LongAndChineseTextsFit)
{
    const QString long_ = u"语言更改将在重新启动后生效。"_s.repeated(20);
    KVMessageBox box(long_, u"提示"_s, u"立即重新启动应用程序"_s, u"以后再重新启动"_s, nullptr);
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    const QLabel* message = part<QLabel>(box, u"lb_show_message"_s);
    EXPECT_LE(message->heightForWidth(message->width()), message->height());
    for (const QString& name : {u"pb_open"_s, u"pb_close"_s}) {
        const QPushButton* button = part(box, name);
        EXPECT_LE(button->fontMetrics().horizontalAdvance(button->text()) + 32, button->width())
            << qPrintable(name);
    }
    const QLabel* title = part<QLabel>(box, u"lb_title"_s);
    EXPECT_LE(title->fontMetrics().height(), title->height());
}

#if KORVANE_OWN_FRAME
TEST(KVMessageBox, IsDraggedByItsTitleAndNotByItsBody)
{
    const auto box = boxOf();
    box->move(100, 100);
    box->show();
    QWidget* title = part<QWidget>(*box, u"widget_title_name"_s);
    QTest::mousePress(title, Qt::LeftButton, {}, QPoint(60, 20));
    QTest::mouseMove(title, QPoint(90, 60));
    QTest::mouseRelease(title, Qt::LeftButton, {}, QPoint(60, 20));
    EXPECT_EQ(box->pos(), QPoint(130, 140));
    QWidget* body = part<QWidget>(*box, u"frame"_s);
    QTest::mousePress(body, Qt::LeftButton, {}, QPoint(60, 20));
    QTest::mouseMove(body, QPoint(90, 60));
    QTest::mouseRelease(body, Qt::LeftButton, {}, QPoint(90, 60));
    EXPECT_EQ(box->pos(), QPoint(130, 140));
}
#endif
