#include "tests/e2e/replaystory.h"
#include "tests/support/brighteningvideo.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/failingdevice.h"

#include <QFileInfo>

// What a user sees of a recording that stands in for a camera when its file meets a fault.

using namespace Qt::Literals::StringLiterals;

namespace {

class ReplayFaultsStory : public ReplayStory
{
protected:
    ReplayFaultsStory() : ReplayStory(u"bar"_s, 1000) {}

    void watch()
    {
        openFromTheList(0);
        ASSERT_EQ(text("label_show_camera_info"), u"bar"_s);
        ASSERT_TRUE(wait([this] { return time() > u"00:00:100000"_s; }));
    }
    QString time() const { return text("label_show_timestamp_info"); }
    bool runs() const { return button("pb_play")->isChecked(); }
    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    QStringList warnings(const CapturedMessages& messages) const
    {
        return messages.warnings().filter(recorded.path());
    }
    void expectAnotherRecordingPlays()
    {
        const QString other = QDir::current().filePath(u"other.raw"_s);
        ASSERT_TRUE(writeMovingBar(other, 200));
        window->openRecording(other);
        ASSERT_TRUE(wait([this] { return text("label_time").endsWith(u"/00:00:199000"_s); }));
        ASSERT_TRUE(wait([this] { return !runs(); }));
    }

    const QString video = recorded.filePath(u"bar.mp4"_s);
};

} // namespace

TEST_F(ReplayFaultsStory, TruncatedWhileItIsWatchedWhatIsLeftGoesOnRoundAfterRound)
{
    const CapturedMessages messages;
    watch();
    ASSERT_TRUE(QFile::resize(bar, QFileInfo(bar).size() / 2));
    ASSERT_TRUE(wait([this] { return time() > u"00:01:600000"_s; })) << "longer than it ever was";
    ASSERT_TRUE(wait([this] { return eventPixels() > 0; }));
    EXPECT_TRUE(runs());
    EXPECT_EQ(warnings(messages).size(), 1);
    EXPECT_TRUE(
        warnings(messages).constFirst().startsWith(bar + u": the file has shrunk while it was open"_s));
    click("pb_play");
    EXPECT_FALSE(runs());
    expectAnotherRecordingPlays();
}

TEST_F(ReplayFaultsStory, TruncatedToNothingEveryButtonStillActs)
{
    watch();
    ASSERT_TRUE(QFile::resize(bar, 0));
    EXPECT_TRUE(runs());
    click("pb_play");
    EXPECT_FALSE(runs());
    click("pb_play");
    EXPECT_TRUE(runs()) << "it is connected, as a camera in the dark";
    click("pb_record");
    EXPECT_TRUE(button("pb_record")->isChecked());
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    expectAnotherRecordingPlays();
}

TEST_F(ReplayFaultsStory, APartThatCannotBeReadIsLeftOutAndTheRestGoesOn)
{
    const CapturedMessages messages;
    watch();
    failReads(bar.toStdString(), static_cast<std::uint64_t>(QFileInfo(bar).size()) / 2, 4096);
    ASSERT_TRUE(wait([this] { return time() > u"00:01:600000"_s; })) << "the part was met";
    ASSERT_TRUE(wait([this] { return eventPixels() > 0; }));
    EXPECT_TRUE(runs());
    EXPECT_EQ(warnings(messages),
              QStringList{bar + u": a part of the file cannot be read; the events there are left out"_s});
}

TEST_F(ReplayFaultsStory, RemovedOrForbiddenItGoesOnAndIsNotListedAgain)
{
    const CapturedMessages messages;
    watch();
    ASSERT_TRUE(QFile::setPermissions(bar, {}) && QFile::remove(bar));
    ASSERT_TRUE(wait([this] { return time() > u"00:01:600000"_s; })) << "its second round";
    EXPECT_TRUE(runs());
    EXPECT_EQ(warnings(messages), QStringList());
    EXPECT_FALSE(openFromTheList(0, "pb_close").contains(u"bar"_s));
    EXPECT_TRUE(runs()) << "looking at the list changes nothing";
}

TEST_F(ReplayFaultsStory, AVideoThatIsTruncatedWhileItIsWatchedLeavesTheEventsGoingOn)
{
    ASSERT_TRUE(writeBrighteningVideo(video, 30));
    const CapturedMessages messages;
    watch();
    ASSERT_TRUE(QFile::resize(video, QFileInfo(video).size() / 2));
    ASSERT_TRUE(wait([this] { return time() > u"00:01:600000"_s; })) << "its second round";
    EXPECT_TRUE(runs());
    ASSERT_EQ(warnings(messages).size(), 1) << warnings(messages).join(u'|').toStdString();
    EXPECT_TRUE(warnings(messages).constFirst().startsWith(video));
    click("pb_play");
    EXPECT_FALSE(runs());
    expectAnotherRecordingPlays();
}
