#pragma once

#include "app/languages.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTest>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// What every dialog of the frameless family looks and behaves like.
namespace card {

/// Fails the test hard when there is no such widget.
template <typename Widget>
Widget* find(const QWidget& dialog, const char* name)
{
    auto* const widget = dialog.findChild<Widget*>(QLatin1StringView(name));
    if (!widget)
        throw std::runtime_error(std::string("there is no widget ") + name);
    return widget;
}

inline QRect placeOf(const QWidget& dialog, const char* name)
{
    const auto* const widget = find<QWidget>(dialog, name);
    return {widget->mapTo(&dialog, QPoint(0, 0)), widget->size()};
}

/// Title bar, body, buttons and corners, on a dialog that is on the screen with its mouse elsewhere.
inline void expectFamilyLook(QDialog& dialog)
{
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::FramelessWindowHint));
    // With the focus or without it, the outline is one pixel.
    const QRect outlined = placeOf(dialog, "pb_cancel");
    for (const bool focused : {true, false}) {
        QWidget* const button = find<QWidget>(dialog, "pb_cancel");
        focused ? button->setFocus() : button->clearFocus();
        const QImage shown = dialog.grab().toImage();
        EXPECT_EQ(shown.pixelColor(outlined.center().x(), outlined.top()), QColor(0x00, 0x4B, 0x6A))
            << focused;
        EXPECT_EQ(shown.pixelColor(outlined.center().x(), outlined.top() + 1), QColor(Qt::white)) << focused;
    }
    const auto* const cross = find<QWidget>(dialog, "pb_win_close");
    EXPECT_EQ(cross->size(), QSize(30, 30));

    const QColor accent(0x00, 0x4B, 0x6A);
    const QImage picture = dialog.grab().toImage();
    EXPECT_EQ(picture.pixelColor(dialog.width() / 2, 8), accent);
    EXPECT_EQ(picture.pixelColor(6, dialog.height() - 30), QColor(Qt::white));
    const QRect save = placeOf(dialog, "pb_save");
    EXPECT_EQ(picture.pixelColor(save.left() + 12, save.center().y()), accent);
    EXPECT_NE(picture.pixelColor(save.topLeft()), accent) << "its corners are round";
    const QRect cancel = placeOf(dialog, "pb_cancel");
    EXPECT_EQ(picture.pixelColor(cancel.center().x(), cancel.top()), accent) << "outlined";
    EXPECT_EQ(picture.pixelColor(cancel.left() + 12, cancel.center().y()), QColor(Qt::white));

    // Transparent where a compositor runs, no part of the window where none does.
    const QRect all = dialog.rect();
    for (const QPoint& corner : {all.topLeft(), all.topRight(), all.bottomLeft(), all.bottomRight()}) {
        EXPECT_EQ(picture.pixelColor(corner).alpha(), 0);
        EXPECT_FALSE(dialog.mask().contains(corner));
    }
    EXPECT_TRUE(dialog.mask().contains(QPoint(all.center().x(), 0)));
    EXPECT_TRUE(dialog.mask().contains(QPoint(0, all.center().y())));
    dialog.resize(dialog.size() + QSize(40, 20));
    EXPECT_EQ(dialog.mask().boundingRect(), dialog.rect());
    EXPECT_FALSE(dialog.mask().contains(dialog.rect().bottomRight()));
}

/// How the filled and the outlined button look under the mouse.
inline void expectHoverLooks(QDialog& dialog)
{
    dialog.grab(); // lays it out
    for (const auto& [name, colour] :
         {std::pair("pb_save", QColor(0x00, 0x44, 0x60)), std::pair("pb_cancel", QColor(0xE5, 0xEC, 0xF0))}) {
        const QRect place = placeOf(dialog, name);
        QCursor::setPos(dialog.mapToGlobal(place.center()));
        const auto* const button = find<QAbstractButton>(dialog, name);
        ASSERT_TRUE(QTest::qWaitFor([button] { return button->underMouse(); })) << name;
        const QImage picture = dialog.grab().toImage();
        EXPECT_EQ(picture.pixelColor(place.left() + 12, place.center().y()), colour) << name;
    }
    QCursor::setPos(dialog.mapToGlobal(dialog.rect().center()));
}

