#include "camera/recording/recorder.h"

#include "camera/recording/newfile.h"
#include "camera/recording/recordingpath.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/filesizelimit.h"
#include "tests/support/temporaryrecordings.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <new>
#include <thread>
#include <utility>

#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using korvane::Event2D;
using korvane::EventTriggerIn;
using korvane::RecorderState;
using namespace korvane::recording;

constexpr Geometry hd{1280, 720};

/// Events of a stretch of time, one a microsecond.
std::vector<Event2D> stretch(std::uint64_t from, std::size_t count)
{
    std::vector<Event2D> events;
    for (std::size_t i = 0; i < count; ++i)
        events.emplace_back(static_cast<std::uint16_t>(i % 1280), static_cast<std::uint16_t>(i / 1280 % 720),
                            static_cast<std::uint8_t>(i % 2), from + i);
    return events;
}

void push(Recorder& recorder, const std::vector<Event2D>& events)
{
    recorder.push(events.data(), events.data() + events.size());
}

std::vector<Event2D> eventsOf(const QString& path)
{
    const auto reader = TemporaryRecordings::load(path.toLocal8Bit().toStdString());
    if (!reader)
        return {};
    std::uint64_t end = 0;
    reader->getEndTimestamp(end);
    return *reader->getEventsAt(0, end + 1);
}

/// A disk with the faults that real ones have.
class FailingFile : public OutputFile
{
public:
    struct Faults
    {
        std::uint64_t room = ~std::uint64_t(0); ///< bytes until it is full
        bool atClose = false; ///< tells only then that it failed
        bool throws = false; ///< has no memory
    };

    FailingFile(const QString& path, Faults with) : faults(with) { file.open(path); }
    bool write(std::span<const std::uint8_t> bytes) override
    {
        if (faults.throws && file.size() > 0)
            throw std::bad_alloc();
        const std::uint64_t room = faults.room - std::min(faults.room, file.size());
        if (!file.write(bytes.first(std::min<std::size_t>(bytes.size(), room))))
            return false;
        reason = QStringLiteral("No space left on device");
        return bytes.size() <= room;
    }
    bool close() override
    {
        reason = QStringLiteral("Input/output error");
        return file.close() && !faults.atClose;
    }
    void discard() override { file.discard(); }
    std::uint64_t size() const override { return file.size(); }
    QString errorString() const override { return reason; }

private:
    NewFile file;
    Faults faults;
    QString reason;
};

Recorder::OpenFile onDisk(FailingFile::Faults faults)
{
    return [faults](const QString& path, QString&, bool&) -> std::unique_ptr<OutputFile> {
        return std::make_unique<FailingFile>(path, faults);
    };
}

class RecorderTest : public testing::Test
{
protected:
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("rec/20260101_120000.raw"));
    std::string local = path.toLocal8Bit().toStdString();

    void pushInBatches(Recorder& recorder, const std::vector<Event2D>& events)
    {
        for (std::size_t i = 0; i < events.size(); i += 1000)
            recorder.push(events.data() + i, events.data() + std::min(i + 1000, events.size()));
    }
    /// What was kept is the beginning of what was pushed.
    void expectKept(const std::vector<Event2D>& events, std::size_t atLeast)
    {
        const auto kept = eventsOf(path);
        ASSERT_GE(kept.size(), atLeast);
        ASSERT_LE(kept.size(), events.size());
        EXPECT_TRUE(std::equal(kept.begin(), kept.end(), events.begin()));
    }
    QStringList files() const
    {
        return QDir(folder.filePath(QStringLiteral("rec"))).entryList(QDir::Files | QDir::System);
    }
};

} // namespace

