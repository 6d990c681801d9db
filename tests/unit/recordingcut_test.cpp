#include "camera/recording/recordingcut.h"

#include "camera/recording/rawfilereader.h"
#include "camera/recording/recordingheader.h"
#include "camera/recording/verifyingwriter.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/filesizelimit.h"
#include "tests/support/referencedecoder.h"
#include "tests/support/temporaryrecordings.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <random>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

using korvane::Event2D;
using korvane::EventTriggerIn;
using namespace korvane::recording;

/// A recording with busy and idle stretches, several events in a microsecond and triggers, in EVT 2.0.
evt::Bytes variedStream()
{
    evt::Bytes bytes;
    std::mt19937 generator(11);
    const auto random = [&generator] { return static_cast<unsigned>(generator()); };
    std::uint64_t time = 1000;
    std::uint64_t high = ~std::uint64_t(0);
    for (int i = 0; i < 200000; ++i) {
        if (time / 64 != high) {
            high = time / 64;
            evt::append(bytes, evt::high2(static_cast<std::uint32_t>(high)), 4);
        }
        evt::append(bytes,
                    evt::cd2(random() % 2, static_cast<unsigned>(time % 64), random() % 640, random() % 480),
                    4);
        if (random() % 500 == 0)
            evt::append(bytes, evt::trigger2(static_cast<unsigned>(time % 64), random() % 16, random() % 2),
                        4);
        time += random() % 1000 == 0 ? random() % 5000 : (random() % 3 == 0 ? 1 : 0);
    }
    return bytes;
}

/// Asked when a file is brought to the disk: 0 to do it, else the error that comes instead.
std::function<int()> atSync;

class RecordingCut : public testing::Test
{
protected:
    void SetUp() override
    {
        source
            = recordings.write("source.raw", TemporaryRecordings::header(EvtEncoding::Evt2), variedStream());
        reader = TemporaryRecordings::load(source);
        ASSERT_TRUE(reader);
        reader->getStartTimestamp(start);
        reader->getEndTimestamp(end);
    }

    /// Files in the folder besides the source.
    QStringList others() const
    {
        QStringList names = QFileInfo(QString::fromStdString(source)).dir().entryList(QDir::Files);
        names.removeAll(QStringLiteral("source.raw"));
        return names;
    }

    /// The events from..to (both included) of a recording, counted from the first of them.
    static std::vector<Event2D> counted(RawFileReader& from, std::uint64_t first, std::uint64_t last)
    {
        auto events = *from.getEventsAt(first, last - first + 1);
        const std::uint64_t base = events.empty() ? 0 : events.front().timestamp;
        for (Event2D& event : events)
            event.timestamp -= base;
        return events;
    }

    static std::vector<Event2D> all(RawFileReader& from)
    {
        std::uint64_t last = 0;
        from.getEndTimestamp(last);
        return counted(from, 0, last);
    }

    static std::uint64_t startOf(RawFileReader& from)
    {
        std::uint64_t first = 0;
        from.getStartTimestamp(first);
        return first;
    }

    /// Triggers, their times counted from `base`, which they may come before.
    static std::vector<EventTriggerIn> triggersOf(RawFileReader& from, std::uint64_t first,
                                                  std::uint64_t last, std::uint64_t base)
    {
        auto triggers = *from.getTriggersAt(first, last - first + 1);
        for (EventTriggerIn& trigger : triggers)
            trigger.timestamp -= base;
        return triggers;
    }

    /// Cuts into a path that cannot be had; the reason.
    QString reasonOfFailure(std::uint64_t from, std::uint64_t to, const std::string& path)
    {
        const CapturedMessages messages;
        EXPECT_FALSE(reader->cutFile(from, to, path));
        EXPECT_EQ(others(), QStringList());
        const QStringList lines = messages.warnings();
        if (lines.size() != 1)
            return QStringLiteral("%1 lines").arg(lines.size());
        const QString prefix = QString::fromStdString(path) + QStringLiteral(": cannot be cut from ")
            + QString::fromStdString(source) + QStringLiteral(": ");
        EXPECT_TRUE(lines[0].startsWith(prefix)) << lines[0].toStdString();
        return lines[0].mid(prefix.size());
    }

