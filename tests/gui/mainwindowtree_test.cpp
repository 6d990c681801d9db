#include "mainwindow/mainwidget.h"

#include "tests/gui/mainwindowfixture.h"

#include <QGraphicsDropShadowEffect>
#include <QLayout>
#include <QMouseEvent>
#include <QSplitter>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int any = -1;
constexpr int open = QWIDGETSIZE_MAX;

/// A widget of the window: where it hangs, what it is and how large it may be.
struct Node
{
    const char* name;
    const char* parent;
    const char* className;
    QSize minimum{any, any};
    QSize maximum{any, any};
};

constexpr QSize fixed(int width, int height)
{
    return {width, height};
}

Node fixedNode(const char* name, const char* parent, const char* className, int width, int height)
{
    return {name, parent, className, fixed(width, height), fixed(width, height)};
}

const std::vector<Node>& tree()
{
    static const std::vector<Node> nodes{
        {"widget_center", "Widget", "QWidget"},
        {"widget_title_bar", "widget_center", "QWidget", {any, 40}, {open, 40}},
        fixedNode("pb_logo_button", "widget_title_bar", "QPushButton", 30, 30),
        {"frame_menu_button", "widget_title_bar", "QFrame"},
        {"pb_menu_file", "frame_menu_button", "QPushButton", {50, 35}, {open, open}},
        {"pb_menu_device", "frame_menu_button", "QPushButton", {60, 35}, {open, open}},
        {"pb_menu_setting", "frame_menu_button", "QPushButton", {70, 35}, {open, open}},
        {"pb_menu_help", "frame_menu_button", "QPushButton", {52, 35}, {open, open}},
        {"widget_title_space", "widget_title_bar", "QWidget"},
        {"frame", "widget_title_bar", "QFrame"},
        fixedNode("pb_win_min", "frame", "QPushButton", 30, 30),
        fixedNode("pb_win_max", "frame", "QPushButton", 30, 30),
        fixedNode("pb_win_close", "frame", "QPushButton", 30, 30),
        {"frame_down", "widget_center", "QFrame"},
        {"splitter", "frame_down", "QSplitter"},
        {"frame_setting", "splitter", "QFrame", {any, any}, {500, open}},
        {"widget_side_bar", "frame_setting", "QWidget", {40, any}, {40, open}},
        fixedNode("pb_fold_setting", "widget_side_bar", "QPushButton", 40, 40),
        fixedNode("pb_fold_dvs_setting", "widget_side_bar", "QPushButton", 40, 40),
        fixedNode("pb_fold_aps_setting", "widget_side_bar", "QPushButton", 40, 40),
        {"label", "widget_side_bar", "QLabel"},
        fixedNode("pb_fold_general_setting", "widget_side_bar", "QPushButton", 40, 40),
        {"frame_main", "splitter", "QFrame"},
        {"frame_show_play_info", "frame_main", "QFrame"},
        fixedNode("label_show_play_text", "frame_show_play_info", "QLabel", 80, 40),
        fixedNode("label_show_camera_info", "frame_show_play_info", "QLabel", 100, 40),
        fixedNode("label_show_play_text2", "frame_show_play_info", "QLabel", 70, 40),
        fixedNode("label_show_timestamp_info", "frame_show_play_info", "QLabel", 100, 40),
        {"widget_show_image", "frame_main", "QWidget"},
        {"frame_play_ctrl", "frame_main", "QFrame", {any, any}, {open, 135}},
        {"label_time", "frame_play_ctrl", "QLabel", {any, 15}, {open, 15}},
        {"time_slider", "frame_play_ctrl", "KvThreeHandleSlider"},
        fixedNode("pb_viewer_type", "frame_play_ctrl", "QPushButton", 40, 40),
        fixedNode("widget_line_1", "frame_play_ctrl", "QWidget", 18, 50),
        fixedNode("line_2", "widget_line_1", "QWidget", 2, 40),
        {"lb_unused", "frame_play_ctrl", "QLabel"},
        fixedNode("pb_record", "frame_play_ctrl", "QPushButton", 40, 40),
        {"lb_recoding_time", "frame_play_ctrl", "QLabel"},
        fixedNode("widget", "frame_play_ctrl", "QWidget", 18, 50),
        fixedNode("line", "widget", "QWidget", 2, 40),
        fixedNode("pb_prv", "frame_play_ctrl", "QPushButton", 40, 40),
        fixedNode("pb_play", "frame_play_ctrl", "QPushButton", 40, 40),
        fixedNode("pb_stop", "frame_play_ctrl", "QPushButton", 40, 40),
        fixedNode("pb_next", "frame_play_ctrl", "QPushButton", 40, 40),
        fixedNode("pb_loop", "frame_play_ctrl", "QPushButton", 40, 40),
        fixedNode("pb_viewer_setting", "frame_play_ctrl", "QPushButton", 40, 40),
    };
    return nodes;
}

