#include "camera/recording/recordingcut.h"

#include "camera/recording/rawfilereader.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/temporaryrecordings.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <random>

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

    TemporaryRecordings recordings;
    std::string source;
    std::unique_ptr<RawFileReader> reader;
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};

} // namespace

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
        std::uint64_t cutEnd = 0;
        cut->getEndTimestamp(cutEnd);
        EXPECT_EQ(cut->getTriggersAt(0, cutEnd + 1)->size(),
                  reader->getTriggersAt(from, to - from + 1)->size());
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
    const CapturedMessages messages;
    EXPECT_FALSE(reader->cutFile(end + 1, end + 100, recordings.path("beyond.raw")));
    EXPECT_FALSE(reader->cutFile(100, 50, recordings.path("backwards.raw")));
    EXPECT_FALSE(reader->cutFile(start, end, recordings.path("missing/folder.raw")));
    EXPECT_EQ(others(), QStringList());
    ASSERT_EQ(messages.warnings().size(), 3);
    EXPECT_TRUE(messages.warnings()[0].contains(QStringLiteral("beyond.raw")));
}

TEST_F(RecordingCut, OfAReaderThatIsNotLoadedFails)
{
    QString error;
    const auto unloaded = RawFileReader::open(source, error);
    const CapturedMessages messages;
    EXPECT_FALSE(unloaded->cutFile(0, 100, recordings.path("none.raw")));
    EXPECT_EQ(messages.warnings().size(), 1);
}
