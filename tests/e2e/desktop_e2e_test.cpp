#include "camera/driver/dvsfilereader.h"
#include "playback/kvcutrawfile.h"
#include "tests/e2e/desktopstory.h"
#include "tests/support/movingbar.h"
#include "widgets/kvthreehandleslider.h"

#include <QDialog>
#include <QScreen>

#include <cstdlib>

using namespace Qt::Literals::StringLiterals;

namespace {

bool isNear(int value, int wanted)
{
    // The pointer goes a few pixels before a press is a drag, and the window stays behind by as many.
    return std::abs(value - wanted) <= 12;
}

} // namespace

TEST_F(DesktopStory, TheWindowAndTheScreenAgreeAboutItsPlaceHoweverOftenItIsShown)
{
    for (int i = 0; i < 8; ++i) {
        SCOPED_TRACE(i);
        window->hide();
        window = std::make_unique<MainWidget>();
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get(), patience));
        ASSERT_TRUE(QTest::qWaitFor([this] { return agreesWithItsNativeWindow(); }, patience));
        play([this] {
            EXPECT_TRUE(until([this] { return onGui([this] { return window->geometry(); }) == geometry(); }));
        });
    }
}

TEST_F(DesktopStory, AMenuOpensBelowItsButton)
{
    play([this] {
        click("pb_menu_device");
        ASSERT_TRUE(untilOnGui([] { return QApplication::activePopupWidget() != nullptr; }));
        EXPECT_EQ(onGui([] { return QApplication::activePopupWidget()->pos(); }),
                  place("pb_menu_device").bottomLeft() + QPoint(0, 1));
        key("Escape");
        EXPECT_TRUE(untilOnGui([] { return QApplication::activePopupWidget() == nullptr; }));
    });
}

TEST_F(DesktopStory, TheTitleSpaceDragsTheWindow)
{
    play([this] {
        const QRect before = geometry();
        const QPoint distance(-90, 60);
        dragWindow(place("widget_title_space").center(), distance, [&](const QRect& now) {
            return now.size() == before.size() && isNear(now.x() - before.x(), distance.x())
                && isNear(now.y() - before.y(), distance.y());
        });
        EXPECT_TRUE(until([this] { return onGui([this] { return window->geometry(); }) == geometry(); }));
    });
}

TEST_F(DesktopStory, NothingButTheTitleSpaceDragsTheWindow)
{
    play([this] {
        const QRect before = geometry();
        for (const char* const name :
             {"pb_logo_button",      "pb_menu_file",   "pb_menu_device",       "pb_menu_setting",
              "pb_menu_help",        "pb_win_min",     "pb_win_max",           "pb_win_close",
              "pb_fold_dvs_setting", "label",          "label_show_play_text", "label_show_timestamp_info",
              "widget_show_image",   "label_time",     "time_slider",          "pb_play",
              "lb_unused",           "pb_viewer_type", "pb_viewer_setting",    "widget"}) {
            SCOPED_TRACE(name);
            dragInVain(place(name).center(), QPoint(70, 90));
            // A menu that the press has opened.
            if (onGui([] { return QApplication::activePopupWidget() != nullptr; }))
                key("Escape");
            EXPECT_TRUE(untilOnGui([] { return QApplication::activePopupWidget() == nullptr; }));
            EXPECT_EQ(geometry(), before);
        }
        EXPECT_TRUE(onGui([this] { return window->isVisible() && !window->isMinimized(); }));
    });
}

TEST_F(DesktopStory, TheWindowIsResizedAtItsEdges)
{
    play([this] {
        QRect before = geometry();
        dragWindow(QPoint(before.right() - 2, before.center().y()), QPoint(60, 0), [&](const QRect& now) {
            return now.topLeft() == before.topLeft() && now.height() == before.height()
                && isNear(now.width(), before.width() + 60);
        });
        before = geometry();
        dragWindow(QPoint(before.center().x(), before.bottom() - 2), QPoint(0, -70), [&](const QRect& now) {
            return now.topLeft() == before.topLeft() && now.width() == before.width()
                && isNear(now.height(), before.height() - 70);
        });
        before = geometry();
        dragWindow(QPoint(before.left() + 2, before.center().y()), QPoint(80, 0), [&](const QRect& now) {
            return now.right() == before.right() && now.top() == before.top()
                && now.height() == before.height() && isNear(now.left(), before.left() + 80);
        });
        before = geometry();
        dragWindow(before.topLeft() + QPoint(9, 2), QPoint(-50, -40), [&](const QRect& now) {
            return now.bottomRight() == before.bottomRight() && isNear(now.left(), before.left() - 50)
                && isNear(now.top(), before.top() - 40);
        });
        // It never gets smaller than it may be.
        before = geometry();
        dragWindow(QPoint(before.right() - 2, before.center().y()), QPoint(-900, 0), [&](const QRect& now) {
            return now.topLeft() == before.topLeft() && now.width() == 1000;
        });
    });
}

