#include "mainwindow/mainwidget.h"

#include "camera/simulation/simulatedbackend.h"
#include "display/showimageform.h"
#include "tests/gui/mainwindowfixture.h"
#include "widgets/kvtooltip.h"

#include <QEnterEvent>
#include <QFile>
#include <QFontMetrics>
#include <QGraphicsView>
#include <QKeyEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QTranslator>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Puts the screen described in the build folder below the application, which reads the variable at its
/// start, unless another one was described.
const bool screenChosen = qEnvironmentVariable("QT_QPA_PLATFORM").contains("configfile"_L1)
    || qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" MAINWINDOW_SCREEN);

constexpr const char* playbackButtons[] = {"pb_loop", "pb_next", "pb_prv", "pb_stop"};
constexpr const char* iconButtons[] = {"pb_logo_button",
                                       "pb_fold_setting",
                                       "pb_fold_dvs_setting",
                                       "pb_fold_aps_setting",
                                       "pb_fold_general_setting",
                                       "pb_win_min",
                                       "pb_win_max",
                                       "pb_win_close",
                                       "pb_viewer_type",
                                       "pb_record",
                                       "pb_prv",
                                       "pb_play",
                                       "pb_stop",
                                       "pb_next",
                                       "pb_loop",
                                       "pb_viewer_setting"};

class MainWidgetTest : public MainWindowTest
{
protected:
    QImage drawn(const char* name) const { return find(name).grab().toImage(); }
    ShowImageForm& imageView() const { return *window->findChild<ShowImageForm*>(); }
    QString titleBarStyle() const { return find("widget_title_bar").styleSheet(); }
};

} // namespace

TEST_F(MainWidgetTest, StartsWithNothingCheckedAndTheTimelineDisabledAtItsStart)
{
    for (const char* const name : {"pb_play", "pb_record", "pb_loop", "pb_viewer_setting"})
        EXPECT_FALSE(button(name).isChecked()) << name;
    EXPECT_FALSE(slider().isEnabled());
    EXPECT_EQ(slider().centerValue(), 0);
    EXPECT_EQ(slider().handleMode(), 1);
    EXPECT_EQ(text("label_time"), u"--/ --"_s);
    EXPECT_EQ(window->windowTitle(), u"Widget"_s);
    EXPECT_TRUE(find("frame_setting").isVisible());
}

TEST_F(MainWidgetTest, TheViewerTypeButtonGoesThroughDvsApsAndFusion)
{
    QSignalSpy spy(window.get(), &MainWidget::signalSetViewerShowType);
    const QImage fusion = drawn("pb_viewer_type");
    std::vector<QImage> images;
    for (const char* const name : {"DVS", "APS", "Fusion"}) {
        click("pb_viewer_type");
        const QString sheet = button("pb_viewer_type").styleSheet();
        for (const char* const variant : {"", "_hover", "_disable"}) {
            const QString image = u":/img/assets/btn_playbar_%1%2.svg"_s.arg(QLatin1StringView(name),
                                                                             QLatin1StringView(variant));
            EXPECT_TRUE(sheet.contains(image)) << image.toStdString();
            EXPECT_TRUE(QFile::exists(image)) << image.toStdString();
        }
        images.push_back(drawn("pb_viewer_type"));
    }
    ASSERT_EQ(spy.count(), 3);
    EXPECT_EQ(spy[0][0].value<korvane::STREAM_TYPE>(), korvane::STREAM_DVS);
    EXPECT_EQ(spy[1][0].value<korvane::STREAM_TYPE>(), korvane::STREAM_APS);
    EXPECT_EQ(spy[2][0].value<korvane::STREAM_TYPE>(), korvane::STREAM_FUSION);
    EXPECT_EQ(int(korvane::STREAM_DVS), 0);
    EXPECT_EQ(int(korvane::STREAM_APS), 1);
    EXPECT_EQ(int(korvane::STREAM_FUSION), 2);
    EXPECT_NE(images[0], images[1]);
    EXPECT_NE(images[1], images[2]);
    EXPECT_NE(images[0], images[2]);
    EXPECT_NE(images[0], fusion);
}

TEST_F(MainWidgetTest, EveryShowCentresTheWindowAsIfTheScreenBeganAtTheOrigin)
{
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    ASSERT_NE(available.topLeft(), QPoint(0, 0)) << "the screen of this test is not in use";
    const auto centre = [&] {
        return QPoint(available.width() / 2 - window->width() / 2,
                      available.height() / 2 - window->height() / 2);
    };
    EXPECT_EQ(window->size(), QSize(1280, 860));
    EXPECT_EQ(window->pos(), QPoint(160, 70));
    EXPECT_EQ(window->pos(), centre());
    window->hide();
    window->move(5, 6);
    window->resize(1001, 651);
    window->show();
    EXPECT_EQ(window->pos(), centre());
}

