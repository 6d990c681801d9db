#include "app/config.h"
#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "display/kvgraphicsview.h"
#include "display/showimageform.h"
#include "mainwindow/mainwidget.h"
#include "tests/support/movingbar.h"
#include "widgets/kvthreehandleslider.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

class LiveStory : public testing::Test
{
protected:
    void SetUp() override
    {
        korvane::registerBackend(recordings);
        korvane::registerBackend(cameras);
        window = std::make_unique<MainWidget>();
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    void TearDown() override
    {
        window.reset();
        korvane::unregisterBackend(cameras);
        korvane::unregisterBackend(recordings);
    }

    QPushButton* button(const char* name) const
    {
        return window->findChild<QPushButton*>(QString::fromLatin1(name));
    }
    QString text(const char* name) const
    {
        return window->findChild<QLabel*>(QString::fromLatin1(name))->text();
    }
    KvThreeHandleSlider* timeline() const { return window->findChild<KvThreeHandleSlider*>(); }

    int eventPixels() const
    {
        const QImage image = window->findChild<ShowImageForm*>()->shownPixmap().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); y += 2) {
            for (int x = 0; x < image.width(); ++x)
                count += image.pixel(x, y) != qRgb(112, 112, 112) ? 1 : 0;
        }
        return count;
    }

    /// Picks the row of the camera list that opens next, and presses its button; tells the texts of its rows.
    QStringList openFromTheList(int row, const char* buttonName = "pb_open")
    {
        QStringList rows;
        QTimer chooser;
        QObject::connect(&chooser, &QTimer::timeout, &chooser, [&rows, row, buttonName] {
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            auto* const list
                = dialog ? dialog->findChild<QListWidget*>(QStringLiteral("listWidget_cameras")) : nullptr;
            if (!list || !rows.isEmpty())
                return;
            for (int i = 0; i < list->count(); ++i)
                rows << list->item(i)->text();
            list->setCurrentRow(row);
            QTest::mouseClick(dialog->findChild<QPushButton*>(QString::fromLatin1(buttonName)),
                              Qt::LeftButton);
        });
        chooser.start(20);
        button("pb_menu_device")->menu()->actions().constFirst()->trigger();
        return rows;
    }

    static bool wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20000); }

    std::shared_ptr<korvane::Backend> recordings = std::make_shared<korvane::recording::RecordingBackend>();
    std::shared_ptr<korvane::simulation::SimulatedBackend> cameras
        = std::make_shared<korvane::simulation::SimulatedBackend>();
    std::unique_ptr<MainWidget> window;
};

} // namespace

TEST_F(LiveStory, ACameraThenARecordingToItsEndWithASeek)
{
    const auto descriptions = cameras->cameraDescriptions();
    ASSERT_GE(descriptions.size(), 2u);
    const QStringList rows = openFromTheList(0);
    ASSERT_EQ(rows.size(), static_cast<int>(descriptions.size()));
    EXPECT_EQ(rows.constFirst(), QString::fromStdString(descriptions.front().serial));

    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 500; }));
    EXPECT_EQ(text("label_show_camera_info"), rows.constFirst());
    EXPECT_EQ(text("label_time"), QStringLiteral("--/--"));
    EXPECT_FALSE(timeline()->isEnabled());
    EXPECT_FALSE(button("pb_next")->isEnabled());
    const QString first = text("label_show_timestamp_info");
    ASSERT_TRUE(wait([this, first] { return text("label_show_timestamp_info") > first; })) << "time goes on";

    // Paused, the picture and the time stay; started again, they go on.
    QTest::mouseClick(button("pb_play"), Qt::LeftButton);
    EXPECT_FALSE(button("pb_play")->isChecked());
    QCoreApplication::processEvents();
    const QString paused = text("label_show_timestamp_info");
    const auto shown = window->findChild<ShowImageForm*>()->shownPixmap().cacheKey();
    QTest::qWait(100);
    EXPECT_EQ(text("label_show_timestamp_info"), paused);
    EXPECT_EQ(window->findChild<ShowImageForm*>()->shownPixmap().cacheKey(), shown);
    QTest::keyClick(window.get(), Qt::Key_Space);
    EXPECT_TRUE(button("pb_play")->isChecked());
    ASSERT_TRUE(wait([this, paused] { return text("label_show_timestamp_info") > paused; }));

    const QString path = QDir::current().filePath(QStringLiteral("bar.raw"));
    ASSERT_TRUE(writeMovingBar(path, 400));
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return timeline()->isEnabled() && button("pb_play")->isChecked(); }));
    EXPECT_EQ(text("label_show_camera_info"), QString());
    QTest::mouseClick(timeline(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(timeline()->width() * 3 / 4, timeline()->height() / 2));
    EXPECT_GT(timeline()->centerValue(), 250000);
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    EXPECT_EQ(text("label_time"), QStringLiteral("00:00:000000/00:00:399000"));
}

