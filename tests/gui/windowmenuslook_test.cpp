#include "tests/gui/mainwindowfixture.h"

#include <QFontMetrics>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr const char* menuButtons[] = {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help"};

const QColor white(0xFF, 0xFF, 0xFF);
const QColor accent(0x00, 0x4B, 0x6A);
const QColor pale(0xED, 0xF1, 0xF3);
const QColor border(0xAA, 0xAA, 0xAA);
const QColor line(0xC3, 0xC3, 0xC3);

class WindowMenusLookTest : public MainWindowTest
{
protected:
    /// The smallest rectangle that holds every pixel of `area` for which `wanted` holds.
    template <typename Wanted>
    static QRect extent(const QImage& image, const QRect& area, Wanted wanted)
    {
        QRect found;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                if (wanted(image.pixelColor(x, y)))
                    found |= QRect(x, y, 1, 1);
            }
        }
        return found;
    }
    static QRect extent(const QImage& image, const QRect& area, const QColor& colour)
    {
        return extent(image, area, [&colour](const QColor& one) { return one == colour; });
    }
    static bool holds(const QImage& image, const QRect& area, const QColor& colour)
    {
        return !extent(image, area, colour).isEmpty();
    }
    /// Fails unless a text of 12 pixels stands in the item, its left side given.
    static void expectText(const QImage& image, const QMenu& menu, QAction& action, int left)
    {
        const std::string name = action.text().toStdString();
        const QRect item = menu.actionGeometry(&action);
        QFont font(u"Noto Sans SC Medium"_s);
        font.setPixelSize(12);
        const QRect expected = QFontMetrics(font).tightBoundingRect(action.text());
        // Without the menu's border, and the switch at the right.
        const QRect text = extent(image, item.adjusted(3, 4, -50, -4),
                                  [](const QColor& one) { return one.lightness() < 200; });
        EXPECT_TRUE(holds(image, item, QColor(0x57, 0x57, 0x57))) << name;
        EXPECT_NEAR(text.height(), expected.height(), 2) << name;
        EXPECT_NEAR(text.left() - item.left(), left + expected.left(), 2) << name;
    }
};

} // namespace

TEST_F(WindowMenusLookTest, TitleBarMenusAreDrawnInTheirSizesAndColours)
{
    for (const char* const name : menuButtons) {
        QMenu& menu = *button(name).menu();
        menu.adjustSize();
        const QImage rest = menu.grab().toImage();
        EXPECT_EQ(rest.pixelColor(rest.width() / 2, 0), border) << name;
        EXPECT_EQ(rest.pixelColor(0, rest.height() / 2), border) << name;
        // Round below, square above.
        EXPECT_EQ(rest.pixelColor(0, 0), border) << name;
        EXPECT_NE(rest.pixelColor(0, rest.height() - 1), border) << name;
        EXPECT_EQ(rest.pixelColor(6, rest.height() - 1), border) << name;

        for (QAction* const action : menu.actions()) {
            const QRect item = menu.actionGeometry(action);
            if (action->isSeparator() || !item.isValid())
                continue;
            const std::string where = std::string(name) + ' ' + action->text().toStdString();
            expectText(rest, menu, *action, 2 + 10);
            menu.setActiveAction(action);
            const QImage selected = menu.grab().toImage();
            const QRect filled = extent(selected, selected.rect(), accent);
            EXPECT_EQ(filled, QRect(item.left() + 2, item.top() + 2, item.width() - 4, 30)) << where;
            // A radius of five pixels: the corner is free, the edge beside it is not.
            EXPECT_NE(selected.pixelColor(filled.topLeft() + QPoint(1, 0)), accent) << where;
            EXPECT_EQ(selected.pixelColor(filled.topLeft() + QPoint(5, 0)), accent) << where;
            EXPECT_TRUE(holds(selected, item, white)) << where;
        }
    }
}