TEST_F(MainWidgetTest, AMaximisedWindowThatWasMinimisedComesBackWhereItFillsTheScreen)
{
    ASSERT_NE(QGuiApplication::primaryScreen()->availableGeometry().topLeft(), QPoint(0, 0));
    click("pb_win_max");
    ASSERT_TRUE(window->isMaximized());
    const QRect filling = window->geometry();
    click("pb_win_min");
    ASSERT_TRUE(window->isMinimized());
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    EXPECT_TRUE(window->isMaximized());
    // Shown anew, as from the task bar.
    window->hide();
    window->show();
    EXPECT_TRUE(window->isMaximized());
    EXPECT_EQ(window->geometry(), filling);
}

TEST_F(MainWidgetTest, ALiveCameraTakesThePlaybackControlsAway)
{
    slider().setMaximum(1000);
    slider().setCenterValue(500);
    slider().setEnabled(true);
    emit window->setShowCameraLiveUI(true);
    for (const char* const name : playbackButtons)
        EXPECT_FALSE(button(name).isEnabled()) << name;
    EXPECT_FALSE(slider().isEnabled());
    EXPECT_EQ(slider().centerValue(), 0);
    EXPECT_EQ(text("label_time"), u"--/--"_s);
    EXPECT_TRUE(button("pb_play").isEnabled());
    EXPECT_TRUE(button("pb_record").isEnabled());
}

TEST_F(MainWidgetTest, ARecordingGivesThePlaybackControlsBackAtTheStartOfTheRange)
{
    emit window->setShowCameraLiveUI(true);
    slider().setMaximum(1000);
    slider().setMinimum(0);
    slider().setHandleMode(3);
    slider().setCenterValue(500);
    slider().setLowerValue(200);
    emit window->setShowCameraLiveUI(false);
    for (const char* const name : playbackButtons)
        EXPECT_TRUE(button(name).isEnabled()) << name;
    EXPECT_TRUE(slider().isEnabled());
    EXPECT_EQ(slider().centerValue(), 200);
    EXPECT_EQ(text("label_time"), u"--/--"_s) << "the player writes it, not the switch";
}

TEST_F(MainWidgetTest, TheTitleShowsSerialAndTimeUntilItIsReset)
{
    for (const bool show : {true, false}) {
        emit window->toShowCameraSerial(u"HAL-000001"_s);
        emit window->toShowCameraTimestamp(75'000'250);
        EXPECT_EQ(text("label_show_camera_info"), u"HAL-000001"_s);
        EXPECT_EQ(text("label_show_timestamp_info"), u"01:15:000250"_s);
        emit window->resetShowCameraFormTitle(show);
        EXPECT_EQ(text("label_show_camera_info"), QString()) << show;
        EXPECT_EQ(text("label_show_timestamp_info"), QString()) << show;
    }
}

TEST_F(MainWidgetTest, SerialAndTimeFitTheirLabels)
{
    emit window->toShowCameraSerial(u"HAL-000001"_s);
    emit window->toShowCameraTimestamp(75'000'250);
    for (const char* const name : {"label_show_camera_info", "label_show_timestamp_info"}) {
        const QLabel& label = find<QLabel>(name);
        EXPECT_EQ(label.size(), QSize(100, 40)) << name;
        EXPECT_LE(QFontMetrics(label.font()).horizontalAdvance(label.text()), label.contentsRect().width())
            << name;
    }
}

TEST_F(MainWidgetTest, AChangeOfLanguageTranslatesTheFormAgain)
{
    emit window->setShowCameraLiveUI(true);
    QTranslator translator;
    ASSERT_TRUE(translator.load(u":/app_zh.qm"_s));
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    EXPECT_TRUE(QTest::qWaitFor([this] { return button("pb_menu_file").text() != u"File"_s; }));
    EXPECT_EQ(button("pb_menu_file").text(), QCoreApplication::translate("Widget", "File"));
    EXPECT_EQ(text("label_time"), u"--/ --"_s);
    EXPECT_EQ(button("pb_menu_file").menu()->actions().constFirst()->text(), u"Open Recording"_s)
        << "the menus' texts stay";
    for (const char* const name : iconButtons)
        EXPECT_EQ(button(name).text(), QString()) << name;

    QCoreApplication::removeTranslator(&translator);
    EXPECT_TRUE(QTest::qWaitFor([this] { return button("pb_menu_file").text() == u"File"_s; }));
    EXPECT_EQ(button("pb_menu_device").text(), u"Device"_s);
    EXPECT_EQ(button("pb_menu_setting").text(), u"Setting"_s);
    EXPECT_EQ(button("pb_menu_help").text(), u"Help"_s);
    EXPECT_EQ(text("label_show_play_text"), u"Camera: "_s);
    EXPECT_EQ(text("label_show_play_text2"), u" | Time: "_s);
    EXPECT_EQ(window->windowTitle(), u"Widget"_s);
}

