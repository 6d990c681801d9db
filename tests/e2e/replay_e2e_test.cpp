#include "tests/e2e/program.h"
#include "tests/e2e/replaystory.h"

#include <QTemporaryDir>

TEST(ShippedProgram, PlaysARecordingAsACamera)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("moving_bar_of_events.raw"));
    ASSERT_TRUE(writeMovingBar(path, 200));
    Program program(
        folder.path(),
        {QStringLiteral("--no-splash"), QStringLiteral("--camera"), QStringLiteral("moving_bar")});
    EXPECT_TRUE(program.waitForLine(QStringLiteral("Select camera: moving_bar product: Halvora")))
        << program.text();
    EXPECT_TRUE(program.waitForLine(path + QStringLiteral(": has been replayed to its end; it starts again")))
        << program.text();
    EXPECT_TRUE(program.isRunning());
}

TEST(ShippedProgram, TellsWhyARecordingIsNoCamera)
{
    const QTemporaryDir folder;
    const QString missing = folder.filePath(QStringLiteral("missing.raw"));
    Program program(missing,
                    {QStringLiteral("--no-splash"), QStringLiteral("--camera"), QStringLiteral("missing")});
    EXPECT_TRUE(program.waitForLine(
        missing + QStringLiteral(": cannot be replayed: there is no such file or folder")))
        << program.text();
    EXPECT_TRUE(program.waitForLine(QStringLiteral("There is no camera with the serial number missing.")))
        << program.text();
    EXPECT_TRUE(program.isRunning());
}

TEST_F(ReplayStory, ARecordingIsWatchedLikeACameraRoundAfterRound)
{
    const QStringList rows = openFromTheList(0);
    ASSERT_EQ(rows.constFirst(), QStringLiteral("moving_bar"));
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 0; }));
    EXPECT_EQ(text("label_show_camera_info"), QStringLiteral("moving_bar"));
    EXPECT_FALSE(timeline()->isEnabled()) << "a live camera has no timeline";
    // Longer than the recording is.
    ASSERT_TRUE(wait([this] { return text("label_show_timestamp_info") > QStringLiteral("00:00:700000"); }));
    ASSERT_TRUE(wait([this] { return eventPixels() > 0; }));
    QTest::mouseClick(button("pb_play"), Qt::LeftButton);
    EXPECT_FALSE(button("pb_play")->isChecked());
}

TEST_F(ReplayStory, WhileItPlaysItsFileCanBeOpenedAsARecordingToo)
{
    openFromTheList(0);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 0; }));
    window->openRecording(bar);
    ASSERT_TRUE(wait([this] { return timeline()->isEnabled() && button("pb_play")->isChecked(); }));
    EXPECT_EQ(timeline()->maximum(), 299000U);
    EXPECT_NE(replay->openCamera("moving_bar"), nullptr) << "the camera was let go";
}
