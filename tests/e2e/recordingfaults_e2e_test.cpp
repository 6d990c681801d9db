#include "tests/e2e/recordingstory.h"
#include "tests/e2e/watchedcameras.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/densestream.h"
#include "tests/support/faultydisk.h"

#include <QElapsedTimer>

#include <sys/stat.h>

// What a user sees when a recording meets a fault of the disk, and what is left of it.

using namespace Qt::Literals::StringLiterals;

namespace {

class RecordingFaultsStory : public RecordingStory
{
protected:
    RecordingFaultsStory() { cameras = watched; }

    /// Opens a camera by its place among those of its product; it runs then.
    void open(const char* product)
    {
        int row = 0;
        for (const auto& camera : cameras->cameraDescriptions()) {
            if (camera.product == product)
                break;
            ++row;
        }
        openFromTheList(row);
        ASSERT_TRUE(wait([this] {
            return button("pb_play")->isChecked() && !text("label_show_timestamp_info").isEmpty();
        }));
        watched->delivered->clear();
    }
    QString fileOf(const char* suffix) const
    {
        const QStringList found = folder.entryList({u"*."_s + QLatin1StringView(suffix)}, QDir::Files);
        return found.size() == 1 ? folder.filePath(found.constFirst()) : QString();
    }
    /// The warnings that name a file of the folder.
    QStringList aboutFiles(const CapturedMessages& messages) const
    {
        return messages.warnings().filter(folder.path() + u'/');
    }
    bool recordIsUp() const { return !button("pb_record")->isChecked(); }
    /// The view does not care for what becomes of a recording.
    void expectTheViewGoesOn()
    {
        EXPECT_TRUE(button("pb_play")->isChecked());
        const QString shown = text("label_show_timestamp_info");
        EXPECT_TRUE(wait([this, shown] { return text("label_show_timestamp_info") > shown; }));
    }
    /// What stands in the only recording came from the camera, all of it up to the last that is there.
    void expectAllUpToTheFault(std::size_t leastEvents) const
    {
        const auto kept = eventsOfRecording(fileOf("raw"));
        EXPECT_GE(kept.size(), leastEvents);
        EXPECT_TRUE(watched->delivered->holdInOneRow(kept));
    }
    /// After a fault the same button makes a recording as ever.
    void expectTheNextRecordingIsWhole()
    {
        folder.removeRecursively();
        watched->delivered->clear();
        click("pb_record");
        ASSERT_FALSE(recordIsUp());
        ASSERT_TRUE(wait([this] { return QFileInfo(fileOf("raw")).size() > 20'000; }));
        click("pb_record");
        EXPECT_TRUE(toasts().contains(u"Save file success!"_s));
        expectAllUpToTheFault(1000);
    }
    /// The recording plays in the window from its start to its end.
    void expectItPlays(const QString& recording)
    {
        window->openRecording(recording);
        ASSERT_TRUE(wait([this] { return timeline()->isEnabled() && eventPixels() > 0; }));
        ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "the end";
        EXPECT_TRUE(wait([this] { return timeline()->centerValue() == timeline()->effectiveLowerValue(); }));
    }

    std::shared_ptr<WatchedCameras> watched = std::make_shared<WatchedCameras>();
};

} // namespace

TEST_F(RecordingFaultsStory, AFullDiskIsToldAndEveryEventUpToItIsKept)
{
    open("QRT4");
    FaultyDisk disk(folder.path());
    disk.setRoom(400'001);
    const CapturedMessages messages;
    click("pb_record");
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_EQ(text("lb_recoding_time"), QString());
    EXPECT_EQ(toasts(), QStringList{u"Recording stopped: No space left on device\n"_s + fileOf("raw")});
    EXPECT_EQ(aboutFiles(messages),
              QStringList{fileOf("raw") + u": the recording ends: No space left on device"_s});
    EXPECT_EQ(QFileInfo(fileOf("raw")).size(), 400'001);
    expectTheViewGoesOn();
    expectAllUpToTheFault(50'000);
    // Still full: not even a header fits, so nothing is left of the try.
    const QString kept = fileOf("raw");
    click("pb_record");
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_EQ(fileOf("raw"), kept);
    expectTheViewGoesOn();
    disk.setRoom(~std::uint64_t(0));
    expectTheNextRecordingIsWhole();
}

TEST_F(RecordingFaultsStory, AFolderThatIsRemovedIsToldAndTheNextPressMakesItAgain)
{
    open("QRT4");
    startRecording();
    const QString path = fileOf("raw");
    const CapturedMessages messages;
    ASSERT_TRUE(folder.removeRecursively());
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_EQ(toasts(), QStringList{u"Recording stopped: the file has been removed\n"_s + path});
    EXPECT_EQ(aboutFiles(messages), QStringList{path + u": the recording ends: the file has been removed"_s});
    EXPECT_FALSE(folder.exists()) << "nothing is made before it is asked for";
    expectTheViewGoesOn();
    expectTheNextRecordingIsWhole();
}

TEST_F(RecordingFaultsStory, AFileThatIsTruncatedIsToldAndWhatWasLeftOfItIsKept)
{
    open("QRT4");
    startRecording();
    const QString path = fileOf("raw");
    const CapturedMessages messages;
    ASSERT_GT(QFileInfo(path).size(), 100'000);
    ASSERT_TRUE(QFile::resize(path, 100'000));
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_EQ(toasts(), QStringList{u"Recording stopped: the file has been truncated\n"_s + path});
    EXPECT_EQ(aboutFiles(messages),
              QStringList{path + u": the recording ends: the file has been truncated"_s});
    EXPECT_EQ(QFileInfo(path).size(), 100'000) << "nothing is written behind a gap";
    expectAllUpToTheFault(10'000);
    expectTheViewGoesOn();
    expectTheNextRecordingIsWhole();
}

TEST_F(RecordingFaultsStory, PermissionsTakenAwayInTheMidstOfItAreNoHindrance)
{
    open("QRT4");
    startRecording();
    const QString path = fileOf("raw");
    const CapturedMessages messages;
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0), 0);
    ASSERT_EQ(chmod(QFile::encodeName(folder.path()).constData(), 0), 0);
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == u"00:02"_s; }));
    click("pb_record");
    ASSERT_EQ(chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0644), 0);
    EXPECT_EQ(toasts(), QStringList{u"Save file success!"_s});
    EXPECT_EQ(aboutFiles(messages), QStringList());
    expectAllUpToTheFault(1000);
}

TEST_F(RecordingFaultsStory, AFullDiskEndsBothStreamsOfAFusionCameraAndBothPlayUpToThere)
{
    open("Pellix");
    FaultyDisk disk(folder.path());
    const CapturedMessages messages;
    click("pb_record");
    // The first half second of pictures stands in the file.
    ASSERT_TRUE(wait([this] { return QFileInfo(fileOf("mp4")).size() > 100'000; }));
    disk.setRoom(200'000);
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_TRUE(toasts().contains(u"Recording stopped: No space left on device\n"_s + fileOf("raw")))
        << toasts().join(u'|').toStdString();
    EXPECT_EQ(
        messages.warnings().filter(fileOf("raw") + u": the recording ends: No space left on device"_s).size(),
        1);
    EXPECT_EQ(messages.warnings()
                  .filter(fileOf("mp4") + u": the recording of frames ends: No space left on device"_s)
                  .size(),
              1);
    expectTheViewGoesOn();
    expectAllUpToTheFault(1000);
    expectItPlays(fileOf("raw"));
}

TEST_F(RecordingFaultsStory, ADiskThatIsFullBeforeTheFirstPictureLeavesTheEventsToBePlayed)
{
    open("Pellix");
    const CapturedMessages messages;
    {
        FaultyDisk disk(folder.path());
        disk.setRoom(300'000);
        click("pb_record");
        ASSERT_TRUE(wait([this] { return recordIsUp(); }));
        EXPECT_TRUE(toasts().contains(u"Recording stopped: No space left on device\n"_s + fileOf("raw")))
            << toasts().join(u'|').toStdString();
    }
    EXPECT_EQ(fileOf("mp4"), QString()) << "a video that cannot be played would keep the events from being";
    EXPECT_EQ(messages.of(QtInfoMsg).filter(u"no picture was written before the fault"_s).size(), 1);
    expectAllUpToTheFault(1000);
    expectItPlays(fileOf("raw"));
}

TEST_F(RecordingFaultsStory, AFusionCamerasVideoThatIsRemovedOrTruncatedIsToldAndTheEventsAreRecordedOn)
{
    open("Pellix");
    for (const bool removed : {true, false}) {
        const CapturedMessages messages;
        folder.removeRecursively();
        watched->delivered->clear();
        click("pb_record");
        ASSERT_TRUE(wait([this] { return QFileInfo(fileOf("mp4")).size() > 100'000; }));
        const QString video = fileOf("mp4");
        ASSERT_TRUE(removed ? QFile::remove(video) : QFile::resize(video, 0));
        const QString reason = removed ? u"the file has been removed"_s : u"the file has been truncated"_s;
        const QString told = u"Frames are not recorded: "_s + reason + u'\n' + video;
        ASSERT_TRUE(wait([&told] { return toasts().contains(told); })) << told.toStdString();
        EXPECT_EQ(messages.warnings().filter(video + u": the recording of frames ends: "_s + reason).size(),
                  1);
        EXPECT_FALSE(recordIsUp());
        click("pb_record");
        EXPECT_TRUE(toasts().contains(u"Save file success!"_s));
        EXPECT_EQ(fileOf("mp4"), QString());
        expectAllUpToTheFault(1000);
    }
    expectItPlays(fileOf("raw"));
}

TEST_F(RecordingFaultsStory, AFolderThatIsRemovedUnderAFusionCameraIsTold)
{
    open("Pellix");
    click("pb_record");
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == u"00:01"_s; }));
    const QString path = fileOf("raw");
    ASSERT_TRUE(folder.removeRecursively());
    ASSERT_TRUE(wait([this] { return recordIsUp(); }));
    EXPECT_TRUE(toasts().contains(u"Recording stopped: the file has been removed\n"_s + path))
        << toasts().join(u'|').toStdString();
    EXPECT_FALSE(folder.exists());
    expectTheViewGoesOn();
}

namespace {

/// Offers one camera of twenty million events a second.
class DenseBackend : public korvane::Backend
{
public:
    std::string name() const override { return "dense"; }
    std::vector<korvane::CameraDescription> cameraDescriptions() override
    {
        return {{"DENSE-0001", "Halvora", name()}};
    }
    std::shared_ptr<korvane::DvsCamera> openCamera(const std::string& serial) override
    {
        if (serial != "DENSE-0001")
            return nullptr;
        return std::make_shared<korvane::simulation::StreamedDvsCamera>(serial,
                                                                        std::make_unique<DenseStream>(made));
    }
    std::shared_ptr<korvane::FusionCamera> openFusionCamera(const std::string&) override { return nullptr; }

    Tally made; ///< the stream's; to be touched while it stands still
};

class SlowDiskStory : public RecordingStory
{
protected:
    void SetUp() override
    {
        korvane::registerBackend(dense);
        RecordingStory::SetUp();
    }
    void TearDown() override
    {
        RecordingStory::TearDown();
        korvane::unregisterBackend(dense);
    }

    std::shared_ptr<DenseBackend> dense = std::make_shared<DenseBackend>();
};

} // namespace

TEST_F(SlowDiskStory, TwentyMillionEventsASecondAreRecordedWholeWhileTheViewGoesOn)
{
    window->openCamera(u"DENSE-0001"_s);
    ASSERT_TRUE(wait([this] { return eventPixels() > 500; }));
    click("pb_play");
    dense->made = {};
    FaultyDisk disk(folder.path());
    disk.setSpeed(12e6);
    click("pb_record");
    QElapsedTimer clock;
    clock.start();
    click("pb_play");
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == u"00:02"_s; })) << "the window answers";
    const QString shown = text("label_show_timestamp_info");
    ASSERT_TRUE(wait([this, shown] { return text("label_show_timestamp_info") > shown; }));
    EXPECT_TRUE(button("pb_record")->isChecked());
    EXPECT_EQ(toasts(), QStringList());
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());
    EXPECT_LT(static_cast<double>(dense->made.count), 0.8 * 20e3 * static_cast<double>(clock.elapsed()))
        << "the disk held the stream back";
    click("pb_record");
    EXPECT_EQ(toasts(), QStringList{u"Save file success!"_s});
    ASSERT_EQ(files().size(), 1);
    QString error;
    const auto reader = korvane::recording::RawFileReader::open(
        folder.filePath(files().constFirst()).toLocal8Bit().toStdString(), error);
    ASSERT_TRUE(reader && reader->loadFile()) << error.toStdString();
    Tally kept;
    reader->streamEvents(0, ~std::uint64_t(0), [&kept](std::span<const korvane::Event2D> events) {
        kept.add(events);
        return true;
    });
    EXPECT_GT(kept.count, 1'000'000u);
    EXPECT_EQ(kept, dense->made);
}