/// A button's flags at the start.
struct ButtonFlags
{
    const char* name;
    bool checkable = false;
    bool checked = false;
    bool flat = false;
};

constexpr ButtonFlags buttons[] = {
    {"pb_logo_button"},
    {"pb_menu_file"},
    {"pb_menu_device"},
    {"pb_menu_setting"},
    {"pb_menu_help"},
    {"pb_win_min", true, false, true},
    {"pb_win_max", true, false, true},
    {"pb_win_close", false, false, true},
    {"pb_fold_setting", true, true},
    {"pb_fold_dvs_setting", true},
    {"pb_fold_aps_setting", true},
    {"pb_fold_general_setting", true},
    {"pb_viewer_type"},
    {"pb_record", true},
    {"pb_prv"},
    {"pb_play", true},
    {"pb_stop"},
    {"pb_next"},
    {"pb_loop", true},
    {"pb_viewer_setting", true, false, true},
};

class MainWindowTreeTest : public MainWindowTest
{
protected:
    /// Fails unless the widgets stand beside each other in this order.
    void expectInRow(const std::vector<const char*>& names) const
    {
        for (std::size_t i = 1; i < names.size(); ++i) {
            const QWidget& left = find(names[i - 1]);
            const QWidget& right = find(names[i]);
            const QPoint leftEnd = left.mapTo(window.get(), left.rect().topRight());
            EXPECT_LT(leftEnd.x(), right.mapTo(window.get(), QPoint()).x())
                << names[i - 1] << ' ' << names[i];
        }
    }
    void expectBelow(const std::vector<const char*>& names) const
    {
        for (std::size_t i = 1; i < names.size(); ++i) {
            const QWidget& above = find(names[i - 1]);
            const QWidget& below = find(names[i]);
            EXPECT_LT(above.mapTo(window.get(), above.rect().bottomLeft()).y(),
                      below.mapTo(window.get(), QPoint()).y())
                << names[i - 1] << ' ' << names[i];
        }
    }
    /// Brings the pointer onto a button, or takes it away.
    static void hover(QPushButton& one, bool on)
    {
        one.setAttribute(Qt::WA_UnderMouse, on);
        const QPointF centre = one.rect().center();
        QMouseEvent move(QEvent::MouseMove, centre, one.mapToGlobal(centre), Qt::NoButton, Qt::NoButton, {});
        if (on)
            QCoreApplication::sendEvent(&one, &move);
    }
    QColor pixel(const char* name, const QPoint& position) const
    {
        const QPoint inWindow = find(name).mapTo(window.get(), position);
        return window->grab().toImage().pixelColor(inWindow);
    }
    /// Whether a colour is drawn anywhere in a widget.
    bool shows(const char* name, const QColor& color) const
    {
        const QImage image = find(name).grab().toImage();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y).rgb() == color.rgb())
                    return true;
            }
        }
        return false;
    }
};

} // namespace

