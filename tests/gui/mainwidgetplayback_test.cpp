#include "mainwindow/mainwidget.h"

#include "camera/recording/recordingbackend.h"
#include "display/showimageform.h"
#include "tests/gui/mainwindowfixture.h"
#include "tests/support/movingbar.h"

#include <QDir>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPaintEvent>
#include <QSlider>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Notes what is painted outside one of the window's panes, its shadow aside. GUI thread.
class PaintedElsewhere : public QObject
{
public:
    explicit PaintedElsewhere(QWidget& onlyPane) : pane(onlyPane) { qApp->installEventFilter(this); }

    int inside = 0;
    QStringList elsewhere;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* const widget = qobject_cast<const QWidget*>(watched);
        if (event->type() != QEvent::Paint || !widget || widget->window() != pane.window())
            return false;
        const QRect painted = static_cast<QPaintEvent*>(event)->rect();
        const QRect inWindow(widget->mapTo(widget->window(), painted.topLeft()), painted.size());
        constexpr int shadow = 10;
        const QRect allowed = QRect(pane.mapTo(pane.window(), QPoint()), pane.size())
                                  .adjusted(-shadow, -shadow, shadow, shadow);
        if (allowed.contains(inWindow))
            ++inside;
        else
            elsewhere << widget->objectName();
        return false;
    }

private:
    QWidget& pane;
};

/// The window with a recording of three seconds, paused near its start.
class MainWidgetPlaybackTest : public MainWindowTest
{
protected:
    MainWidgetPlaybackTest() { korvane::registerBackend(recordings); }
    ~MainWidgetPlaybackTest() override
    {
        window.reset();
        korvane::unregisterBackend(recordings);
    }
    void SetUp() override
    {
        MainWindowTest::SetUp();
        const QString path = QDir::current().filePath(u"bar.raw"_s);
        ASSERT_TRUE(writeMovingBar(path, 3000));
        window->openRecording(path);
        ASSERT_TRUE(QTest::qWaitFor([this] { return button("pb_play").isChecked(); }));
        ASSERT_TRUE(QTest::qWaitFor([this] { return !imageView().shownPixmap().isNull(); }));
        click("pb_play");
        ASSERT_FALSE(button("pb_play").isChecked());
        // The spinner had the focus; what the player posted before it paused arrives.
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    QImage drawn(const char* name) const { return find(name).grab().toImage(); }
    ShowImageForm& imageView() const { return *window->findChild<ShowImageForm*>(); }
    bool playing() const { return button("pb_play").isChecked(); }

    std::shared_ptr<korvane::Backend> recordings = std::make_shared<korvane::recording::RecordingBackend>();
};

} // namespace

TEST_F(MainWidgetPlaybackTest, APictureIsShownOnlyWhenEventsWereAdded)
{
    const qint64 paused = imageView().shownPixmap().cacheKey();
    click("pb_next");
    const qint64 stepped = imageView().shownPixmap().cacheKey();
    EXPECT_NE(stepped, paused);
    emit window->triggerEventsToShow();
    emit window->triggerEventsToShow();
    EXPECT_EQ(imageView().shownPixmap().cacheKey(), stepped);
}

TEST_F(MainWidgetPlaybackTest, WhilePicturesRunOnlyTheirPaneIsPaintedAnew)
{
    QWidget& pane = find("frame_main");
    click("pb_play");
    ASSERT_TRUE(playing());
    const auto pictures = [this](int count) {
        return QTest::qWaitFor([this, count, seen = 0, last = qint64(0)]() mutable {
            const qint64 now = imageView().shownPixmap().cacheKey();
            seen += now != last ? 1 : 0;
            last = now;
            return seen > count;
        });
    };
    // What the press itself has changed is painted by then.
    ASSERT_TRUE(pictures(3));
    const PaintedElsewhere painted(pane);
    ASSERT_TRUE(pictures(15));
    EXPECT_GT(painted.inside, 0);
    EXPECT_EQ(painted.elsewhere, QStringList());
}

TEST_F(MainWidgetPlaybackTest, SpaceAndArrowsActWithTheFocusOnTheWindowAndTheImage)
{
    for (QWidget* const focused : {static_cast<QWidget*>(window.get()), &find("widget_show_image")}) {
        const std::string name = focused->objectName().toStdString();
        focused->setFocus();
        ASSERT_EQ(QApplication::focusWidget(), focused) << name;
        const QString start = text("label_time");
        QTest::keyClick(window->windowHandle(), Qt::Key_Right);
        const QString next = text("label_time");
        EXPECT_NE(next, start) << name;
        QTest::keyClick(window->windowHandle(), Qt::Key_Left);
        EXPECT_EQ(text("label_time"), start) << name;
        QTest::keyClick(window->windowHandle(), Qt::Key_Space);
        EXPECT_TRUE(playing()) << name;
        QTest::keyClick(window->windowHandle(), Qt::Key_Space);
        EXPECT_FALSE(playing()) << name;
        QCoreApplication::processEvents();
    }
}

TEST_F(MainWidgetPlaybackTest, SpaceAndArrowsActWithTheFocusOnASettingButNotInsideAField)
{
    // Whatever a settings panel may hold.
    QWidget& panel = find("frame_setting");
    QSlider setting(&panel);
    QLineEdit field(&panel);
    setting.show();
    field.show();
    setting.setFocus();
    ASSERT_EQ(QApplication::focusWidget(), &setting);
    const QString start = text("label_time");
    QTest::keyClick(window->windowHandle(), Qt::Key_Right);
    EXPECT_NE(text("label_time"), start);
    QTest::keyClick(window->windowHandle(), Qt::Key_Left);
    EXPECT_EQ(text("label_time"), start);

    field.setFocus();
    ASSERT_EQ(QApplication::focusWidget(), &field);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Right, Qt::Key_Left})
        QTest::keyClick(window->windowHandle(), key);
    EXPECT_EQ(field.text(), u" "_s);
    EXPECT_EQ(text("label_time"), start);
    EXPECT_FALSE(playing());
}

TEST_F(MainWidgetPlaybackTest, AHeldSpaceBarActsOnce)
{
    QTest::keyPress(window.get(), Qt::Key_Space);
    ASSERT_TRUE(playing());
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Space, {}, u" "_s, true);
    QCoreApplication::sendEvent(window.get(), &repeated);
    EXPECT_TRUE(playing());
}

TEST_F(MainWidgetPlaybackTest, TheLoopButtonTogglesItsStateAndNothingElse)
{
    const QString time = text("label_time");
    const int position = slider().centerValue();
    const qint64 picture = imageView().shownPixmap().cacheKey();
    const QImage off = drawn("pb_loop");
    click("pb_loop");
    EXPECT_TRUE(button("pb_loop").isChecked());
    EXPECT_NE(drawn("pb_loop"), off);
    const auto expectNothingElse = [&] {
        QCoreApplication::processEvents();
        EXPECT_FALSE(playing());
        EXPECT_EQ(text("label_time"), time);
        EXPECT_EQ(slider().centerValue(), position);
        EXPECT_EQ(imageView().shownPixmap().cacheKey(), picture);
    };
    expectNothingElse();
    click("pb_loop");
    EXPECT_FALSE(button("pb_loop").isChecked());
    expectNothingElse();
}