TEST_F(MainWidgetTest, AChangeOfLanguageEmptiesValuesAndTips)
{
    constexpr const char* valueLabels[]
        = {"label_show_camera_info", "label_show_timestamp_info", "lb_recoding_time", "lb_unused"};
    for (const char* const name : valueLabels) {
        find<QLabel>(name).setText(u"value"_s);
        find(name).setToolTip(u"tip"_s);
    }
    for (const char* const name : iconButtons) {
        button(name).setText(u"text"_s);
        button(name).setToolTip(u"tip"_s);
    }
    QEvent change(QEvent::LanguageChange);
    QCoreApplication::sendEvent(window.get(), &change);
    for (const char* const name : valueLabels) {
        EXPECT_EQ(text(name), QString()) << name;
        EXPECT_EQ(find(name).toolTip(), QString()) << name;
    }
    for (const char* const name : iconButtons) {
        EXPECT_EQ(button(name).text(), QString()) << name;
        EXPECT_EQ(button(name).toolTip(), QString()) << name;
    }
}

TEST_F(MainWidgetTest, KeysWithoutMeaningEndInTheWindow)
{
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, {}, u"a"_s);
    QCoreApplication::sendEvent(window.get(), &key);
    EXPECT_TRUE(key.isAccepted());
    EXPECT_FALSE(button("pb_play").isChecked());
}

TEST_F(MainWidgetTest, TheViewerSettingsButtonThatComesUpOpensNothing)
{
    QSignalSpy opened(&find<QMenu>("menu_viewer_setting"), &QMenu::aboutToShow);
    button("pb_viewer_setting").setChecked(true);
    click("pb_viewer_setting");
    EXPECT_FALSE(button("pb_viewer_setting").isChecked());
    EXPECT_EQ(opened.count(), 0);
}

