#include "tests/e2e/rangesavingstory.h"
#include "tests/support/brighteningvideo.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/failingdevice.h"
#include "tests/support/faultydisk.h"

#include <QFileInfo>

#include <functional>
#include <memory>
#include <utility>

// What a user sees when a file that is opened, played, cut or exported meets a fault of its disk, or of other
// people.

using namespace Qt::Literals::StringLiterals;

namespace {

class FileFaultsStory : public RangeSavingStory
{
protected:
    FileFaultsStory() : RangeSavingStory(1500) {}

    /// Another recording opens and plays to its end as if nothing had been.
    void expectTheProgramGoesOn()
    {
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        const QString other = QDir::current().filePath(u"other.raw"_s);
        ASSERT_TRUE(writeMovingBar(other, 200));
        window->openRecording(other);
        ASSERT_TRUE(wait([this] { return timeText().endsWith(u"/00:00:199000"_s); }));
        ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
        EXPECT_EQ(timeText(), u"00:00:000000/00:00:199000"_s);
    }
    static QStringList about(const CapturedMessages& messages, const QString& file)
    {
        return messages.warnings().filter(file);
    }
    /// In the middle of the recording's timeline.
    void clickOnTheTrack(double share) const
    {
        QTest::mouseClick(timeline(), Qt::LeftButton, {},
                          QPoint(static_cast<int>(timeline()->width() * share), timeline()->height() / 2));
    }
    int position() const { return static_cast<int>(timeline()->centerValue()); }
};

} // namespace

TEST_F(FileFaultsStory, AFileWhoseStartCannotBeReadIsRefusedWithItsReason)
{
    const CapturedMessages messages;
    {
        FaultyDisk disk(QDir::currentPath());
        disk.failReads(u".raw"_s, 0, 1024 * 1024);
        window->openRecording(path);
    }
    EXPECT_EQ(about(messages, path),
              QStringList{path + u": is not a recording that can be read: Input/output error"_s});
    EXPECT_TRUE(messages.debug().contains(u"not raw file."_s));
    EXPECT_FALSE(button("pb_play")->isChecked());
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());
    expectTheProgramGoesOn();
}