TEST_F(RecorderTest, KeepsEveryEventAndWritesAHeaderThatReadersUnderstand)
{
    Recorder recorder(hd, "HAL-000001");
    recorder.start(local);
    EXPECT_TRUE(recorder.state().writing);
    const auto events = stretch(8192, 300000);
    pushInBatches(recorder, events);
    recorder.stop();
    const RecorderState state = recorder.state();
    EXPECT_FALSE(state.writing);
    EXPECT_EQ(state.error, "");
    EXPECT_EQ(state.path, local);

    auto expected = events;
    for (Event2D& event : expected)
        event.timestamp -= 8192;
    EXPECT_EQ(eventsOf(path), expected);
    const auto reader = TemporaryRecordings::load(local);
    EXPECT_EQ(reader->sensorGeometry(), hd);
    EXPECT_EQ(reader->fileHeader().serial, "HAL-000001");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromLatin1(file.read(static_cast<qint64>(reader->fileHeader().bodyOffset)));
    const QRegularExpression pattern(QStringLiteral(
        "\\A% date \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\n% evt 3\\.0\\n"
        "% format EVT3;height=720;width=1280\\n% geometry 1280x720\\n% serial_number HAL-000001\\n"
        "% end\\n\\z"));
    EXPECT_TRUE(pattern.match(text).hasMatch()) << text.toStdString();
}

TEST_F(RecorderTest, ReplacesNoFile)
{
    ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("rec"))));
    ASSERT_TRUE(evt::writeFile(path, "old", {}));
    ASSERT_TRUE(evt::writeFile(folder.filePath(QStringLiteral("rec/20260101_120000-1.mp4")), "old", {}));
    Recorder recorder(hd, {});
    recorder.start(local);
    push(recorder, stretch(0, 10));
    recorder.stop();
    const QString second = folder.filePath(QStringLiteral("rec/20260101_120000-2.raw"));
    EXPECT_EQ(recorder.state().path, second.toStdString());
    EXPECT_EQ(eventsOf(second).size(), 10u);
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), "old");
}

TEST_F(RecorderTest, AFolderThatCannotBeMadeIsToldWithPathAndReason)
{
    ASSERT_TRUE(evt::writeFile(folder.filePath(QStringLiteral("rec")), "a file in the way", {}));
    const CapturedMessages messages;
    Recorder recorder(hd, {});
    recorder.start(local);
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_EQ(recorder.state().path, local);
    EXPECT_EQ(recorder.state().error, "the folder cannot be made");
    EXPECT_EQ(messages.warnings().size(), 1);
    push(recorder, stretch(0, 10));
    recorder.stop();
}

TEST_F(RecorderTest, AFileWithoutAnEventIsRemovedAndLogged)
{
    Recorder recorder(hd, {});
    recorder.start(local);
    ASSERT_TRUE(QTest::qWaitFor([this] { return QFile::exists(path); }));
    const CapturedMessages messages;
    recorder.stop();
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(messages.of(QtInfoMsg).size(), 1);
}

TEST_F(RecorderTest, OnAFullDiskItStopsTellsWhyAndKeepsWhatItHas)
{
    const CapturedMessages messages;
    FailingFile::Faults full;
    full.room = 400 * 1024 + 1;
    Recorder recorder(hd, {}, onDisk(full));
    recorder.start(local);
    const auto events = stretch(0, 400000);
    pushInBatches(recorder, events);
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return !recorder.state().error.empty(); }));
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_EQ(recorder.state().error, "No space left on device");
    // What comes now goes nowhere, and nobody waits for it.
    pushInBatches(recorder, stretch(400000, 10000));
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "No space left on device");
    ASSERT_EQ(messages.warnings().size(), 1);
    EXPECT_TRUE(messages.warnings()[0].contains(path));
    expectKept(events, 50000);
}

