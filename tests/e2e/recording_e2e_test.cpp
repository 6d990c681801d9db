#include "camera/recording/rawfilereader.h"
#include "tests/e2e/livestoryfixture.h"
#include "tests/support/scripteddialogs.h"
#include "widgets/kvfilepathreminderform.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class RecordingStory : public LiveStory
{
protected:
    void SetUp() override
    {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        LiveStory::SetUp();
        folder.removeRecursively();
    }

    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    /// Opens the menu of a button with the mouse and clicks its first entry.
    void chooseFirstOf(const char* menuButton) const
    {
        QTimer::singleShot(50, button(menuButton), [this, menuButton] {
            QMenu* const menu = button(menuButton)->menu();
            EXPECT_TRUE(menu->isVisible());
            QTest::mouseClick(menu, Qt::LeftButton, {},
                              menu->actionGeometry(menu->actions().constFirst()).center());
        });
        click(menuButton);
    }

    /// Opens the first camera of the list with the mouse and waits until it is seen.
    void openCamera()
    {
        ScriptedPerson person([](QWidget& modal) {
            if (!modal.findChild<QListWidget*>(QStringLiteral("listWidget_cameras")))
                return false;
            QTest::mouseClick(modal.findChild<QPushButton*>(QStringLiteral("pb_open")), Qt::LeftButton);
            return true;
        });
        chooseFirstOf("pb_menu_device");
        ASSERT_TRUE(wait([this, &person] {
            return person.isDone() && button("pb_play")->isChecked() && eventPixels() > 500;
        }));
    }
    void startRecording()
    {
        click("pb_record");
        ASSERT_TRUE(button("pb_record")->isChecked());
        EXPECT_EQ(text("lb_recoding_time"), QStringLiteral("00:00"));
        ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
    }

    QStringList files() const { return folder.entryList({QStringLiteral("*.raw")}, QDir::Files, QDir::Time); }
    /// The toasts that stand on the screen.
    static QStringList toasts()
    {
        QStringList texts;
        for (const QWidget* const widget : QApplication::topLevelWidgets()) {
            const auto* const tips = widget->findChild<QLabel*>(QStringLiteral("lb_show_tips"));
            if (qobject_cast<const KvFilePathReminderForm*>(widget) && tips && widget->isVisible())
                texts << tips->text();
        }
        return texts;
    }
    /// The one recording there is holds at least this much time, up to its last byte.
    void expectAWholeRecording(std::uint64_t microseconds) const
    {
        ASSERT_EQ(files().size(), 1);
        QString error;
        const auto reader = korvane::recording::RawFileReader::open(
            folder.filePath(files().constFirst()).toLocal8Bit().toStdString(), error);
        ASSERT_TRUE(reader && reader->loadFile()) << error.toStdString();
        std::uint64_t start = 0;
        std::uint64_t end = 0;
        reader->getStartTimestamp(start);
        reader->getEndTimestamp(end);
        EXPECT_GT(end - start, microseconds);
        EXPECT_EQ(reader->metCounts(), korvane::recording::EvtCounts());
        EXPECT_EQ(QFileInfo(folder.filePath(files().constFirst())).size()
                      % static_cast<qint64>(wordSize(reader->encoding())),
                  static_cast<qint64>(reader->fileHeader().bodyOffset % wordSize(reader->encoding())));
        EXPECT_EQ(reader->sensorGeometry(), (korvane::recording::Geometry{1280, 720}));
    }

    QDir folder{Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path};
};

// A busy machine makes the stream late: less of it than of the clock's second may be in a file.
constexpr std::uint64_t someTime = 100000; // microseconds

} // namespace

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
