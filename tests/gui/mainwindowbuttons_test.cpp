#include "tests/gui/mainwindowfixture.h"

#include <QMouseEvent>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

enum State {
    Rest = 0,
    Hovered = 1,
    Pressed = 2,
    Checked = 4,
    Disabled = 8,
};

/// What a button shows in a state: an image of the family, and what is drawn around it.
struct Look
{
    const char* button;
    int state;
    const char* image;
    const char* around = "";
};

// A fold button whose panel is open has a bar at its side, so that it is not taken for one under the mouse.
constexpr const char* bar = "border-left: 3px solid #004B6A; padding-right: 3px;";

constexpr Look looks[] = {
    {"pb_logo_button", Rest, "img_logo_Korvane"},
    {"pb_win_min", Rest, "btn_Nav_MinimizeWindow"},
    {"pb_win_min", Hovered, "btn_Nav_MinimizeWindow_Hover"},
    {"pb_win_min", Hovered | Pressed, "btn_Nav_MinimizeWindow_Pressed"},
    {"pb_win_max", Rest, "btn_Nav_MaximizeWindow"},
    {"pb_win_max", Hovered, "btn_Nav_MaximizeWindow_Hover"},
    {"pb_win_max", Hovered | Pressed, "btn_Nav_MaximizeWindow_Pressed"},
    {"pb_win_close", Rest, "btn_Nav_CloseWindow"},
    {"pb_win_close", Hovered, "btn_Nav_CloseWindow_Hover"},
    {"pb_win_close", Hovered | Pressed, "btn_Nav_CloseWindow_Pressed"},
    {"pb_fold_setting", Rest, "btn_sidebar_camera"},
    {"pb_fold_setting", Hovered, "btn_sidebar_camera_hover"},
    {"pb_fold_setting", Checked, "btn_sidebar_camera_hover", bar},
    {"pb_fold_dvs_setting", Rest, "btn_sidebar_DVS"},
    {"pb_fold_dvs_setting", Hovered, "btn_sidebar_DVS_hover"},
    {"pb_fold_dvs_setting", Checked, "btn_sidebar_DVS_hover", bar},
    {"pb_fold_aps_setting", Rest, "btn_sidebar_APS"},
    {"pb_fold_aps_setting", Hovered, "btn_sidebar_APS_hover"},
    {"pb_fold_aps_setting", Checked, "btn_sidebar_APS_hover", bar},
    {"pb_fold_general_setting", Rest, "btn_sidebar_setting"},
    {"pb_fold_general_setting", Hovered, "btn_sidebar_setting_hover"},
    {"pb_fold_general_setting", Checked, "btn_sidebar_setting_hover", bar},
    {"pb_record", Rest, "btn_playbar_record"},
    {"pb_record", Hovered, "btn_playbar_record_Hover"},
    {"pb_record", Checked, "btn_playbar_record_Pressed"},
    {"pb_record", Disabled, "btn_playbar_record_Disable"},
    {"pb_prv", Rest, "btn_playbar_backward"},
    {"pb_prv", Hovered, "btn_playbar_backward_Hover"},
    {"pb_prv", Disabled, "btn_playbar_backward_Disable"},
    {"pb_play", Rest, "btn_playbar_play"},
    {"pb_play", Hovered, "btn_playbar_play_Hover"},
    {"pb_play", Hovered | Pressed, "btn_playbar_play_Pressed"},
    {"pb_play", Checked, "btn_playbar_pause"},
    {"pb_play", Checked | Hovered, "btn_playbar_pause_Hover"},
    {"pb_play", Checked | Hovered | Pressed, "btn_playbar_pause_Pressed"},
    {"pb_play", Disabled, "btn_playbar_play_Disable"},
    {"pb_stop", Rest, "btn_playbar_stop"},
    {"pb_stop", Hovered, "btn_playbar_stop_Hover"},
    {"pb_stop", Hovered | Pressed, "btn_playbar_stop_Pressed"},
    {"pb_stop", Disabled, "btn_playbar_stop_Disable"},
    {"pb_next", Rest, "btn_playbar_forward"},
    {"pb_next", Hovered, "btn_playbar_forward_Hover"},
    {"pb_next", Disabled, "btn_playbar_forward_Disable"},
    {"pb_loop", Rest, "btn_playbar_loop"},
    {"pb_loop", Hovered, "btn_playbar_loop_Hover"},
    {"pb_loop", Hovered | Pressed, "btn_playbar_loop_Pressed"},
    {"pb_loop", Checked, "btn_playbar_loop_Selected"},
    {"pb_loop", Disabled, "btn_playbar_loop_Disable"},
    {"pb_viewer_setting", Rest, "btn_playbar_setting"},
    {"pb_viewer_setting", Pressed, "btn_playbar_setting_pressed"},
    {"pb_viewer_setting", Checked, "btn_playbar_setting_pressed"},
};