TEST_F(MainWindowTreeTest, EveryWidgetHangsWhereItShouldWithItsClassAndSize)
{
    EXPECT_EQ(window->objectName(), u"Widget"_s);
    EXPECT_EQ(window->minimumSize(), QSize(1000, 650));
    for (const Node& node : tree()) {
        const QWidget& widget = find(node.name);
        EXPECT_EQ(widget.parentWidget()->objectName(), QLatin1StringView(node.parent)) << node.name;
        EXPECT_STREQ(widget.metaObject()->className(), node.className) << node.name;
        const auto expectSize = [&](int wanted, int is, const char* what) {
            if (wanted != any) {
                EXPECT_EQ(is, wanted) << node.name << ' ' << what;
            }
        };
        expectSize(node.minimum.width(), widget.minimumWidth(), "minimum width");
        expectSize(node.minimum.height(), widget.minimumHeight(), "minimum height");
        expectSize(node.maximum.width(), widget.maximumWidth(), "maximum width");
        expectSize(node.maximum.height(), widget.maximumHeight(), "maximum height");
    }
}

TEST_F(MainWindowTreeTest, NothingElseHangsInTheWindow)
{
    // What other classes bring along hangs in these.
    const QStringList theirs{u"widget_show_image"_s, u"time_slider"_s};
    QStringList known{u"Widget"_s};
    int sideBars = 0;
    for (const Node& node : tree())
        known << QLatin1StringView(node.name);
    for (const QString& name : std::as_const(known)) {
        if (theirs.contains(name))
            continue;
        const QWidget& parent = name == u"Widget"_s ? *window : find(name.toLatin1().constData());
        for (const QWidget* const child :
             parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
            const QByteArray className = child->metaObject()->className();
            const bool sideBar = name == u"frame_setting"_s && className.startsWith("Sidebar");
            sideBars += sideBar ? 1 : 0;
            const bool helper = child->isWindow() || className == "QSplitterHandle" || sideBar;
            EXPECT_TRUE(helper || known.contains(child->objectName()))
                << className.toStdString() << ' ' << child->objectName().toStdString() << " in "
                << name.toStdString();
        }
    }
    EXPECT_EQ(sideBars, 3);
}

TEST_F(MainWindowTreeTest, OnlyTheWindowAndTheImageAreaTakeTheFocus)
{
    for (const Node& node : tree()) {
        if (QLatin1StringView(node.name) != "widget_show_image"_L1) {
            EXPECT_EQ(find(node.name).focusPolicy(), Qt::NoFocus) << node.name;
        }
    }
    EXPECT_EQ(find("widget_show_image").focusPolicy(), Qt::StrongFocus);
    EXPECT_EQ(window->focusPolicy(), Qt::StrongFocus);
}

TEST_F(MainWindowTreeTest, EveryButtonHasItsFlagsAndNoFocus)
{
    for (const ButtonFlags& flags : buttons) {
        const QPushButton& one = button(flags.name);
        EXPECT_EQ(one.isCheckable(), flags.checkable) << flags.name;
        EXPECT_EQ(one.isChecked(), flags.checked) << flags.name;
        EXPECT_EQ(one.isFlat(), flags.flat) << flags.name;
        EXPECT_EQ(one.focusPolicy(), Qt::NoFocus) << flags.name;
        EXPECT_FALSE(one.autoRepeat()) << flags.name;
    }
    QStringList all;
    for (const QPushButton* const one : window->findChildren<QPushButton*>())
        all << one->objectName();
    // A side bar's buttons are its own.
    for (const QPushButton* const one : find("frame_setting").findChildren<QPushButton*>()) {
        if (one->parentWidget()->objectName() != u"widget_side_bar"_s)
            all.removeOne(one->objectName());
    }
    EXPECT_EQ(static_cast<std::size_t>(all.size()), std::size(buttons)) << all.join(u' ').toStdString();
    EXPECT_EQ(window->focusPolicy(), Qt::StrongFocus);
    EXPECT_EQ(find("widget_show_image").focusPolicy(), Qt::StrongFocus);
}

