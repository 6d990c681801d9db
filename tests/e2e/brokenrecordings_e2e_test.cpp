#include "tests/e2e/windowstory.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/failingdevice.h"

#include <QFile>

#include <sys/stat.h>

// What a user sees of a recording that breaks while it plays.

namespace {

class BrokenRecordingStory : public WindowStory
{
protected:
    void playIt()
    {
        window->openRecording(path);
        ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && timeline()->isEnabled(); }));
    }
    /// Another recording opens and plays to its end as if nothing had been.
    void expectTheProgramGoesOn()
    {
        const QString other = QDir::current().filePath(QStringLiteral("other.raw"));
        ASSERT_TRUE(writeMovingBar(other, 200));
        window->openRecording(other);
        ASSERT_TRUE(wait([this] { return timeText().endsWith(QStringLiteral("/00:00:199000")); }));
        ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
        EXPECT_EQ(timeText(), QStringLiteral("00:00:000000/00:00:199000"));
    }
};

} // namespace

TEST_F(BrokenRecordingStory, APartThatCannotBeReadIsPassedOverAndTheRestPlays)
{
    const CapturedMessages messages;
    playIt();
    const QString start = timeText();
    failReads(path.toStdString(), static_cast<std::uint64_t>(QFileInfo(path).size()) / 2, 4096);
    ASSERT_TRUE(wait([this] { return timeText() > QStringLiteral("00:02:500000"); })) << "behind the part";
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "the end";
    EXPECT_TRUE(timeText().endsWith(QStringLiteral("/00:02:999000"))) << "the length stays";
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("a part of the file cannot be read")).size(), 1);
    expectTheProgramGoesOn();
}

TEST_F(BrokenRecordingStory, OneThatIsTruncatedWhileItPlaysEndsThere)
{
    const CapturedMessages messages;
    playIt();
    ASSERT_TRUE(QFile::resize(path, QFileInfo(path).size() / 2));
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("the file has shrunk while it was open")).size(), 1);
    expectTheProgramGoesOn();
}

TEST_F(BrokenRecordingStory, OneWhosePermissionIsTakenAwayOrThatIsRemovedPlaysToItsEnd)
{
    const CapturedMessages messages;
    playIt();
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0), 0);
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(wait([this] { return timeText() > QStringLiteral("00:02:500000"); }));
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); }));
    EXPECT_TRUE(messages.warnings().filter(path).isEmpty());
    // Opened anew it is not there, and the log says so.
    window->openRecording(path);
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("there is no such file")).size(), 1);
    expectTheProgramGoesOn();
}