TEST_F(FileFaultsStory, InATruncatedRecordingEveryButtonStillActsAndWhatIsLeftPlays)
{
    openPaused(path);
    const CapturedMessages messages;
    ASSERT_TRUE(QFile::resize(path, QFileInfo(path).size() / 2));
    clickOnTheTrack(0.9);
    EXPECT_GT(position(), 1'200'000);
    const int behind = position();
    click("pb_next");
    EXPECT_EQ(position(), behind) << "there is nothing to step to";
    click("pb_prv");
    EXPECT_EQ(position(), behind - 30303);
    drag(timeline()->width() * 9 / 10, timeline()->width() * 8 / 10);
    EXPECT_GT(position(), 1'000'000);
    click("pb_play");
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked() && position() == 0; }))
        << "where nothing comes any more is the end";
    click("pb_stop");
    EXPECT_EQ(timeText(), u"00:00:000000/00:01:499000"_s);
    // What is left of it is played, round after round.
    click("pb_loop");
    click("pb_play");
    ASSERT_TRUE(wait([this] { return position() > 600'000; }));
    ASSERT_TRUE(wait([this] { return position() < 200'000; })) << "again from the start";
    EXPECT_TRUE(button("pb_play")->isChecked());
    click("pb_loop");
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    EXPECT_EQ(about(messages, path).size(), 1);
    EXPECT_TRUE(about(messages, path).constFirst().contains(u"has shrunk"_s));
    expectTheProgramGoesOn();
}

TEST_F(FileFaultsStory, OfATruncatedOrUnreadableRecordingNoFileIsMadeAndTheLogSaysWhy)
{
    for (const bool truncated : {false, true}) {
        openPaused(path);
        if (truncated)
            ASSERT_TRUE(QFile::resize(path, QFileInfo(path).size() / 2));
        else
            failReads(path.toStdString(), static_cast<std::uint64_t>(QFileInfo(path).size()) / 2, 4096);
        const CapturedMessages messages;
        save<KvCutRawFile>([](KvCutRawFile&) {});
        EXPECT_FALSE(toasts().contains(u"Export raw file success!"_s)) << "a failed cut shows nothing";
        EXPECT_EQ(about(messages, u": cannot be cut from "_s + path).size(), 1);
        save<KvExportVideoUI>([](KvExportVideoUI&) {});
        EXPECT_EQ(about(messages, u": cannot be exported from "_s + path).size(), 1);
        EXPECT_EQ(files(), QStringList());
    }
    expectTheProgramGoesOn();
}

TEST_F(FileFaultsStory, OntoAFullDiskNoFileIsMadeAndTheRecordingPlaysOn)
{
    openPaused(path);
    const QString mine = folder + u"/mine.raw"_s;
    ASSERT_TRUE(writeMovingBar(mine, 20));
    FaultyDisk disk(folder);
    disk.setRoom(20'000);
    const CapturedMessages messages;
    save<KvCutRawFile>([](KvCutRawFile&) {});
    EXPECT_EQ(toasts(), QStringList()) << "a failed cut shows nothing";
    ASSERT_EQ(about(messages, u": cannot be cut from "_s + path).size(), 1);
    EXPECT_TRUE(
        about(messages, u": cannot be cut from "_s).constFirst().endsWith(u": No space left on device"_s));
    disk.setRoom(2'000);
    save<KvExportVideoUI>([](KvExportVideoUI&) {});
    ASSERT_EQ(about(messages, u": cannot be exported from "_s + path).size(), 1);
    EXPECT_TRUE(about(messages, u": cannot be exported from "_s)
                    .constFirst()
                    .endsWith(u": No space left on device"_s));
    EXPECT_EQ(files(), QStringList{u"mine.raw"_s}) << "what was there before, and no more";
    EXPECT_EQ(eventsOf(mine).size(), 20u * 90u);
    // With room again the same cut is made, and the recording is as it was.
    disk.setRoom(~std::uint64_t(0));
    save<KvCutRawFile>([](KvCutRawFile& dialog) { dialog.setFileName(u"cut.raw"_s); });
    EXPECT_TRUE(wait([] { return toasts().contains(u"Export raw file success!"_s); }));
    EXPECT_EQ(eventsOf(folder + u"/cut.raw"_s).size(), 1500u * 90u);
    click("pb_play");
    EXPECT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
}

TEST_F(FileFaultsStory, AFolderThatIsRemovedMeanwhileLeavesNoFileAndTheLogSaysWhy)
{
    openPaused(path);
    const CapturedMessages messages;
    FaultyDisk disk(folder);
    const auto removeIt = [this] { QDir(folder).removeRecursively(); };
    disk.atNextWrite(removeIt);
    save<KvCutRawFile>([](KvCutRawFile&) {});
    EXPECT_EQ(toasts(), QStringList());
    EXPECT_EQ(about(messages, u": cannot be cut from "_s + path).size(), 1);
    EXPECT_FALSE(QFileInfo::exists(folder));
    // What was removed is made again by the next one, and removed again.
    disk.atNextWrite(removeIt);
    save<KvExportVideoUI>([](KvExportVideoUI&) {});
    EXPECT_EQ(about(messages, u": cannot be exported from "_s + path).size(), 1);
    EXPECT_FALSE(QFileInfo::exists(folder));
    save<KvCutRawFile>([](KvCutRawFile& dialog) { dialog.setFileName(u"cut.raw"_s); });
    EXPECT_TRUE(wait([] { return toasts().contains(u"Export raw file success!"_s); }));
    EXPECT_EQ(eventsOf(folder + u"/cut.raw"_s).size(), 1500u * 90u);
}

namespace {

/// Recordings that meet their fault once they are opened and not loaded yet, behind the spinner.
class MeddledRecordings : public korvane::recording::RecordingBackend
{
public:
    std::unique_ptr<korvane::DvsFileReader> createDvsFileReader(const std::string& path) override
    {
        auto reader = RecordingBackend::createDvsFileReader(path);
        if (meddle)
            meddle();
        return reader;
    }

    std::function<void()> meddle;
};

class LoadingFaultsStory : public FileFaultsStory
{
protected:
    LoadingFaultsStory() { backend = meddled; }

    std::shared_ptr<MeddledRecordings> meddled = std::make_shared<MeddledRecordings>();
};

} // namespace

TEST_F(LoadingFaultsStory, TruncatedBehindTheSpinnerItIsAsLongAsWhatIsLeft)
{
    meddled->meddle = [this] { ASSERT_TRUE(QFile::resize(path, QFileInfo(path).size() / 2)); };
    window->openRecording(path);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && position() > 0; }));
    EXPECT_NEAR(static_cast<double>(timeline()->maximum()), 750'000, 2'000);
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    meddled->meddle = nullptr;
    expectTheProgramGoesOn();
}

TEST_F(LoadingFaultsStory, RemovedOrEmptiedBehindTheSpinnerItIsAnEmptyRecordingAndTheLogSaysWhy)
{
    const std::pair<std::function<void()>, QString> faults[]
        = {{[this] { QFile::resize(path, 0); }, u"the file is empty"_s},
           {[this] { QFile::remove(path); }, u"No such file or directory"_s}};
    for (const auto& [fault, reason] : faults) {
        meddled->meddle = fault;
        ASSERT_TRUE(writeMovingBar(path, 100));
        const CapturedMessages messages;
        window->openRecording(path);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "the spinner has gone";
        EXPECT_EQ(about(messages, path), QStringList{path + u": cannot be loaded: "_s + reason});
        EXPECT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "there is nothing to play";
        EXPECT_EQ(timeText(), u"00:00:000000/00:00:000000"_s);
    }
    meddled->meddle = nullptr;
    expectTheProgramGoesOn();
}

namespace {

/// A fusion recording: a bar that moves, over frames that get brighter and brighter.
class FusionFileFaultsStory : public FileFaultsStory
{
protected:
    static constexpr int frameCount = 45; // a second and a half

    void SetUp() override
    {
        FileFaultsStory::SetUp();
        video = QDir::current().filePath(u"bar.mp4"_s);
        ASSERT_TRUE(writeBrighteningVideo(video, frameCount));
        ASSERT_GT(QFileInfo(video).size(), 1'500'000);
    }
    void TearDown() override
    {
        QFile::remove(video);
        FileFaultsStory::TearDown();
    }
    void playIt()
    {
        window->openRecording(path);
        ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && position() > 100'000; }));
    }
    /// Of the middle of the picture, mean of the noise.
    int brightness() const
    {
        const QImage image = picture();
        int sum = 0;
        int count = 0;
        for (int y = 330; y < 390; ++y) {
            for (int x = 610; x < 670; ++x) {
                const QRgb pixel = image.pixel(x, y);
                if (qRed(pixel) - qBlue(pixel) > 100)
                    continue; // an event
                sum += qGray(pixel);
                ++count;
            }
        }
        return count > 0 ? sum / count : 0;
    }

    QString video;
};

} // namespace

TEST_F(FusionFileFaultsStory, APartOfTheVideoThatCannotBeReadIsPassedOverAndTheRestPlays)
{
    const CapturedMessages messages;
    playIt();
    FaultyDisk disk(QDir::currentPath());
    const auto size = static_cast<std::uint64_t>(QFileInfo(video).size());
    // Some pictures before the second key picture.
    disk.failReads(u".mp4"_s, size * 45 / 100, size * 57 / 100);
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "the end";
    EXPECT_GT(disk.failedReads(), 0);
    EXPECT_GT(brightness(), brightnessOf(frameCount - 6)) << "the last frames are seen again";
    EXPECT_EQ(about(messages, video + u": a part of the file cannot be read: Input/output error"_s).size(),
              1);
    expectTheProgramGoesOn();
}

TEST_F(FusionFileFaultsStory, AVideoWhoseIndexCannotBeReadToItsEndShowsItsLastPictureUnderTheEvents)
{
    const CapturedMessages messages;
    FaultyDisk disk(QDir::currentPath());
    const auto size = static_cast<std::uint64_t>(QFileInfo(video).size());
    // Fragments of half a second, each with an index of its own.
    disk.failReads(u".mp4"_s, size / 2, size);
    playIt();
    ASSERT_TRUE(wait([this] { return position() > 300'000; }));
    EXPECT_GT(brightness(), brightnessOf(0));
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "the end";
    EXPECT_LT(brightness(), brightnessOf(frameCount - 10));
    EXPECT_EQ(about(messages, video + u": a part of the file cannot be read: Input/output error"_s).size(),
              1);
    expectTheProgramGoesOn();
}

TEST_F(FusionFileFaultsStory, AVideoThatIsTruncatedWhileItPlaysShowsItsLastPictureUnderTheEvents)
{
    const CapturedMessages messages;
    playIt();
    ASSERT_TRUE(QFile::resize(video, QFileInfo(video).size() / 2));
    ASSERT_TRUE(wait([this] { return position() > 1'300'000; })) << "events go on";
    const int last = brightness();
    EXPECT_GT(last, brightnessOf(0));
    EXPECT_LT(last, brightnessOf(frameCount - 10));
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "the end";
    EXPECT_EQ(about(messages, video).size(), 1);
    expectTheProgramGoesOn();
}

TEST_F(FusionFileFaultsStory, EventsThatAreTruncatedWhileTheyPlayLeaveAnEndAndAButtonThatIsUp)
{
    const CapturedMessages messages;
    playIt();
    ASSERT_TRUE(QFile::resize(path, QFileInfo(path).size() / 4));
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "the end";
    EXPECT_EQ(about(messages, path + u": the file has shrunk while it was open"_s).size(), 1);
    ASSERT_TRUE(wait([this] { return position() == 0; }));
    click("pb_play");
    ASSERT_TRUE(wait([this] { return position() > 100'000; })) << "what is left plays again";
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    expectTheProgramGoesOn();
}

TEST_F(FusionFileFaultsStory, FilesThatAreRemovedOrForbiddenPlayToTheirEnd)
{
    const CapturedMessages messages;
    playIt();
    ASSERT_TRUE(QFile::setPermissions(path, {}) && QFile::setPermissions(video, {}));
    ASSERT_TRUE(QFile::remove(path) && QFile::remove(video));
    ASSERT_TRUE(wait([this] { return position() > 1'300'000; }));
    EXPECT_GT(brightness(), brightnessOf(frameCount - 10));
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    EXPECT_EQ(about(messages, video) + about(messages, path), QStringList());
    window->openRecording(path);
    EXPECT_EQ(
        about(messages, path + u": is not a recording that can be read: there is no such file"_s).size(), 1);
    expectTheProgramGoesOn();
}

TEST_F(FusionFileFaultsStory, FilesThatCannotBeReadAreNamedInAToastAndNothingPlays)
{
    const QString told = u"Load fusion file failed: bar.raw"_s;
    for (const QString& ending : {u".mp4"_s, u".raw"_s}) {
        const CapturedMessages messages;
        {
            FaultyDisk disk(QDir::currentPath());
            disk.failReads(ending, 0, 1024 * 1024);
            window->openRecording(path);
        }
        EXPECT_TRUE(wait([&told] { return toasts().contains(told); })) << ending.toStdString();
        const QString file = ending == u".mp4"_s ? video : path;
        ASSERT_EQ(about(messages, file).size(), 1) << ending.toStdString();
        EXPECT_TRUE(about(messages, file).constFirst().endsWith(u": Input/output error"_s))
            << about(messages, file).constFirst().toStdString();
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "the spinner has gone";
        EXPECT_FALSE(button("pb_play")->isChecked());
        click("pb_play");
        EXPECT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
        // The toast of the next one is another.
        ASSERT_TRUE(wait([&told] { return !toasts().contains(told); }));
    }
    playIt();
}