TEST_F(RecorderTest, AFileThatMayNotGrowFurtherIsKeptToo)
{
    const CapturedMessages messages;
    const auto events = stretch(0, 1'000'000);
    Recorder recorder(hd, {});
    {
        const FileSizeLimit limit(1'500'001);
        recorder.start(local);
        pushInBatches(recorder, events);
        recorder.stop();
    }
    EXPECT_EQ(recorder.state().error, "File too large");
    EXPECT_EQ(QFileInfo(path).size(), 1'500'001);
    expectKept(events, 100'000);
}

TEST_F(RecorderTest, ADiskThatIsFullBeforeTheFirstEventLeavesNoFile)
{
    const CapturedMessages messages;
    FailingFile::Faults full;
    full.room = 20;
    Recorder recorder(hd, {}, onDisk(full));
    recorder.start(local);
    push(recorder, stretch(0, 1000));
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "No space left on device");
    EXPECT_EQ(files(), QStringList());
    EXPECT_EQ(
        messages.of(QtInfoMsg),
        QStringList{path + QStringLiteral(": no event was written before the fault; the file is removed")});
}

TEST_F(RecorderTest, AThreadThatCannotBeHadLeavesNoFile)
{
    const CapturedMessages messages;
    pthread_attr_t before;
    ASSERT_EQ(pthread_getattr_default_np(&before), 0);
    pthread_attr_t vast = before;
    // More stack than a process has addresses.
    ASSERT_EQ(pthread_attr_setstacksize(&vast, std::size_t(1) << 60), 0);
    ASSERT_EQ(pthread_setattr_default_np(&vast), 0);
    Recorder recorder(hd, {});
    recorder.start(local);
    EXPECT_EQ(pthread_setattr_default_np(&before), 0);
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_NE(recorder.state().error, "");
    EXPECT_EQ(messages.warnings().size(), 1);
    EXPECT_EQ(files(), QStringList());
    // The next one has the name.
    recorder.start(local);
    push(recorder, stretch(0, 10));
    recorder.stop();
    EXPECT_EQ(files(), QStringList{QStringLiteral("20260101_120000.raw")});
}

TEST_F(RecorderTest, ARemovedFolderEndsTheRecordingAndIsTold)
{
    const CapturedMessages silence;
    Recorder recorder(hd, {});
    recorder.start(local);
    push(recorder, stretch(0, 1000));
    ASSERT_TRUE(QTest::qWaitFor([this] { return eventsOf(path).size() == 1000; }));
    ASSERT_TRUE(QDir(folder.filePath(QStringLiteral("rec"))).removeRecursively());
    // Even when no event comes that would have to be written.
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return !recorder.state().error.empty(); }));
    EXPECT_EQ(recorder.state().error, "the file has been removed");
    EXPECT_EQ(recorder.state().path, local);
    EXPECT_FALSE(recorder.state().writing);
    recorder.stop();
    // The next recording makes the folder again.
    recorder.start(local);
    push(recorder, stretch(0, 500));
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "");
    EXPECT_EQ(eventsOf(path).size(), 500u);
}

TEST_F(RecorderTest, AnErrorThatOnlyClosingBringsIsTold)
{
    const CapturedMessages messages;
    FailingFile::Faults faults;
    faults.atClose = true;
    Recorder recorder(hd, {}, onDisk(faults));
    recorder.start(local);
    const auto events = stretch(0, 5000);
    pushInBatches(recorder, events);
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "Input/output error");
    expectKept(events, 5000);
}

TEST_F(RecorderTest, AnExceptionWhileWritingEndsTheRecordingOnly)
{
    const CapturedMessages messages;
    FailingFile::Faults faults;
    faults.throws = true;
    Recorder recorder(hd, {}, onDisk(faults));
    recorder.start(local);
    pushInBatches(recorder, stretch(0, 5000));
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return !recorder.state().error.empty(); }));
    EXPECT_FALSE(recorder.state().writing);
    recorder.stop();
    EXPECT_EQ(recorder.state().error, std::bad_alloc().what());
}