/// How the filled and the outlined button look pressed.
inline void expectPressedLooks(QDialog& dialog)
{
    const auto pressedColours = [&dialog](const char* name, QPoint& edge) {
        auto* const button = find<QAbstractButton>(dialog, name);
        button->setDown(true);
        const QRect place = placeOf(dialog, name);
        const QImage picture = dialog.grab().toImage();
        button->setDown(false);
        edge = QPoint(place.center().x(), place.top() + 1);
        return std::make_pair(picture.pixelColor(place.left() + 12, place.center().y()),
                              picture.pixelColor(edge));
    };
    QPoint edge;
    EXPECT_EQ(pressedColours("pb_save", edge).first, QColor(0x00, 0x2D, 0x40));
    const auto cancel = pressedColours("pb_cancel", edge);
    EXPECT_EQ(cancel.first, QColor(0x2C, 0x65, 0x80));
    EXPECT_EQ(cancel.second, QColor(0x2C, 0x65, 0x80));

    // White text; the border is seen by the room that it takes.
    auto* const outlined = find<QAbstractButton>(dialog, "pb_cancel");
    const auto border = [outlined](QStyle::State state) {
        QStyleOptionButton option;
        option.initFrom(outlined);
        option.state |= state;
        return outlined->style()->subElementRect(QStyle::SE_PushButtonContents, &option, outlined).left();
    };
    EXPECT_EQ(border(QStyle::State_Raised), 1);
    EXPECT_EQ(border(QStyle::State_Sunken), 3);
    outlined->setDown(true);
    const QImage picture = outlined->grab().toImage();
    outlined->setDown(false);
    int white = 0;
    for (int y = 5; y < picture.height() - 5; ++y) {
        for (int x = 12; x < picture.width() - 12; ++x)
            white += picture.pixelColor(x, y) == QColor(Qt::white) ? 1 : 0;
    }
    EXPECT_GT(white, 20) << "its text";
}

/// A path box: outlined by one grey pixel, white inside.
inline void expectBox(QDialog& dialog, const char* name)
{
    const QImage picture = dialog.grab().toImage();
    const QRect box = placeOf(dialog, name);
    const QColor line(0xA7, 0xA7, 0xA7);
    const QPoint middle = box.center();
    for (const QPoint& edge : {QPoint(middle.x(), box.top()), QPoint(middle.x(), box.bottom()),
                               QPoint(box.left(), middle.y()), QPoint(box.right(), middle.y())})
        EXPECT_EQ(picture.pixelColor(edge), line) << name;
    EXPECT_EQ(picture.pixelColor(middle.x(), box.top() + 1), QColor(Qt::white)) << name;
    EXPECT_NE(picture.pixelColor(box.topLeft()), line) << name << ": its corners are round";
}

/// Where the focus goes with each Tab, from the first of `names` round to it again.
inline void expectTabOrder(QDialog& dialog, const std::vector<std::string>& names)
{
    find<QWidget>(dialog, names.front().c_str())->setFocus();
    std::vector<std::string> visited;
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_NE(dialog.focusWidget(), nullptr);
        visited.push_back(dialog.focusWidget()->objectName().toStdString());
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(visited, names);
    EXPECT_EQ(dialog.focusWidget()->objectName().toStdString(), names.front());
}

/// Every label, button and default text fits its place, in English and in Chinese.
inline void expectNothingClipped(const std::function<std::unique_ptr<QDialog>()>& make)
{
    for (const char* language : {"en", "zh"}) {
        loadLanguage(QString::fromLatin1(language));
        const auto dialog = make();
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
        int seen = 0;
        for (const QWidget* widget : dialog->findChildren<QWidget*>()) {
            const auto* const label = qobject_cast<const QLabel*>(widget);
            const auto* const button = qobject_cast<const QAbstractButton*>(widget);
            if (!widget->isVisible() || (!label && (!button || button->text().isEmpty())))
                continue;
            ++seen;
            const QSize wanted = label ? label->sizeHint() : button->sizeHint();
            EXPECT_GE(widget->width(), wanted.width()) << language << ' ' << qPrintable(widget->objectName());
            EXPECT_GE(widget->height(), wanted.height())
                << language << ' ' << qPrintable(widget->objectName());
        }
        EXPECT_GE(seen, 5);
    }
    loadLanguage(QStringLiteral("en"));
}

/// A drag on this widget takes the dialog along.
inline void expectDraggedBy(QDialog& dialog, const char* name)
{
    dialog.move(100, 120);
    auto* const title = find<QWidget>(dialog, name);
    const QPoint at(30, 15);
    QTest::mousePress(title, Qt::LeftButton, {}, at);
    QTest::mouseMove(title, at + QPoint(40, 60));
    QTest::mouseRelease(title, Qt::LeftButton, {}, at);
    EXPECT_EQ(dialog.pos(), QPoint(140, 180));
}

} // namespace card