class MainWindowButtonsTest : public MainWindowTest
{
protected:
    /// A button as it is drawn in a state; afterwards it is as it was.
    QImage drawn(const char* name, int state) const
    {
        QPushButton& one = button(name);
        const bool checked = one.isChecked();
        one.setChecked(state & Checked);
        one.setEnabled(!(state & Disabled));
        one.setDown(state & Pressed);
        hover(one, state & Hovered);
        const QImage image = one.grab().toImage();
        hover(one, false);
        one.setDown(false);
        one.setEnabled(true);
        one.setChecked(checked);
        return image;
    }
    /// What stands in the same place showing nothing but one image.
    QImage showing(const char* name, const QString& image, const char* around = "") const
    {
        const QPushButton& place = button(name);
        QPushButton plain(place.parentWidget());
        plain.setFixedSize(place.size());
        plain.setStyleSheet(
            u"QPushButton { border: none; background-color: transparent; image: url(:/img/assets/%1.svg); %2 }"_s
                .arg(image, QLatin1StringView(around)));
        return plain.grab().toImage();
    }
    static void hover(QPushButton& one, bool on)
    {
        one.setAttribute(Qt::WA_UnderMouse, on);
        const QPointF centre = one.rect().center();
        QMouseEvent move(QEvent::MouseMove, centre, one.mapToGlobal(centre), Qt::NoButton, Qt::NoButton, {});
        if (on)
            QCoreApplication::sendEvent(&one, &move);
    }
    static QString nameOf(const Look& look)
    {
        return u"%1 in state %2"_s.arg(QLatin1StringView(look.button)).arg(look.state);
    }
};

} // namespace

TEST_F(MainWindowButtonsTest, EveryButtonShowsTheImageOfItsState)
{
    for (const Look& look : looks)
        EXPECT_EQ(drawn(look.button, look.state),
                  showing(look.button, QLatin1StringView(look.image), look.around))
            << nameOf(look).toStdString() << " does not show " << look.image;
}

TEST_F(MainWindowButtonsTest, TheLooksOfAButtonDifferFromEachOther)
{
    for (const Look& first : looks) {
        for (const Look& second : looks) {
            if (&first == &second)
                break;
            if (qstrcmp(first.button, second.button) != 0 || qstrcmp(first.image, second.image) == 0)
                continue;
            EXPECT_NE(drawn(first.button, first.state), drawn(second.button, second.state))
                << nameOf(first).toStdString() << ", " << nameOf(second).toStdString();
        }
    }
    // An open panel's button and one under the mouse have the same image.
    for (const char* const name :
         {"pb_fold_setting", "pb_fold_dvs_setting", "pb_fold_aps_setting", "pb_fold_general_setting"})
        EXPECT_NE(drawn(name, Checked), drawn(name, Hovered)) << name;
}

TEST_F(MainWindowButtonsTest, TheViewerTypeButtonShowsTheImagesOfItsType)
{
    const char* const name = "pb_viewer_type";
    const auto expectType = [&](const QString& type) {
        EXPECT_EQ(drawn(name, Rest), showing(name, u"btn_playbar_"_s + type)) << type.toStdString();
        EXPECT_EQ(drawn(name, Hovered), showing(name, u"btn_playbar_%1_hover"_s.arg(type)))
            << type.toStdString();
        EXPECT_EQ(drawn(name, Pressed), showing(name, u"btn_playbar_%1_hover"_s.arg(type)))
            << type.toStdString();
        EXPECT_EQ(drawn(name, Disabled), showing(name, u"btn_playbar_%1_disable"_s.arg(type)))
            << type.toStdString();
    };
    expectType(u"Fusion"_s);
    for (const QString& type : {u"DVS"_s, u"APS"_s, u"Fusion"_s}) {
        click(name);
        expectType(type);
    }
}