TEST_F(RecorderTest, AClockThatLeapsByMonthsEndsTheRecordingAndOneThatRestsForDaysDoesNot)
{
    const CapturedMessages messages;
    constexpr std::uint64_t day = 86'400'000'000;
    Recorder recorder(hd, {});
    recorder.start(local);
    push(recorder, {{1, 1, 1, 4096}, {2, 2, 0, 4096 + 20 * day}});
    recorder.push({}, std::vector<EventTriggerIn>{{0, 1, 4096 + 40 * day}});
    push(recorder, {{3, 3, 1, 4096 + 60 * day}});
    push(recorder, {{4, 4, 1, 4096 + 91 * day}});
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return !recorder.state().error.empty(); }));
    EXPECT_EQ(recorder.state().error, "the camera's clock has leapt by more than thirty days");
    EXPECT_FALSE(recorder.state().writing);
    recorder.stop();
    EXPECT_EQ(eventsOf(path), (std::vector<Event2D>{{1, 1, 1, 0}, {2, 2, 0, 20 * day}, {3, 3, 1, 60 * day}}));
}

TEST_F(RecorderTest, AFileThatCannotBeMadeIsToldWithTheSystemsReason)
{
    const CapturedMessages messages;
    Recorder recorder(hd, {});
    // Nobody may make files there, not even the administrator.
    recorder.start("/proc/recording.raw");
    EXPECT_EQ(recorder.state().path, "/proc/recording.raw");
    EXPECT_EQ(recorder.state().error, "No such file or directory");
    recorder.start(folder.path().toStdString() + "/rec/");
    EXPECT_EQ(recorder.state().error, "the file has no name");
    EXPECT_EQ(messages.warnings().size(), 2);
}

TEST_F(RecorderTest, KeepsTriggersBesideTheEvents)
{
    Recorder recorder(hd, {});
    recorder.start(local);
    const auto events = stretch(0, 3000);
    const std::vector<EventTriggerIn> triggers{{0, 1, 500}, {3, 0, 999}, {15, 1, 1000}, {0, 0, 2999}};
    recorder.push(std::span(events).first(1000), std::span(triggers).first(2));
    recorder.push(std::span(events).subspan(1000), std::span(triggers).subspan(2));
    recorder.stop();
    EXPECT_EQ(eventsOf(path), events);
    EXPECT_EQ(*TemporaryRecordings::load(local)->getTriggersAt(0, 3000), triggers);
}

TEST_F(RecorderTest, WhatCannotBeWrittenIsLeftOutAndLoggedOnce)
{
    const CapturedMessages messages;
    Recorder recorder({640, 480}, {});
    recorder.start(local);
    const std::vector<Event2D> events{{640, 0, 1, 1}, {1, 1, 1, 2}, {0, 480, 1, 3}};
    const std::vector<EventTriggerIn> triggers{{16, 1, 1}, {-1, 1, 2}, {2, 1, 3}};
    recorder.push(events, triggers);
    recorder.push(std::vector<Event2D>{{2000, 2000, 1, 10}});
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "");
    EXPECT_EQ(
        messages.of(QtInfoMsg),
        (QStringList{path + QStringLiteral(": 3 events outside the sensor are left out"),
                     path + QStringLiteral(": 2 triggers on channels that cannot be named are left out")}));
    EXPECT_EQ(eventsOf(path).size(), 1u);
}

TEST_F(RecorderTest, EventsOutsideTheSensorAloneMakeNoRecording)
{
    const CapturedMessages messages;
    Recorder recorder({640, 480}, {});
    recorder.start(local);
    push(recorder, {{640, 0, 1, 1}});
    recorder.stop();
    EXPECT_EQ(files(), QStringList());
}

TEST_F(RecorderTest, ANameThatIsTakenBetweenTheLookAndTheOpeningIsLeftToItsOwner)
{
    bool first = true;
    Recorder recorder(hd, {}, [&first](const QString& file, QString& error, bool& taken) {
        if (std::exchange(first, false))
            evt::writeFile(file, "another program's", {});
        return Recorder::openNewFile(file, error, taken);
    });
    recorder.start(local);
    push(recorder, stretch(0, 10));
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "");
    EXPECT_EQ(files(),
              (QStringList{QStringLiteral("20260101_120000-1.raw"), QStringLiteral("20260101_120000.raw")}));
    QFile other(path);
    ASSERT_TRUE(other.open(QIODevice::ReadOnly));
    EXPECT_EQ(other.readAll(), "another program's");
}