TEST_F(MainWidgetTest, NeitherButtonsNorTheImageViewTakeTheFocus)
{
    for (const char* const name : iconButtons)
        EXPECT_EQ(button(name).focusPolicy(), Qt::NoFocus) << name;
    for (const char* const name : {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help"})
        EXPECT_EQ(button(name).focusPolicy(), Qt::NoFocus) << name;
    EXPECT_EQ(find<QGraphicsView>("graphicsView").focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(find("widget_show_image").focusPolicy(), Qt::StrongFocus);
    EXPECT_EQ(window->focusPolicy(), Qt::StrongFocus);
}

TEST_F(MainWidgetTest, TheMaximiseButtonTogglesTheStateAndTheTitleBarsCorners)
{
    click("pb_win_max");
    EXPECT_TRUE(window->isMaximized());
    const QString maximized = titleBarStyle();
    EXPECT_EQ(maximized.count(u"-radius: 0px"_s), 4) << maximized.toStdString();
    click("pb_win_max");
    EXPECT_FALSE(window->isMaximized());
    EXPECT_TRUE(window->isVisible());
    const QString normal = titleBarStyle();
    EXPECT_TRUE(normal.contains(u"border-top-left-radius: 6px"_s)) << normal.toStdString();
    EXPECT_TRUE(normal.contains(u"border-top-right-radius: 6px"_s)) << normal.toStdString();
    EXPECT_EQ(normal.count(u"-radius: 0px"_s), 2) << normal.toStdString();
    for (const QString& sheet : {maximized, normal}) {
        EXPECT_TRUE(sheet.contains(u"border-bottom: 1px solid #AAAAAA"_s)) << sheet.toStdString();
        EXPECT_FALSE(sheet.contains(u"background"_s)) << sheet.toStdString();
    }
}

#if KORVANE_OWN_FRAME
TEST_F(MainWidgetTest, ADoubleClickOnTheTitleLeavesTheTitleBarsLook)
{
    const QString before = titleBarStyle();
    QTest::mouseDClick(&find("widget_title_space"), Qt::LeftButton);
    EXPECT_TRUE(window->isMaximized());
    EXPECT_EQ(titleBarStyle(), before);
    QTest::mouseDClick(&find("widget_title_space"), Qt::LeftButton);
    EXPECT_FALSE(window->isMaximized());
    EXPECT_EQ(titleBarStyle(), before);
}
#endif

TEST_F(MainWidgetTest, MaximizedChangedNotesTheButtonsType)
{
    ASSERT_TRUE(QMetaObject::invokeMethod(window.get(), "maximizedChanged", Q_ARG(bool, true)));
    EXPECT_EQ(button("pb_win_max").property("type").toString(), u"restore"_s);
    ASSERT_TRUE(QMetaObject::invokeMethod(window.get(), "maximizedChanged", Q_ARG(bool, false)));
    EXPECT_EQ(button("pb_win_max").property("type").toString(), u"maxsize"_s);
}

TEST_F(MainWidgetTest, TheOtherWindowButtonsMinimiseAndClose)
{
    click("pb_win_min");
    EXPECT_TRUE(window->isMinimized());
    window->showNormal();
    click("pb_win_close");
    EXPECT_FALSE(window->isVisible());
}

#if KORVANE_OWN_FRAME
TEST_F(MainWidgetTest, TheTitleSpaceDragsTheWindow)
{
    const QPoint before = window->pos();
    drag(find("widget_title_space"), QPoint(50, 10), QPoint(40, 25));
    EXPECT_EQ(window->pos(), before + QPoint(40, 25));
}
#endif

TEST_F(MainWidgetTest, TheMenuButtonsDoNotDragTheWindow)
{
    const QPoint before = window->pos();
    for (const char* const name : {"pb_menu_file", "pb_menu_device", "pb_menu_setting", "pb_menu_help"}) {
        const PopupVisitor visitor([](QMenu&) {});
        // Out of the button: inside, the move would press it again.
        drag(button(name), QPoint(5, 5), QPoint(60, 60));
        EXPECT_TRUE(visitor.hasCome()) << name << ": the press did not reach the button";
        EXPECT_EQ(window->pos(), before) << name;
    }
}

#if KORVANE_OWN_FRAME
TEST_F(MainWidgetTest, CaptionAreasNeitherDragNorActByThemselves)
{
    const QPoint before = window->pos();
    for (const char* const name : {"pb_logo_button", "pb_win_min", "pb_win_max", "pb_win_close"}) {
        // Out of the button: no click.
        drag(button(name), QPoint(5, 5), QPoint(60, 60));
        QTest::mouseRelease(&button(name), Qt::LeftButton, {}, QPoint(90, 90));
        EXPECT_EQ(window->pos(), before) << name;
        EXPECT_TRUE(window->isVisible() && !window->isMinimized() && !window->isMaximized()) << name;
    }
    QTest::mouseDClick(&button("pb_logo_button"), Qt::LeftButton);
    EXPECT_FALSE(window->isMaximized());
    EXPECT_TRUE(window->isVisible());
}
#endif

TEST_F(MainWidgetTest, ItsCornersAreRoundAndSquareWhenItFillsTheScreen)
{
    const auto corners = [this] {
        const QImage image = window->grab().toImage().convertToFormat(QImage::Format_ARGB32);
        const int right = image.width() - 1;
        const int bottom = image.height() - 1;
        std::vector<QColor> colours;
        for (const QPoint& corner :
             {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)})
            colours.push_back(image.pixelColor(corner));
        return colours;
    };
    const std::vector<QColor> round(4, QColor(0, 0, 0, 0));
    const std::vector<QColor> square(4, QColor(0xF2, 0xF2, 0xF2));
    EXPECT_EQ(corners(), round);
    click("pb_win_max");
    EXPECT_EQ(corners(), square);
    click("pb_win_max");
    EXPECT_EQ(corners(), round);
    // As the platform does it, too.
    window->showMaximized();
    EXPECT_EQ(corners(), square);
    window->showFullScreen();
    EXPECT_EQ(corners(), square);
    window->showNormal();
    EXPECT_EQ(corners(), round);
}

TEST_F(MainWidgetTest, TheTitleBarsCornersAreDrawnRoundOrSquareAsTheButtonSays)
{
    // Filled for the test, the bar shows its own outline: neither sheet of the button's fills it.
    const auto upperCorners = [this] {
        QWidget& bar = find("widget_title_bar");
        const QString sheet = bar.styleSheet();
        bar.setStyleSheet(sheet + u"#widget_title_bar { background: #123456; }"_s);
        QImage image(bar.size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        bar.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        bar.setStyleSheet(sheet);
        std::vector<bool> filled;
        for (const int x : {0, 1, bar.width() - 1, bar.width() - 2})
            filled.push_back(image.pixelColor(x, 0) == QColor(0x12, 0x34, 0x56));
        return filled;
    };
    const std::vector<bool> round(4, false);
    const std::vector<bool> square(4, true);
    const QImage normal = drawn("widget_title_bar");
    EXPECT_EQ(upperCorners(), round);
    click("pb_win_max");
    EXPECT_EQ(upperCorners(), square);
    // Neither sheet fills the bar: the window's ground shows.
    const QImage maximized = drawn("widget_title_bar");
    EXPECT_EQ(maximized.pixelColor(maximized.width() / 2, 39), QColor(0xAA, 0xAA, 0xAA));
    EXPECT_NE(maximized.pixelColor(maximized.width() / 2, 20), normal.pixelColor(normal.width() / 2, 20));
    click("pb_win_max");
    EXPECT_EQ(upperCorners(), round);
    EXPECT_EQ(drawn("widget_title_bar").pixelColor(normal.width() / 2, 39), QColor(0xAA, 0xAA, 0xAA));
}

TEST_F(MainWidgetTest, SixButtonsOfThePlayBarHaveATipAboveThem)
{
    const std::pair<const char*, QString> texts[]
        = {{"pb_play", u"Play/Stop"_s},
           {"pb_record", u"Start/Stop recording"_s},
           {"pb_prv", u"Previous frame"_s},
           {"pb_next", u"Next frame"_s},
           {"pb_stop", u"Reset the playback progress to the beginning"_s},
           {"pb_loop", u"Select to automatically replay at the end of the playback"_s}};
    QStringList found;
    for (const KvToolTip* const tip : window->findChildren<KvToolTip*>(Qt::FindDirectChildrenOnly))
        found << tip->text();
    QStringList expected;
    for (const auto& [name, text] : texts)
        expected << text;
    EXPECT_EQ(found, expected);

    for (const auto& [name, text] : texts) {
        QPushButton& one = button(name);
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), one.mapToGlobal(QPointF(5, 5)));
        QCoreApplication::sendEvent(&one, &enter);
    }
    for (const auto& [name, wanted] : texts) {
        const KvToolTip* shown = nullptr;
        EXPECT_TRUE(QTest::qWaitFor([this, &shown, &tipText = wanted] {
            for (const KvToolTip* const tip : window->findChildren<KvToolTip*>()) {
                if (tip->isVisible() && tip->text() == tipText)
                    shown = tip;
            }
            return shown != nullptr;
        })) << name;
        ASSERT_NE(shown, nullptr) << name;
        const QPushButton& one = button(name);
        EXPECT_LE(shown->geometry().bottom(), one.mapToGlobal(QPoint()).y()) << name;
        EXPECT_NEAR(shown->geometry().center().x(), one.mapToGlobal(one.rect().center()).x(), 1) << name;
    }
    EXPECT_EQ(QApplication::activeWindow(), window.get()) << "a tip takes nothing away";
}

TEST_F(MainWidgetTest, ButtonsOfTheFormHaveNoTextAndNoTipOfTheirOwn)
{
    for (const char* const name : iconButtons) {
        EXPECT_EQ(button(name).text(), QString()) << name;
        EXPECT_EQ(button(name).toolTip(), QString()) << name;
    }
}

TEST_F(MainWidgetTest, NoPictureIsShownBeforeAnyEvents)
{
    const qint64 before = imageView().shownPixmap().cacheKey();
    emit window->triggerEventsToShow();
    EXPECT_EQ(imageView().shownPixmap().cacheKey(), before);
}

TEST_F(MainWidgetTest, AnOpenedCameraShowsItsSerialAndPlays)
{
    const auto cameras = std::make_shared<korvane::simulation::SimulatedBackend>();
    korvane::registerBackend(cameras);
    window->openCamera(u"HAL-000001"_s);
    EXPECT_TRUE(QTest::qWaitFor([this] { return text("label_show_timestamp_info") != QString(); }, 30000));
    EXPECT_EQ(text("label_show_camera_info"), u"HAL-000001"_s);
    EXPECT_TRUE(button("pb_play").isChecked());
    EXPECT_FALSE(imageView().shownPixmap().isNull());
    EXPECT_TRUE(button("pb_viewer_type").styleSheet().contains(u"btn_playbar_DVS.svg"_s));
    window.reset();
    korvane::unregisterBackend(cameras);
}
