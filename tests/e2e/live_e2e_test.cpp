#include "display/kvgraphicsview.h"
#include "tests/e2e/livestoryfixture.h"
#include "tests/support/movingbar.h"

#include <QWheelEvent>

#include <vector>

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
    // Time enough for the next pictures: another camera has given some meanwhile.
    const auto other = cameras->openCamera(descriptions[1].serial);
    ASSERT_NE(other, nullptr);
    other->setBatchTime(33333);
    ASSERT_EQ(other->start(), 0);
    std::vector<korvane::Event2D> batch;
    int batches = 0;
    EXPECT_TRUE(wait([&] { return (batches += other->getNextEventBatch(batch) ? 1 : 0) >= 3; }));
    other->stop();
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