TEST_F(RecorderTest, ALinkThatLeadsNowhereIsATakenName)
{
    ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("rec"))));
    const QString elsewhere = folder.filePath(QStringLiteral("elsewhere.raw"));
    ASSERT_TRUE(QFile::link(elsewhere, path));
    Recorder recorder(hd, {});
    recorder.start(local);
    push(recorder, stretch(0, 10));
    recorder.stop();
    EXPECT_EQ(recorder.state().path,
              folder.filePath(QStringLiteral("rec/20260101_120000-1.raw")).toStdString());
    EXPECT_FALSE(QFile::exists(elsewhere));
}

TEST_F(RecorderTest, TwoRecordingsOfOneSecondStandBesideEachOther)
{
    Recorder recorder(hd, {});
    for (std::size_t count : {10u, 20u}) {
        recorder.start(local);
        push(recorder, stretch(0, count));
        recorder.stop();
    }
    EXPECT_EQ(eventsOf(path).size(), 10u);
    EXPECT_EQ(eventsOf(folder.filePath(QStringLiteral("rec/20260101_120000-1.raw"))).size(), 20u);
}

TEST_F(RecorderTest, ChineseNamesAreNoHindrance)
{
    const QString chinese = folder.filePath(QStringLiteral("录像/相机一号.raw"));
    Recorder recorder(hd, {});
    recorder.start(chinese.toLocal8Bit().toStdString());
    push(recorder, stretch(0, 10));
    recorder.stop();
    EXPECT_EQ(eventsOf(chinese).size(), 10u);
}

TEST_F(RecorderTest, WhatWasPushedIsOnDiskWithinASecond)
{
    const CapturedMessages silence;
    Recorder recorder(hd, {});
    recorder.start(local);
    // Another second for a busy machine.
    push(recorder, stretch(0, 5000));
    ASSERT_TRUE(QTest::qWaitFor([this] { return eventsOf(path).size() == 5000; }, 2000))
        << "while it still records";
    push(recorder, stretch(5000, 5000));
    ASSERT_TRUE(QTest::qWaitFor([this] { return eventsOf(path).size() == 10000; }, 2000));
    recorder.stop();
}

TEST_F(RecorderTest, AProcessThatIsKilledLosesAtMostItsLastSecond)
{
    // What the child has recorded, where both see it.
    auto* const recorded = static_cast<std::atomic<std::uint64_t>*>(
        mmap(nullptr, sizeof(std::atomic<std::uint64_t>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
             -1, 0));
    ASSERT_NE(recorded, MAP_FAILED);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Nothing of the test's own may run in the child: it records until it is killed. So little comes that
        // only the time makes it write.
        Recorder recorder(hd, {});
        recorder.start(local);
        for (std::uint64_t time = 0;; time += 10) {
            push(recorder, stretch(time, 10));
            *recorded = time + 10;
            usleep(5000);
        }
    }
    const CapturedMessages silence;
    EXPECT_TRUE(QTest::qWaitFor([recorded] { return *recorded > 100; }, 20000));
    const std::uint64_t before = *recorded;
    // Another second for a busy machine.
    EXPECT_TRUE(QTest::qWaitFor([this, before] { return eventsOf(path).size() >= before; }, 2000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::uint64_t most = *recorded + 10;
    munmap(recorded, sizeof *recorded);

    const auto kept = eventsOf(path);
    EXPECT_GE(kept.size(), before) << "what was recorded a second before";
    EXPECT_LE(kept.size(), most);
    const auto expected = stretch(0, kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i)
        ASSERT_EQ(kept[i].timestamp, expected[i].timestamp) << "no gap";
}

TEST_F(RecorderTest, StoppingWhileAnotherThreadPushesLosesNothingPushedBefore)
{
    Recorder recorder(hd, {});
    recorder.start(local);
    std::atomic<bool> ending{false};
    std::thread stream([&] {
        for (std::uint64_t time = 0; !ending; time += 1000)
            push(recorder, stretch(time, 1000));
    });
    ASSERT_TRUE(QTest::qWaitFor([this] { return QFileInfo(path).size() > 100000; }));
    recorder.stop();
    ending = true;
    stream.join();
    const auto kept = eventsOf(path);
    EXPECT_EQ(kept.size() % 1000, 0u) << "whole batches";
    EXPECT_EQ(kept.back().timestamp, kept.size() - 1);
}

TEST_F(RecorderTest, FreePathsCountOn)
{
    ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("rec"))));
    EXPECT_EQ(freeRecordingPath(path), path);
    for (const char* name : {"rec/20260101_120000.mp4", "rec/20260101_120000-1.raw"})
        ASSERT_TRUE(evt::writeFile(folder.filePath(QLatin1String(name)), "x", {}));
    EXPECT_EQ(freeRecordingPath(path), folder.filePath(QStringLiteral("rec/20260101_120000-2.raw")));
    // What is no ending of ours belongs to the name.
    const QString plain = folder.filePath(QStringLiteral("rec/take.2"));
    EXPECT_EQ(freeRecordingPath(plain), plain);
    ASSERT_TRUE(evt::writeFile(plain + QStringLiteral(".raw"), "x", {}));
    EXPECT_EQ(freeRecordingPath(plain), plain + QStringLiteral("-1"));
}