TEST_F(MainWindowTreeTest, EverythingStandsInItsOrder)
{
    expectInRow({"pb_logo_button", "pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help",
                 "widget_title_space", "pb_win_min", "pb_win_max", "pb_win_close"});
    expectInRow({"frame_setting", "frame_main"});
    expectInRow({"label_show_play_text", "label_show_camera_info", "label_show_play_text2",
                 "label_show_timestamp_info"});
    expectInRow({"pb_viewer_type", "widget_line_1", "lb_unused", "pb_record", "lb_recoding_time", "widget",
                 "pb_prv", "pb_play", "pb_stop", "pb_next", "pb_loop", "pb_viewer_setting"});
    expectBelow({"pb_fold_setting", "pb_fold_dvs_setting", "pb_fold_aps_setting", "label",
                 "pb_fold_general_setting"});
    expectBelow({"frame_show_play_info", "widget_show_image", "label_time", "time_slider", "pb_play"});
    EXPECT_EQ(find("widget_title_space").sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    const auto& sliderLayout = find<QVBoxLayout>("layout_time_slider");
    ASSERT_EQ(sliderLayout.count(), 1);
    EXPECT_EQ(sliderLayout.itemAt(0)->widget(), &slider());
    // Info row and viewer settings keep to the right, the last fold button to the bottom.
    EXPECT_EQ(find("label_show_timestamp_info").geometry().right(),
              find("frame_show_play_info").rect().right());
    EXPECT_EQ(find("pb_viewer_setting").geometry().right(), find("frame_play_ctrl").rect().right());
    EXPECT_EQ(find("pb_fold_general_setting").geometry().bottom(), find("widget_side_bar").rect().bottom());
    EXPECT_EQ(slider().width(), find("frame_play_ctrl").width());
}

TEST_F(MainWindowTreeTest, TheSplitterHoldsBothPanesAndCollapsesNeither)
{
    const auto& splitter = find<QSplitter>("splitter");
    EXPECT_EQ(splitter.orientation(), Qt::Horizontal);
    EXPECT_FALSE(splitter.childrenCollapsible());
    EXPECT_EQ(splitter.contentsMargins(), QMargins(10, 10, 10, 10));
    ASSERT_EQ(splitter.count(), 2);
    EXPECT_EQ(splitter.widget(0), &find("frame_setting"));
    EXPECT_EQ(splitter.widget(1), &find("frame_main"));
    EXPECT_EQ(splitter.widget(0)->sizePolicy().horizontalStretch(), 1);
    EXPECT_EQ(splitter.widget(1)->sizePolicy().horizontalStretch(), 10);
}

TEST_F(MainWindowTreeTest, BothPanesCastTheSameShadow)
{
    for (const char* const name : {"frame_setting", "frame_main"}) {
        const auto* const shadow = qobject_cast<QGraphicsDropShadowEffect*>(find(name).graphicsEffect());
        ASSERT_NE(shadow, nullptr) << name;
        EXPECT_EQ(shadow->offset(), QPointF(0, 3)) << name;
        EXPECT_EQ(shadow->color(), QColor(0, 0, 0, 41)) << name;
        EXPECT_EQ(shadow->blurRadius(), 6) << name;
        const QSize size = find(name).size();
        EXPECT_LT(pixel(name, QPoint(size.width() / 2, size.height() + 1)).lightness(),
                  QColor(0xF2, 0xF2, 0xF2).lightness())
            << name << ": nothing is darker below it";
    }
}

TEST_F(MainWindowTreeTest, SurfacesAreDrawnInTheirColours)
{
    EXPECT_EQ(pixel("frame_down", QPoint(500, 3)), QColor(0xF2, 0xF2, 0xF2));
    EXPECT_EQ(pixel("widget_title_space", QPoint(40, 10)), QColor(0xFA, 0xFA, 0xFA));
    EXPECT_EQ(pixel("widget_title_bar", QPoint(400, 39)), QColor(0xAA, 0xAA, 0xAA));
    EXPECT_EQ(pixel("label", QPoint(20, 100)), QColor(0xF1, 0xF4, 0xF6));
    EXPECT_EQ(pixel("frame_main", QPoint(20, 20)), QColor(0xFF, 0xFF, 0xFF));
    EXPECT_EQ(pixel("frame_setting", QPoint(60, find("frame_setting").height() - 40)),
              QColor(0xFC, 0xFC, 0xFC));
    const QWidget& handle = *find<QSplitter>("splitter").handle(1);
    ASSERT_GE(handle.width(), 3);
    EXPECT_EQ(window->grab().toImage().pixelColor(
                  handle.mapTo(window.get(), QPoint(handle.width() / 2, handle.height() / 2))),
              QColor(0xF2, 0xF2, 0xF2));
    // Both panes' corners are rounded by six pixels: the ground shows outside the arc and not inside.
    for (const char* const name : {"frame_setting", "frame_main", "widget_side_bar"}) {
        const QColor inside = pixel(name, QPoint(7, 1));
        EXPECT_NE(pixel(name, QPoint(0, 0)), inside) << name;
        EXPECT_NE(pixel(name, QPoint(1, 1)), inside) << name;
        EXPECT_EQ(pixel(name, QPoint(3, 3)), inside) << name;
    }
    EXPECT_EQ(pixel("line", QPoint(1, 20)), QColor(0x91, 0x9C, 0xA0));
    EXPECT_EQ(pixel("line_2", QPoint(1, 20)), QColor(0x91, 0x9C, 0xA0));
    // The window's own corners are round.
    EXPECT_EQ(window->grab().toImage().convertToFormat(QImage::Format_ARGB32).pixelColor(0, 0).alpha(), 0);
}

TEST_F(MainWindowTreeTest, TextsAreDrawnInTheirColours)
{
    emit window->toShowCameraSerial(u"HAL-000001"_s);
    emit window->toShowCameraTimestamp(75'000'250);
    find<QLabel>("lb_recoding_time").setText(u"00:07"_s);
    find<QLabel>("lb_unused").setText(u"HHH"_s);
    find<QLabel>("lb_unused").adjustSize();
    const std::pair<const char*, QColor> colours[] = {
        {"pb_menu_file", QColor(0x80, 0x80, 0x80)},
        {"label_show_play_text", QColor(0x00, 0x4B, 0x6A)},
        {"label_show_play_text2", QColor(0x00, 0x4B, 0x6A)},
        {"label_show_camera_info", QColor(0x80, 0x80, 0x80)},
        {"label_show_timestamp_info", QColor(0x80, 0x80, 0x80)},
        {"label_time", QColor(0x90, 0x90, 0x90)},
        {"lb_recoding_time", QColor(0xFF, 0x60, 0x58)},
        {"lb_unused", QColor(0xFF, 0x60, 0x58)},
    };
    for (const auto& [name, colour] : colours)
        EXPECT_TRUE(shows(name, colour)) << name << " shows no " << colour.name().toStdString();
    for (const char* const name : {"label_show_camera_info", "label_show_timestamp_info"})
        EXPECT_EQ(find(name).fontInfo().pixelSize(), 14) << name;
    for (const char* const name : {"label_show_play_text", "label_show_play_text2", "label_time",
                                   "pb_menu_file", "lb_recoding_time", "lb_unused"})
        EXPECT_EQ(find(name).fontInfo().pixelSize(), 16) << name;
}

TEST_F(MainWindowTreeTest, AMenuButtonIsUnderlinedWhileThePointerIsOnIt)
{
    const QColor accent(0x00, 0x4B, 0x6A);
    for (const char* const name : {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help"}) {
        QPushButton& one = button(name);
        EXPECT_FALSE(shows(name, accent)) << name;
        hover(one, true);
        const QImage hovered = one.grab().toImage();
        for (const int fromBottom : {1, 2})
            EXPECT_EQ(hovered.pixelColor(hovered.width() / 2, hovered.height() - fromBottom), accent) << name;
        EXPECT_NE(hovered.pixelColor(hovered.width() / 2, hovered.height() - 3), accent) << name;
        hover(one, false);
        one.setDown(true);
        EXPECT_EQ(one.grab().toImage().pixelColor(one.width() / 2, one.height() - 1), accent) << name;
        one.setDown(false);
    }
}