TEST_F(LiveStory, TheViewZoomsAndFitsAgain)
{
    openFromTheList(0);
    ASSERT_TRUE(wait([this] { return eventPixels() > 500; }));
    auto* const view = window->findChild<KvGraphicsView*>();
    ASSERT_NE(view, nullptr);
    const QPoint middle = view->viewport()->rect().center();
    const auto turn = [&](int delta) {
        QWheelEvent wheel(QPointF(middle), view->viewport()->mapToGlobal(QPointF(middle)), QPoint(),
                          QPoint(0, delta), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view->viewport(), &wheel);
    };
    turn(120);
    turn(120);
    EXPECT_NEAR(view->scaleFactor(), 1.21, 1e-9);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, middle);
    EXPECT_DOUBLE_EQ(view->scaleFactor(), 1.0);
}

TEST_F(LiveStory, ACameraPulledOutStopsTheView)
{
    const std::string serial = cameras->cameraDescriptions().front().serial;
    openFromTheList(0);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 500; }));
    cameras->pull(serial);
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    // Pressing play finds no camera; the button stays up.
    QTest::mouseClick(button("pb_play"), Qt::LeftButton);
    EXPECT_FALSE(button("pb_play")->isChecked());
}

TEST_F(LiveStory, AnotherCameraReplacesTheFirst)
{
    openFromTheList(0);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 500; }));
    const QStringList rows = openFromTheList(1);
    ASSERT_TRUE(wait([this, &rows] { return text("label_show_camera_info") == rows.at(1); }));
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 500; }));
}

TEST_F(LiveStory, WhatIsRecordedPlaysAgain)
{
    const QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
    openFromTheList(0);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 500; }));
    QTest::mouseClick(button("pb_record"), Qt::LeftButton);
    EXPECT_TRUE(button("pb_record")->isChecked());
    EXPECT_EQ(text("lb_recoding_time"), QStringLiteral("00:00"));
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
    QTest::mouseClick(button("pb_record"), Qt::LeftButton);
    EXPECT_FALSE(button("pb_record")->isChecked());
    EXPECT_EQ(text("lb_recoding_time"), QString());
    const auto toasts = QApplication::topLevelWidgets();
    EXPECT_TRUE(std::any_of(toasts.begin(), toasts.end(), [](const QWidget* widget) {
        const auto* const tips = widget->findChild<QLabel*>(QStringLiteral("lb_show_tips"));
        return tips && widget->isVisible() && tips->text() == QStringLiteral("Save file success!");
    }));

    const QStringList files = folder.entryList({QStringLiteral("*.raw")}, QDir::Files, QDir::Time);
    ASSERT_EQ(files.size(), 1);
    window->openRecording(folder.filePath(files.constFirst()));
    ASSERT_TRUE(wait(
        [this] { return timeline()->isEnabled() && button("pb_play")->isChecked() && eventPixels() > 500; }));
    // A busy machine makes the stream late: less of it than of the clock's second may be in the file.
    EXPECT_GT(timeline()->maximum(), 100000u);
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
}

TEST_F(LiveStory, AClosedListOpensNothing)
{
    EXPECT_FALSE(openFromTheList(0, "pb_close").isEmpty());
    EXPECT_FALSE(button("pb_play")->isChecked());
    EXPECT_EQ(text("label_show_camera_info"), QString());
}

TEST_F(LiveStory, ClosingWhileLiveEndsCleanly)
{
    openFromTheList(0);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
    window->close();
    window.reset();
    EXPECT_NE(cameras->openCamera(cameras->cameraDescriptions().front().serial), nullptr)
        << "the camera was let go";
}
