#include "tests/e2e/fusionstory.h"
#include "tests/support/movingbar.h"

namespace {

/// Whether this process has the file open.
bool holdsOpen(const QString& path)
{
    const QFileInfoList handles = QDir(QStringLiteral("/proc/self/fd"))
                                      .entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    return std::any_of(handles.begin(), handles.end(), [&path](const QFileInfo& handle) {
        return handle.symLinkTarget() == QFileInfo(path).canonicalFilePath();
    });
}

} // namespace

TEST_F(FusionStory, ACameraIsShownInThreeViewsRecordedAndPlayedTwice)
{
    QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
    folder.removeRecursively();

    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsEvents() && showsFrame(); }));
    EXPECT_EQ(text("label_show_camera_info"), QStringLiteral("PEL-000001"));
    ASSERT_TRUE(wait([this] { return eventsLieOnEdges(); }));

    click("pb_viewer_type"); // events alone
    ASSERT_TRUE(wait([this] { return showsEvents() && !showsFrame(); }));
    click("pb_viewer_type"); // frames alone
    ASSERT_TRUE(wait([this] { return showsFrame() && look().red == 0; }));
    click("pb_viewer_type"); // both
    ASSERT_TRUE(wait([this] { return showsFrame() && showsEvents(); }));

    click("pb_record");
    ASSERT_TRUE(button("pb_record")->isChecked());
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:02"); }));
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());

    const QStringList raws = folder.entryList({QStringLiteral("*.raw")});
    const QStringList videos = folder.entryList({QStringLiteral("*.mp4")});
    ASSERT_EQ(raws.size(), 1);
    ASSERT_EQ(videos.size(), 1);
    EXPECT_EQ(QFileInfo(raws[0]).completeBaseName(), QFileInfo(videos[0]).completeBaseName());
    const QString path = folder.filePath(raws[0]);
    expectAPictureForEachSlot(path);

    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && timeline()->isEnabled(); }));
    ASSERT_TRUE(wait([this] { return showsFrame() && showsEvents() && timeline()->centerValue() > 300000; }));
    ASSERT_TRUE(wait([this] { return eventsLieOnEdges(); }));
    // Steps and stop leave a fusion recording alone.
    click("pb_next");
    click("pb_prv");
    click("pb_stop");
    EXPECT_TRUE(button("pb_play")->isChecked());
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "to its end";
    ASSERT_TRUE(wait([this] { return timeline()->centerValue() == timeline()->effectiveLowerValue(); }));
    click("pb_play");
    ASSERT_TRUE(wait([this] { return timeline()->centerValue() > 300000; })) << "again from its start";
    EXPECT_TRUE(button("pb_play")->isChecked());
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());

    // Another recording takes its place: its files are not held any more.
    const QString other = QDir::current().filePath(QStringLiteral("other.raw"));
    ASSERT_TRUE(writeMovingBar(other, 500));
    EXPECT_TRUE(holdsOpen(folder.filePath(videos[0])));
    window->openRecording(other);
    ASSERT_TRUE(wait([this] { return timeline()->maximum() == 499'000; }));
    EXPECT_FALSE(holdsOpen(folder.filePath(videos[0])));
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return showsFrame(); }));
    openFromTheList(0);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 1000; }));
    EXPECT_FALSE(holdsOpen(folder.filePath(videos[0])));
}

TEST_F(FusionStory, ACameraPulledOutWhileItRecordsLeavesBothFilesWhole)
{
    QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
    folder.removeRecursively();
    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsFrame(); }));
    click("pb_record");
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
    cameras->pull("PEL-000001");
    ASSERT_TRUE(
        wait([this] { return !button("pb_play")->isChecked() && !button("pb_record")->isChecked(); }));
    const QStringList raws = folder.entryList({QStringLiteral("*.raw")});
    ASSERT_EQ(raws.size(), 1);
    expectAPictureForEachSlot(folder.filePath(raws[0]));
    window->openRecording(folder.filePath(raws[0]));
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsFrame() && showsEvents(); }));
    // The window closed in the midst of it leaves nothing running.
    const QString shown = text("label_show_timestamp_info");
    ASSERT_TRUE(wait([&] { return text("label_show_timestamp_info") != shown; }));
    window->close();
    window.reset();
}

TEST_F(FusionStory, ClosingWhileItRecordsEndsCleanly)
{
    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsFrame(); }));
    click("pb_record");
    window->close();
    window.reset();
    EXPECT_NE(cameras->openFusionCamera("PEL-000001"), nullptr) << "the camera was let go";
}

/// A machine whose FFmpeg has no encoder.
class FusionStoryWithoutEncoder : public FusionStory
{
protected:
    FusionStoryWithoutEncoder()
    {
        auto all = korvane::simulation::standardCameras();
        for (auto& one : all)
            one.failVideo = true;
        cameras = std::make_shared<korvane::simulation::SimulatedBackend>(all);
    }
    static QStringList toasts()
    {
        QStringList texts;
        for (const QWidget* const widget : QApplication::topLevelWidgets()) {
            const auto* const tips = widget->findChild<QLabel*>(QStringLiteral("lb_show_tips"));
            if (tips && widget->isVisible())
                texts << tips->text();
        }
        return texts;
    }
};

TEST_F(FusionStoryWithoutEncoder, TheUserIsToldAndTheEventsAreRecordedAndPlayed)
{
    QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
    folder.removeRecursively();
    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsFrame(); }));
    click("pb_record");
    ASSERT_TRUE(wait([] {
        const QStringList shown = toasts();
        return !shown.isEmpty() && shown.last().contains(QStringLiteral("Frames are not recorded: "))
            && shown.last().contains(QStringLiteral("H.264"));
    }));
    EXPECT_TRUE(button("pb_record")->isChecked());
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    EXPECT_EQ(folder.entryList({QStringLiteral("*.mp4")}).size(), 0);
    const QStringList raws = folder.entryList({QStringLiteral("*.raw")});
    ASSERT_EQ(raws.size(), 1);
    window->openRecording(folder.filePath(raws[0]));
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 1000; }));
}