    void TearDown() override { atSync = nullptr; }

    TemporaryRecordings recordings;
    std::string source;
    std::unique_ptr<RawFileReader> reader;
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};

} // namespace

// In the place of the system's.
int fsync(int descriptor)
{
    if (const int code = atSync ? atSync() : 0; code != 0) {
        errno = code;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

TEST_F(RecordingCut, HoldsExactlyTheEventsAndTriggersOfTheRange)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 8; ++i) {
        const std::uint64_t from = start + random() % (end - start);
        const std::uint64_t to = from + random() % (end - from + 1);
        const std::string path = recordings.path("cut" + std::to_string(i) + ".raw");
        const auto wanted = counted(*reader, from, to);
        if (wanted.empty())
            continue;
        ASSERT_TRUE(reader->cutFile(from, to, path));
        const auto cut = TemporaryRecordings::load(path);
        ASSERT_TRUE(cut);
        EXPECT_EQ(all(*cut), wanted) << from << " .. " << to;
        EXPECT_EQ(triggersOf(*cut, 0, to - from + 4096, startOf(*cut)),
                  triggersOf(*reader, from, to, reader->getEventsAt(from, to - from + 1)->front().timestamp));
        EXPECT_EQ(cut->sensorGeometry(), reader->sensorGeometry());
    }
}

TEST_F(RecordingCut, IncludesBothEnds)
{
    const auto events = *reader->getEventsAt(0, end + 1);
    const std::uint64_t from = events[1000].timestamp;
    const std::uint64_t to = events[2000].timestamp;
    const std::string path = recordings.path("ends.raw");
    ASSERT_TRUE(reader->cutFile(from, to, path));
    const auto cut = TemporaryRecordings::load(path);
    const auto wanted = std::count_if(events.begin(), events.end(), [from, to](const Event2D& event) {
        return event.timestamp >= from && event.timestamp <= to;
    });
    EXPECT_EQ(all(*cut).size(), static_cast<std::size_t>(wanted));
}

TEST_F(RecordingCut, ACutOfACutEqualsTheCutOfTheWhole)
{
    const auto events = *reader->getEventsAt(0, end + 1);
    const std::uint64_t from = events[20000].timestamp;
    const std::uint64_t to = events[150000].timestamp;
    ASSERT_TRUE(reader->cutFile(from, to, recordings.path("first.raw")));
    const auto first = TemporaryRecordings::load(recordings.path("first.raw"));
    std::uint64_t firstStart = 0;
    first->getStartTimestamp(firstStart);
    const std::uint64_t shift = from - firstStart;
    const std::uint64_t inner = events[50000].timestamp;
    const std::uint64_t innerEnd = events[100000].timestamp;
    ASSERT_TRUE(first->cutFile(inner - shift, innerEnd - shift, recordings.path("second.raw")));
    const auto second = TemporaryRecordings::load(recordings.path("second.raw"));
    EXPECT_EQ(all(*second), counted(*reader, inner, innerEnd));
}

TEST_F(RecordingCut, NeverReplacesAFileNorTheOpenRecording)
{
    const auto before = all(*reader);
    ASSERT_TRUE(reader->cutFile(start, end, source));
    EXPECT_EQ(others(), QStringList{QStringLiteral("source-1.raw")});
    EXPECT_EQ(all(*TemporaryRecordings::load(source)), before);
    EXPECT_EQ(all(*TemporaryRecordings::load(recordings.path("source-1.raw"))), before);
}

TEST_F(RecordingCut, LeavesNothingAndLogsWhyWhenItFails)
{
    const QString outside = QStringLiteral("the range lies outside the recording");
    EXPECT_EQ(reasonOfFailure(end + 1, end + 100, recordings.path("beyond.raw")), outside);
    EXPECT_EQ(reasonOfFailure(end, start, recordings.path("backwards.raw")),
              QStringLiteral("the range ends before it begins"));
    EXPECT_EQ(reasonOfFailure(0, start - 1, recordings.path("before.raw")),
              QStringLiteral("the range holds no event"));
    EXPECT_EQ(reasonOfFailure(0, start - 1, recordings.path("missing/folder.raw")),
              QStringLiteral("the range holds no event"));
    EXPECT_EQ(reasonOfFailure(start, end, recordings.path("source.raw/below.raw")),
              QStringLiteral("the folder cannot be made"));
    for (const char* const nameless : {"/", "/.", "/.."})
        EXPECT_EQ(reasonOfFailure(start, end, recordings.path("") + nameless),
                  QStringLiteral("it names no file"))
            << nameless;
    // Nobody may make files there, not even the administrator.
    EXPECT_EQ(reasonOfFailure(start, end, "/proc/cut.raw"), QStringLiteral("No such file or directory"));
}