TEST_F(RecorderTest, ARenameNeverReplacesAFileByAnyMethod)
{
    const QString from = folder.filePath(QStringLiteral("from.raw"));
    const QString other = folder.filePath(QStringLiteral("other.raw"));
    ASSERT_TRUE(evt::writeFile(other, "other", {}));
    for (const RenameBy method : {RenameBy::Kernel, RenameBy::Link, RenameBy::Placeholder}) {
        const QString to = folder.filePath(QStringLiteral("to%1.raw").arg(int(method)));
        ASSERT_TRUE(evt::writeFile(from, "mine", {}));
        EXPECT_EQ(renameNoReplace(from, other, method), EEXIST);
        EXPECT_EQ(QFileInfo(other).size(), 5);
        EXPECT_EQ(renameNoReplace(from, to, method), 0);
        EXPECT_FALSE(QFile::exists(from));
        EXPECT_EQ(QFileInfo(to).size(), 4);
        ASSERT_TRUE(QFile::remove(to));
        EXPECT_EQ(renameNoReplace(from, to, method), ENOENT);
        EXPECT_FALSE(QFile::exists(to));
    }
    QString error;
    EXPECT_EQ(renameToFree(from, folder.filePath(QStringLiteral("gone.raw")), error), QString());
    EXPECT_EQ(error, QStringLiteral("No such file or directory"));
}

TEST_F(RecorderTest, ARenameFallsBackOnWhatTheFileSystemKnows)
{
    const QString from = folder.filePath(QStringLiteral("from.raw"));
    const QString to = folder.filePath(QStringLiteral("to.raw"));
    ASSERT_TRUE(evt::writeFile(to, "other", {}));
    for (const int withoutLinks : {EPERM, ENOTSUP}) {
        ASSERT_TRUE(evt::writeFile(from, "mine", {}));
        std::vector<RenameBy> tried;
        QString error;
        const QString name
            = renameToFree(from, to, error, [&](const QString& old, const QString& wanted, RenameBy method) {
                  tried.push_back(method);
                  if (method == RenameBy::Kernel)
                      return EINVAL;
                  return method == RenameBy::Link ? withoutLinks : renameNoReplace(old, wanted, method);
              });
        EXPECT_EQ(tried, (std::vector<RenameBy>{RenameBy::Kernel, RenameBy::Link, RenameBy::Placeholder}));
        EXPECT_EQ(name, folder.filePath(QStringLiteral("to-1.raw"))) << error.toStdString();
        EXPECT_EQ(QFileInfo(name).size(), 4);
        EXPECT_EQ(QFileInfo(to).size(), 5);
        EXPECT_FALSE(QFile::exists(from));
        ASSERT_TRUE(QFile::remove(name));
    }
}
