#include "tests/e2e/recordingstory.h"

#include <QFileDialog>
#include <QLineEdit>

#include <sys/stat.h>
#include <unistd.h>

TEST_F(RecordingStory, ACameraIsOpenedRecordedAndItsRecordingPlayed)
{
    openCamera();
    startRecording();
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    EXPECT_EQ(text("lb_recoding_time"), QString());
    EXPECT_EQ(toasts(), (QStringList{QStringLiteral("Save file success!")}));
    EXPECT_TRUE(button("pb_play")->isChecked()) << "the view goes on";
    expectAWholeRecording(someTime);

    ScriptedPerson person([this](QWidget& modal) {
        auto* const dialog = qobject_cast<QFileDialog*>(&modal);
        if (!dialog)
            return false;
        auto* const name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        name->setText(folder.filePath(files().constFirst()));
        QTest::keyClick(name, Qt::Key_Return);
        return true;
    });
    chooseFirstOf("pb_menu_file");
    ASSERT_TRUE(wait([this, &person] {
        return person.isDone() && timeline()->isEnabled() && button("pb_play")->isChecked()
            && eventPixels() > 500;
    }));
    EXPECT_EQ(text("label_show_camera_info"), QString());
    EXPECT_GT(timeline()->maximum(), someTime);
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "it plays to its end";
}

TEST_F(RecordingStory, ACameraPulledOutWhileRecordingLeavesAWholeFile)
{
    openCamera();
    startRecording();
    cameras->pull(cameras->cameraDescriptions().front().serial);
    ASSERT_TRUE(
        wait([this] { return !button("pb_play")->isChecked() && !button("pb_record")->isChecked(); }));
    EXPECT_EQ(text("lb_recoding_time"), QString());
    EXPECT_EQ(toasts(), (QStringList{QStringLiteral("Save file success!")}));
    expectAWholeRecording(someTime);
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    EXPECT_EQ(files().size(), 1);
}

TEST_F(RecordingStory, ClosingTheWindowWhileRecordingLeavesAWholeFile)
{
    openCamera();
    startRecording();
    click("pb_win_close");
    EXPECT_FALSE(window->isVisible());
    window.reset();
    expectAWholeRecording(someTime);
    EXPECT_NE(cameras->openCamera(cameras->cameraDescriptions().front().serial), nullptr)
        << "the camera was let go";
}

TEST_F(RecordingStory, OpeningAnotherCameraWhileRecordingLeavesAWholeFile)
{
    openCamera();
    startRecording();
    const QStringList rows = openFromTheList(1);
    ASSERT_TRUE(wait([this, &rows] { return text("label_show_camera_info") == rows.at(1); }));
    EXPECT_FALSE(button("pb_record")->isChecked());
    EXPECT_EQ(toasts(), (QStringList{QStringLiteral("Save file success!")}));
    expectAWholeRecording(someTime);
}

TEST_F(RecordingStory, AskedForWhileTheViewStandsStillItBeginsWithTheNextStart)
{
    openCamera();
    click("pb_play");
    // A picture that was under way is shown first.
    QCoreApplication::processEvents();
    const QString stopped = text("label_show_timestamp_info");
    click("pb_record");
    EXPECT_TRUE(button("pb_record")->isChecked());
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
    click("pb_play");
    ASSERT_TRUE(wait([this, stopped] { return text("label_show_timestamp_info") > stopped; }));
    click("pb_record");
    ASSERT_EQ(files().size(), 1);
    EXPECT_GT(QFileInfo(folder.filePath(files().constFirst())).size(), 10000);
}

TEST_F(RecordingStory, AFolderThatCannotBeMadeIsToldWithItsPath)
{
    openCamera();
    // A file stands where the folder would be.
    QFile obstacle(folder.path());
    ASSERT_TRUE(QDir().mkpath(QFileInfo(folder.path()).path()) && obstacle.open(QIODevice::WriteOnly));
    obstacle.close();
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    ASSERT_EQ(toasts().size(), 1);
    EXPECT_TRUE(toasts().constFirst().startsWith(QStringLiteral("Recording stopped: ")));
    EXPECT_TRUE(toasts().constFirst().contains(folder.path()));
    EXPECT_TRUE(button("pb_play")->isChecked()) << "the view goes on";
    obstacle.remove();
}

TEST_F(RecordingStory, AFolderWhosePermissionWasTakenAwayIsToldWithItsPathAndReason)
{
    openCamera();
    ASSERT_TRUE(QDir().mkpath(folder.path()));
    const QByteArray path = QFile::encodeName(folder.path());
    // The superuser may write everywhere: press with another user's hands.
    ASSERT_EQ(chmod(path.constData(), 0), 0);
    const bool superuser = geteuid() == 0;
    if (superuser) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    click("pb_record");
    if (superuser) {
        ASSERT_EQ(seteuid(0), 0);
    }
    ASSERT_EQ(chmod(path.constData(), 0755), 0);
    EXPECT_FALSE(button("pb_record")->isChecked());
    ASSERT_EQ(toasts().size(), 1);
    EXPECT_TRUE(toasts().constFirst().startsWith(QStringLiteral("Recording stopped: ")));
    EXPECT_TRUE(toasts().constFirst().contains(folder.path()));
    EXPECT_TRUE(button("pb_play")->isChecked()) << "the view goes on";
    EXPECT_TRUE(files().isEmpty());
    // With the permission back, the same press records.
    startRecording();
    click("pb_record");
    expectAWholeRecording(someTime);
}