TEST_F(DesktopStory, TheButtonMaximisesAndRestoresTheWindow)
{
    play([this] {
        const QRect before = geometry();
        const QRect screen = onGui([] { return QGuiApplication::primaryScreen()->availableGeometry(); });
        click("pb_win_max");
        EXPECT_TRUE(until([&] { return geometry() == screen; }));
        EXPECT_TRUE(untilOnGui([&] { return window->isMaximized() && window->geometry() == screen; }));
        // A window that fills the screen has no edges to pull at.
        dragInVain(QPoint(screen.left() + 2, screen.center().y()), QPoint(100, 0));
        EXPECT_EQ(geometry(), screen);
        click("pb_win_max");
        EXPECT_TRUE(until([&] { return geometry() == before; }));
        EXPECT_TRUE(untilOnGui([&] { return !window->isMaximized() && window->geometry() == before; }));
    });
}

TEST_F(DesktopStory, ARecordingIsPlayedCutAndFollowedByALiveCameraWithPointerAndKeyboard)
{
    const QDir folder = QDir::current();
    ASSERT_TRUE(writeMovingBar(folder.filePath(u"bar.raw"_s), 3000));
    ASSERT_TRUE(folder.mkpath(u"out"_s));
    const QDir out(folder.filePath(u"out"_s));
    Config* const config = Config::getInstance(u"config.ini"_s);
    config->input_raw_file_path = folder.path();
    config->output_raw_file_path = out.path();
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);

    play([&] {
        openRecording(u"bar.raw"_s);
        ASSERT_FALSE(HasFailure());
        const QString first = text("label_time");
        ASSERT_TRUE(until([&] { return text("label_time") != first; })) << "it does not play";

        key("space");
        ASSERT_TRUE(until([this] { return !isChecked("pb_play"); }));
        click("pb_stop");
        ASSERT_TRUE(until([this] { return text("label_time").startsWith(u"00:00:000000/"_s); }));
        const QString start = text("label_time");
        key("Right");
        ASSERT_TRUE(until([&] { return text("label_time") != start; }));
        const QString second = text("label_time");
        key("Right");
        ASSERT_TRUE(until([&] { return text("label_time") != second; }));
        key("Left");
        ASSERT_TRUE(until([&] { return text("label_time") == second; }));

        choose("pb_viewer_setting", u"Toggle Start/End Point"_s);
        const auto timeline = [this] { return window->findChild<KvThreeHandleSlider*>(); };
        ASSERT_TRUE(untilOnGui([&] { return timeline()->handleMode() == 3; }));
        const QRect line = place("time_slider");
        dragInVain(QPoint(line.right() - 3, line.center().y()), QPoint(-line.width() / 2, 0));
        ASSERT_TRUE(untilOnGui([&] { return timeline()->effectiveUpperValue() < 2'000'000; }));

        choose("pb_menu_file", u"Cut Recording"_s);
        ASSERT_TRUE(untilInFront<KvCutRawFile>());
        click("pb_save");
        ASSERT_TRUE(until([&] { return out.entryList({u"*.raw"_s}, QDir::Files).count() == 1; }));
        ASSERT_TRUE(untilTheWindowHasTheKeyboard());
        const QString cut = out.entryList({u"*.raw"_s}, QDir::Files).constFirst();
        const auto reader
            = korvane::DvsFileReader::createFileReader(out.filePath(cut).toLocal8Bit().toStdString());
        ASSERT_TRUE(reader && reader->loadFile());
        std::uint64_t end = 0;
        reader->getEndTimestamp(end);
        EXPECT_LT(end, 2'000'000U);

        openCamera();
        ASSERT_FALSE(HasFailure());
        click("pb_record");
        ASSERT_TRUE(until([this] { return text("lb_recoding_time") == u"00:01"_s; }));
        click("pb_record");
        ASSERT_TRUE(until([this] { return !isChecked("pb_record"); }));
        EXPECT_EQ(out.entryList({u"*.raw"_s}, QDir::Files).count(), 2);
        key("space");
        ASSERT_TRUE(until([this] { return !isChecked("pb_play"); }));

        choose("pb_menu_file", u"Quit"_s);
        EXPECT_TRUE(untilOnGui([this] { return !window->isVisible(); }));
    });
}