TEST_F(WindowMenusLookTest, ATitleBarMenusItemUnderTheMouseIsPaleAndDarkWhilePressed)
{
    for (const char* const name : menuButtons) {
        QImage hovered;
        QImage pressed;
        QImage byKey;
        QRect item;
        const PopupVisitor visitor([&](QMenu& menu) {
            // The press that has opened the menu is still going on.
            QTest::mouseRelease(&button(name), Qt::LeftButton);
            QAction* const first = menu.actions().constFirst();
            item = menu.actionGeometry(first);
            QTest::mouseMove(&menu, item.center());
            hovered = menu.grab().toImage();
            QTest::mousePress(&menu, Qt::LeftButton, {}, item.center());
            pressed = menu.grab().toImage();
            QTest::mouseRelease(&menu, Qt::LeftButton, {}, QPoint(-20, -20));
            menu.setActiveAction(nullptr);
            QTest::keyClick(&menu, Qt::Key_Down);
            byKey = menu.grab().toImage();
        });
        click(name);
        ASSERT_TRUE(visitor.hasCome()) << name;
        const QRect whole(item.left() + 2, item.top() + 2, item.width() - 4, 30);
        EXPECT_EQ(extent(hovered, item, pale), whole) << name;
        EXPECT_TRUE(holds(hovered, item, accent)) << name << ": its text";
        EXPECT_EQ(extent(pressed, item, accent), whole) << name;
        EXPECT_TRUE(holds(pressed, item, white)) << name << ": its text";
        EXPECT_EQ(extent(byKey, item, accent), whole) << name << ": reached by the keyboard";
    }
}

TEST_F(WindowMenusLookTest, TheFileMenusSeparatorsKeepOffTheSides)
{
    QMenu& file = *button("pb_menu_file").menu();
    file.adjustSize();
    const QImage image = file.grab().toImage();
    int separators = 0;
    for (QAction* const action : file.actions()) {
        if (!action->isSeparator())
            continue;
        ++separators;
        const QRect place = file.actionGeometry(action);
        EXPECT_EQ(extent(image, place, line),
                  QRect(place.left() + 2, place.center().y(), place.width() - 4, 1));
    }
    EXPECT_EQ(separators, 2);
}

TEST_F(WindowMenusLookTest, TheViewerSettingMenuIsDrawnInItsColoursWithItsSwitch)
{
    QMenu& menu = find<QMenu>("menu_viewer_setting");
    menu.adjustSize();
    QAction* const toggle = menu.actions().constFirst();
    const QRect item = menu.actionGeometry(toggle);
    EXPECT_EQ(item.height(), 30);
    // The switch: 36 wide, 20 high, 10 from the right.
    const QRect place(item.right() + 1 - 10 - 36, item.top() + 5, 36, 20);
    const auto showing = [&place](const QString& address) {
        QImage image(place.size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        QIcon(address).paint(&painter, image.rect());
        return image;
    };
    const QImage off = menu.grab().toImage().convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(off.pixelColor(off.width() / 2, 0), accent);
    EXPECT_NE(off.pixelColor(0, 0), accent);
    EXPECT_EQ(off.pixelColor(4, 0), accent);
    EXPECT_EQ(off.copy(place), showing(u":/img/assets/btn_switch_disable.svg"_s));
    // The switch that the style leaves room for at the left is at the right: its width less the padding
    // remains.
    expectText(off, menu, *toggle, 36 - 20);
    toggle->setChecked(true);
    const QImage on = menu.grab().toImage().convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(on.copy(place), showing(u":/img/assets/btn_switch_enable.svg"_s));
    menu.setActiveAction(toggle);
    const QImage selected = menu.grab().toImage();
    EXPECT_EQ(extent(selected, selected.rect(), pale).height(), 30);
    EXPECT_EQ(selected.pixelColor(item.right() - 4, item.center().y()), pale);
    EXPECT_TRUE(holds(selected, item, QColor(0x55, 0x55, 0x55)));
}