TEST_F(RecordingCut, MakesTheFoldersThatAreMissing)
{
    ASSERT_TRUE(reader->cutFile(start, end, recordings.path("some/folder/cut.raw")));
    EXPECT_EQ(all(*TemporaryRecordings::load(recordings.path("some/folder/cut.raw"))), all(*reader));
}

TEST_F(RecordingCut, KeepsTheNameAsItIsEvenWithoutAnEnding)
{
    ASSERT_TRUE(reader->cutFile(start, end, recordings.path("long")));
    EXPECT_EQ(others(), QStringList{QStringLiteral("long")});
}

TEST_F(RecordingCut, OntoAFullDiskLeavesNothing)
{
    for (const rlim_t room : {rlim_t(20), rlim_t(300'000)}) {
        const FileSizeLimit limit(room);
        EXPECT_EQ(reasonOfFailure(start, end, recordings.path("full.raw")), QStringLiteral("File too large"));
    }
}

TEST_F(RecordingCut, IsOnTheDiskBeforeItGetsItsNameAndItsNameBeforeItIsDone)
{
    QList<QStringList> names;
    atSync = [&] {
        names.append(others());
        return 0;
    };
    ASSERT_TRUE(reader->cutFile(start, end, recordings.path("cut.raw")));
    EXPECT_EQ(names, (QList<QStringList>{{QStringLiteral("cut.raw.part")}, {QStringLiteral("cut.raw")}}));
}

TEST_F(RecordingCut, ThatDoesNotReachTheDiskLeavesNothing)
{
    atSync = [] { return EIO; };
    EXPECT_EQ(reasonOfFailure(start, end, recordings.path("cut.raw")), QStringLiteral("Input/output error"));
}

TEST_F(RecordingCut, ThatFailsLeavesAFileAloneThatHasTakenItsPlace)
{
    const QString part = QString::fromStdString(recordings.path("cut.raw.part"));
    atSync = [&part] {
        QFile::remove(part);
        evt::writeFile(part, "another's", {});
        return EIO;
    };
    const CapturedMessages messages;
    EXPECT_FALSE(reader->cutFile(start, end, recordings.path("cut.raw")));
    EXPECT_EQ(others(), QStringList{QStringLiteral("cut.raw.part")});
    EXPECT_EQ(QFileInfo(part).size(), 9);
}

TEST_F(RecordingCut, OfARecordingThatHasShrunkFails)
{
    ASSERT_TRUE(QFile::resize(QString::fromStdString(source), 200'000));
    const CapturedMessages messages;
    EXPECT_FALSE(reader->cutFile(start, end, recordings.path("cut.raw")));
    EXPECT_EQ(others(), QStringList());
    EXPECT_TRUE(
        messages.warnings().last().endsWith(QStringLiteral("the recording has shrunk since it was opened")));
}

TEST_F(RecordingCut, TakesTheNextNameWhereOneIsTakenEvenByAVideoOrADeadLink)
{
    const QDir folder = QFileInfo(QString::fromStdString(source)).dir();
    ASSERT_TRUE(evt::writeFile(folder.filePath(QStringLiteral("cut.mp4")), "a video", {}));
    ASSERT_TRUE(QFile::link(folder.filePath(QStringLiteral("gone.raw")),
                            folder.filePath(QStringLiteral("cut-1.raw"))));
    ASSERT_TRUE(reader->cutFile(start, end, recordings.path("cut.raw")));
    EXPECT_EQ(others(), (QStringList{QStringLiteral("cut-2.raw"), QStringLiteral("cut.mp4")}));
}

TEST_F(RecordingCut, LeavesTheUnfinishedFileOfAnotherCutAlone)
{
    const QString other = QString::fromStdString(recordings.path("cut.raw.part"));
    ASSERT_TRUE(evt::writeFile(other, "another's", {}));
    ASSERT_TRUE(reader->cutFile(start, end, recordings.path("cut.raw")));
    EXPECT_EQ(others(), (QStringList{QStringLiteral("cut.raw"), QStringLiteral("cut.raw.part")}));
    EXPECT_EQ(QFileInfo(other).size(), 9);
}

TEST_F(RecordingCut, ChineseNamesAreNoHindrance)
{
    ASSERT_TRUE(reader->cutFile(start, end, recordings.path("剪切的录像.raw")));
    EXPECT_EQ(others(), QStringList{QStringLiteral("剪切的录像.raw")});
}

TEST_F(RecordingCut, IsReadAlikeByADecoderThatSharesNothingWithOurs)
{
    const std::string path = recordings.path("cut.raw");
    ASSERT_TRUE(reader->cutFile(start, end, path));
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray all = file.readAll();
    const auto body = all.indexOf("% end\n") + 6;
    const evt::Bytes words(all.begin() + body, all.end());
    auto judged
        = reference::decode(EvtEncoding::Evt3, words, reader->sensorGeometry(), reference::Times::Literal);
    const std::uint64_t base = judged.events.front().timestamp;
    for (Event2D& event : judged.events)
        event.timestamp -= base;
    EXPECT_EQ(judged.events, counted(*reader, start, end));
    EXPECT_EQ(judged.triggers.size(), reader->getTriggersAt(start, end - start + 1)->size());
    EXPECT_EQ(judged.counts, EvtCounts());
}

TEST_F(RecordingCut, KeepsTheDateAndWhatElseTheHeaderTells)
{
    const std::string other
        = recordings.write("told.raw",
                           "% Date 2019-08-07 06:05:04\n% lens 8 mm, f/2\n% evt 2.0\n% serial_number 0042\n"
                           "% geometry 640x480\n% operator \xE6\x9D\x8E\n% lens again\n% t0 1234567\n"
                           "% T0 89\n% end\n",
                           variedStream());
    ASSERT_TRUE(TemporaryRecordings::load(other)->cutFile(start, end, recordings.path("cut.raw")));
    QFile file(QString::fromStdString(recordings.path("cut.raw")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray expected("% date 2019-08-07 06:05:04\n% evt 3.0\n% format EVT3;height=480;width=640\n"
                              "% geometry 640x480\n% serial_number 0042\n% lens 8 mm, f/2\n"
                              "% operator \xE6\x9D\x8E\n% lens again\n% end\n");
    EXPECT_EQ(file.read(expected.size()), expected);
}

TEST_F(RecordingCut, AHeaderThatWouldGrowTooLongLosesItsLastKeys)
{
    std::string header = "% format EVT2;height=480;width=640\n";
    for (int i = 0; header.size() < 64500; ++i)
        header += "% key" + std::to_string(i) + ' ' + std::string(900, 'v') + '\n';
    header += "% last " + std::string(65535 - 6 - header.size() - 8, 'v') + "\n% end\n";
    const auto full = TemporaryRecordings::load(recordings.write("full.raw", header, variedStream()));
    ASSERT_TRUE(full);
    ASSERT_TRUE(full->cutFile(start, end, recordings.path("cut.raw")));
    const auto cut = TemporaryRecordings::load(recordings.path("cut.raw"));
    ASSERT_TRUE(cut);
    EXPECT_EQ(all(*cut), all(*full));
    EXPECT_TRUE(cut->fileHeader().value("key50"));
    EXPECT_FALSE(cut->fileHeader().value("last"));
}

TEST_F(RecordingCut, GapsOfAnyLengthAreKept)
{
    // Three events, hours apart.
    evt::Bytes bytes;
    for (const std::uint32_t high : {0u, 200'000'000u, 268'000'000u})
        evt::append(bytes, evt::high2(high), 4), evt::append(bytes, evt::cd2(1, 7, 10, 20), 4);
    const auto gaps
        = TemporaryRecordings::load(recordings.write("gaps.raw", "% evt 2.0\n% geometry 640x480\n", bytes));
    ASSERT_TRUE(gaps);
    std::uint64_t last = 0;
    gaps->getEndTimestamp(last);
    ASSERT_TRUE(gaps->cutFile(0, last, recordings.path("cut.raw")));
    const auto cut = TemporaryRecordings::load(recordings.path("cut.raw"));
    EXPECT_EQ(all(*cut), counted(*gaps, 0, last));
}

TEST_F(RecordingCut, TriggersOnChannelsThatWordsCannotNameAreLeftOutAndLoggedOnce)
{
    evt::Bytes bytes = evt::words2({evt::high2(0), evt::trigger2(1, 31, 1), evt::cd2(1, 2, 3, 4),
                                    evt::trigger2(2, 15, 0), evt::trigger2(3, 16, 1), evt::cd2(0, 9, 3, 4)});
    const auto wide = TemporaryRecordings::load(
        recordings.write("wide.raw", TemporaryRecordings::header(EvtEncoding::Evt2), bytes));
    ASSERT_TRUE(wide);
    const CapturedMessages messages;
    ASSERT_TRUE(wide->cutFile(0, 9, recordings.path("cut.raw")));
    ASSERT_EQ(messages.of(QtInfoMsg).size(), 1);
    EXPECT_TRUE(messages.of(QtInfoMsg)[0].contains(QStringLiteral(": 2 triggers on channels")));
    const auto cut = TemporaryRecordings::load(recordings.path("cut.raw"));
    EXPECT_EQ(*cut->getTriggersAt(0, 100), (std::vector<EventTriggerIn>{{15, 0, 2}}));
    EXPECT_EQ(all(*cut).size(), 2u);
}

TEST_F(RecordingCut, TriggersBehindTheLastEventAreKeptAsFarAsTheRangeGoes)
{
    const evt::Bytes bytes
        = evt::words2({evt::high2(0), evt::cd2(1, 2, 3, 4), evt::trigger2(3, 1, 1), evt::cd2(1, 5, 3, 4),
                       evt::trigger2(9, 2, 0), evt::high2(200'000), evt::trigger2(7, 3, 1)});
    const auto trailing = TemporaryRecordings::load(
        recordings.write("trailing.raw", TemporaryRecordings::header(EvtEncoding::Evt2), bytes));
    ASSERT_TRUE(trailing);
    const std::vector<EventTriggerIn> wanted{{1, 1, 3}, {2, 0, 9}, {3, 1, 12'800'007}};
    std::size_t count = 1;
    for (const std::uint64_t to : {std::uint64_t(5), std::uint64_t(9), ~std::uint64_t(0)}) {
        const std::string path = recordings.path("cut" + std::to_string(count) + ".raw");
        ASSERT_TRUE(trailing->cutFile(0, to, path));
        const auto cut = TemporaryRecordings::load(path);
        EXPECT_EQ(all(*cut).size(), 2u);
        EXPECT_EQ(*cut->getTriggersAt(0, ~std::uint64_t(0)),
                  (std::vector<EventTriggerIn>(wanted.begin(), wanted.begin() + std::ptrdiff_t(count))));
        ++count;
    }
}

TEST_F(RecordingCut, OfMoreTriggersThanAWindowHoldsFailsAndIsLogged)
{
    reader->setWindowLimit(100);
    const CapturedMessages messages;
    EXPECT_FALSE(reader->cutFile(start, end, recordings.path("cut.raw")));
    EXPECT_EQ(others(), QStringList());
    EXPECT_GE(reader->getTriggersAt(start, end)->size(), 100u);
    const QStringList lines = messages.warnings();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(
        lines[0].endsWith(QStringLiteral(": a window holds 100 triggers or more; only the first are read")));
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral(": the range holds too many triggers")));
}

TEST_F(RecordingCut, ATriggerThatComesLateInTheWordsKeepsItsTime)
{
    // Its time lies before that of the event in front of it.
    const evt::Bytes bytes
        = evt::words3({evt::high3(0), evt::low3(50), evt::row3(1), evt::x3(1, 1), evt::low3(100),
                       evt::x3(1, 2), evt::low3(60), evt::trigger3(3, 1), evt::low3(200), evt::x3(1, 3)});
    const auto late = TemporaryRecordings::load(
        recordings.write("late.raw", TemporaryRecordings::header(EvtEncoding::Evt3), bytes));
    ASSERT_TRUE(late);
    ASSERT_TRUE(late->cutFile(0, 200, recordings.path("cut.raw")));
    const auto cut = TemporaryRecordings::load(recordings.path("cut.raw"));
    EXPECT_EQ(all(*cut), all(*late));
    EXPECT_EQ(*cut->getTriggersAt(0, 300), *late->getTriggersAt(0, 300));
    ASSERT_EQ(late->getTriggersAt(0, 300)->size(), 1u);
    EXPECT_EQ(late->getTriggersAt(0, 300)->front().timestamp, 60u);
}

/// What is written in the place of the words that were wanted.
class VerifyingWriterTest : public testing::Test
{
protected:
    /// Writes the words, which ought to hold these events; the reason why that failed, empty if it did not.
    QString write(const std::vector<Event2D>& events, const evt::Bytes& words)
    {
        const QString path = QString::fromStdString(recordings.path("written.raw"));
        QFile::remove(path);
        NewFile file;
        if (!file.open(path))
            return file.errorString();
        const Geometry geometry{640, 480};
        VerifyingWriter writer(file, path, recordingHeader(headOfNow(geometry, {})), geometry);
        VerifyingWriter::Block block = writer.emptyBlock();
        block.events = events;
        block.bytes = words;
        writer.put(std::move(block));
        return writer.finish() ? QString() : writer.errorString();
    }

    TemporaryRecordings recordings;
};

TEST_F(VerifyingWriterTest, NoticesEveryDifference)
{
    const QString differs = QStringLiteral("what was written differs from the recording");
    const std::vector<Event2D> events{{1, 2, 1, 4100}, {3, 2, 0, 4101}};
    const auto words = [](unsigned x, unsigned y, unsigned polarity, unsigned low) {
        return evt::words3({evt::high3(1), evt::low3(4), evt::row3(2), evt::x3(1, 1), evt::low3(low),
                            evt::row3(y), evt::x3(polarity, x)});
    };
    EXPECT_EQ(write(events, words(3, 2, 0, 5)), QString());
    EXPECT_EQ(write(events, words(4, 2, 0, 5)), differs);
    EXPECT_EQ(write(events, words(3, 1, 0, 5)), differs);
    EXPECT_EQ(write(events, words(3, 2, 1, 5)), differs);
    EXPECT_EQ(write(events, words(3, 2, 0, 6)), differs);
    evt::Bytes longer = words(3, 2, 0, 5);
    evt::append(longer, evt::x3(1, 9), 2);
    EXPECT_EQ(write(events, longer), differs);
    EXPECT_EQ(write(events, evt::words3({evt::high3(1), evt::low3(4), evt::row3(2), evt::x3(1, 1)})),
              differs);
    evt::Bytes edge = words(3, 2, 0, 5);
    evt::append(edge, evt::trigger3(0, 1), 2);
    EXPECT_EQ(write(events, edge), differs);
}

TEST_F(VerifyingWriterTest, ReadsTheFileAndNotWhatItMeantToWrite)
{
    // Another file stands under the name.
    const QString path = QString::fromStdString(recordings.path("written.raw"));
    NewFile file;
    ASSERT_TRUE(file.open(path));
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(evt::writeFile(path, "% evt 2.0\n", {}));
    VerifyingWriter writer(file, path, recordingHeader(headOfNow({640, 480}, {})), {640, 480});
    EXPECT_FALSE(writer.finish());
}

TEST_F(RecordingCut, OfAReaderThatIsNotLoadedFails)
{
    QString error;
    const auto unloaded = RawFileReader::open(source, error);
    const CapturedMessages messages;
    EXPECT_FALSE(unloaded->cutFile(0, 100, recordings.path("none.raw")));
    EXPECT_EQ(messages.warnings().size(), 1);
}
