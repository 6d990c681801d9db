#include "camera/recording/rawfilereader.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/evtwriter.h"
#include "tests/support/recordprinters.h"
#include "tests/support/temporaryrecordings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using namespace korvane;
using namespace korvane::recording;
using namespace evt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

/// Events at 100, 100, 200, 1000 and 5000 us, triggers at 50, 150, 1000 and 6000 us, time base 77 * 64 us.
class RawFileReaderTest : public testing::Test
{
protected:
    RawFileReaderTest()
    {
        const auto at = [this](unsigned time) {
            append(body, high2(77 + time / 64), 4);
            return time % 64;
        };
        append(body, trigger2(at(50), 1, 1), 4);
        append(body, cd2(1, at(100), 1, 10), 4);
        append(body, cd2(0, at(100), 2, 10), 4);
        append(body, trigger2(at(150), 1, 0), 4);
        append(body, cd2(1, at(200), 3, 10), 4);
        append(body, cd2(1, at(1000), 4, 10), 4);
        append(body, trigger2(at(1000), 2, 1), 4);
        append(body, cd2(0, at(5000), 5, 10), 4);
        append(body, trigger2(at(6000), 2, 0), 4);
        path = recordings.write("some.raw", TemporaryRecordings::header(EvtEncoding::Evt2), body);
    }

    std::unique_ptr<RawFileReader> open() const
    {
        QString error;
        auto reader = RawFileReader::open(path, error);
        EXPECT_TRUE(reader) << error.toStdString();
        return reader;
    }

    static std::uint64_t startOf(RawFileReader& reader)
    {
        std::uint64_t time = 4711;
        reader.getStartTimestamp(time);
        return time;
    }

    static std::uint64_t endOf(RawFileReader& reader)
    {
        std::uint64_t time = 4711;
        reader.getEndTimestamp(time);
        return time;
    }

    static std::vector<unsigned> columns(const DvsFileReader::Events& events)
    {
        std::vector<unsigned> found;
        for (const Event2D& event : *events)
            found.push_back(event.x);
        return found;
    }

    static void expectNothing(RawFileReader& reader)
    {
        EXPECT_EQ(startOf(reader), 0u);
        EXPECT_EQ(endOf(reader), 0u);
        EXPECT_TRUE(reader.isEnd());
        EXPECT_FALSE(reader.seekTime(0));
        EXPECT_FALSE(reader.seekTime(100));
        EXPECT_FALSE(reader.getNextEvents(1000));
        EXPECT_FALSE(reader.getEventsAt(0, 1000));
        EXPECT_FALSE(reader.getEventsAt(0, 0));
        EXPECT_FALSE(reader.getTriggersAt(0, 1000));
        reader.streamEvents(0, endless, [](auto) {
            ADD_FAILURE() << "no event is expected";
            return true;
        });
    }

    TemporaryRecordings recordings;
    Bytes body;
    std::string path;
};

TEST_F(RawFileReaderTest, GivesNothingBeforeItIsLoaded)
{
    const auto reader = open();
    expectNothing(*reader);
    ASSERT_TRUE(reader->loadFile());
    // What was asked too early has not moved the position.
    EXPECT_EQ(columns(reader->getNextEvents(101)), (std::vector<unsigned>{1, 2, 3}));
}

TEST_F(RawFileReaderTest, GivesTheTimesOfTheFirstAndTheLastEvent)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(startOf(*reader), 100u);
    EXPECT_EQ(endOf(*reader), 5000u);
    EXPECT_FALSE(reader->isEnd());
    EXPECT_EQ(reader->encoding(), EvtEncoding::Evt2);
    EXPECT_EQ(reader->sensorGeometry(), (Geometry{640, 480}));
}

TEST_F(RawFileReaderTest, LoadingTwiceChangesNothing)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    ASSERT_TRUE(reader->getNextEvents(150));
    EXPECT_TRUE(reader->loadFile());
    EXPECT_EQ(columns(reader->getNextEvents(1000)), (std::vector<unsigned>{4}));
}

TEST_F(RawFileReaderTest, AWindowHoldsItsStartAndNotItsEnd)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_THAT(*reader->getEventsAt(100, 100), ElementsAre(Event2D(1, 10, 1, 100), Event2D(2, 10, 0, 100)));
    EXPECT_EQ(columns(reader->getEventsAt(100, 101)), (std::vector<unsigned>{1, 2, 3}));
    EXPECT_EQ(columns(reader->getEventsAt(101, 100)), (std::vector<unsigned>{3}));
    EXPECT_EQ(columns(reader->getEventsAt(100, 1)), (std::vector<unsigned>{1, 2}));
    EXPECT_EQ(columns(reader->getEventsAt(5000, 1)), (std::vector<unsigned>{5}));
    EXPECT_EQ(columns(reader->getEventsAt(0, 101)), (std::vector<unsigned>{1, 2}));
    EXPECT_EQ(columns(reader->getEventsAt(0, 5001)), (std::vector<unsigned>{1, 2, 3, 4, 5}));
}

TEST_F(RawFileReaderTest, AWindowInsideTheRecordingIsEmptyButThere)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    for (const auto& [start, duration] :
         {std::pair{0u, 100u}, {201u, 799u}, {4999u, 1u}, {5000u, 0u}, {0u, 0u}}) {
        const auto events = reader->getEventsAt(start, duration);
        ASSERT_TRUE(events) << start;
        EXPECT_THAT(*events, IsEmpty());
        const auto triggers = reader->getTriggersAt(start, 0);
        ASSERT_TRUE(triggers) << start;
        EXPECT_THAT(*triggers, IsEmpty());
    }
}

TEST_F(RawFileReaderTest, AWindowBehindTheLastEventIsAnEmptyPointer)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    for (const std::uint64_t start :
         {std::uint64_t(5001), std::uint64_t(1) << 40, std::uint64_t(1) << 63, endless}) {
        for (const std::uint64_t duration : {std::uint64_t(0), std::uint64_t(1), endless}) {
            EXPECT_FALSE(reader->getEventsAt(start, duration));
            EXPECT_FALSE(reader->getTriggersAt(start, duration));
        }
    }
}

TEST_F(RawFileReaderTest, AnyDurationFits)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    for (const std::uint64_t duration : {endless, endless - 100, std::uint64_t(1) << 63}) {
        EXPECT_THAT(*reader->getEventsAt(0, duration), SizeIs(5));
        EXPECT_THAT(*reader->getEventsAt(5000, duration), SizeIs(1));
        EXPECT_THAT(*reader->getTriggersAt(100, duration), SizeIs(3));
    }
    ASSERT_TRUE(reader->seekTime(5000));
    EXPECT_EQ(columns(reader->getNextEvents(endless)), (std::vector<unsigned>{5}));
    EXPECT_TRUE(reader->isEnd());
    EXPECT_FALSE(reader->getNextEvents(endless));
    EXPECT_TRUE(reader->isEnd());
    EXPECT_FALSE(reader->getNextEvents(1));
}

TEST_F(RawFileReaderTest, NextEventsAdvanceThroughTheRecordingToItsEnd)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    // From the first event on, in windows of 100 us.
    EXPECT_EQ(columns(reader->getNextEvents(100)), (std::vector<unsigned>{1, 2}));
    EXPECT_EQ(columns(reader->getNextEvents(100)), (std::vector<unsigned>{3}));
    for (int i = 0; i < 7; ++i) {
        const auto quiet = reader->getNextEvents(100);
        ASSERT_TRUE(quiet);
        EXPECT_THAT(*quiet, IsEmpty());
    }
    EXPECT_EQ(columns(reader->getNextEvents(100)), (std::vector<unsigned>{4}));
    EXPECT_THAT(*reader->getNextEvents(3900), IsEmpty());
    EXPECT_FALSE(reader->isEnd());
    EXPECT_EQ(columns(reader->getNextEvents(100)), (std::vector<unsigned>{5}));
    EXPECT_TRUE(reader->isEnd());
    EXPECT_FALSE(reader->getNextEvents(100));
}

TEST_F(RawFileReaderTest, TheEndIsReachedOnlyBehindTheLastEvent)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(columns(reader->getNextEvents(4900)), (std::vector<unsigned>{1, 2, 3, 4}));
    EXPECT_FALSE(reader->isEnd());
    EXPECT_EQ(columns(reader->getNextEvents(1)), (std::vector<unsigned>{5}));
    EXPECT_TRUE(reader->isEnd());
}

TEST_F(RawFileReaderTest, NoDurationMovesNothing)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    const auto nothing = reader->getNextEvents(0);
    ASSERT_TRUE(nothing);
    EXPECT_THAT(*nothing, IsEmpty());
    EXPECT_EQ(columns(reader->getNextEvents(1)), (std::vector<unsigned>{1, 2}));
}

TEST_F(RawFileReaderTest, WindowsAtATimeLeaveThePositionAlone)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    reader->getEventsAt(4000, 2000);
    reader->getEventsAt(endless, 1);
    reader->getTriggersAt(0, 10000);
    reader->streamEvents(0, endless, [](auto) { return true; });
    EXPECT_EQ(columns(reader->getNextEvents(1)), (std::vector<unsigned>{1, 2}));
}

TEST_F(RawFileReaderTest, SeeksToTimesInsideTheRecordingOnly)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_TRUE(reader->seekTime(200));
    for (const std::uint64_t time : {std::uint64_t(0), std::uint64_t(99), std::uint64_t(5001), endless})
        EXPECT_FALSE(reader->seekTime(time)) << time;
    EXPECT_EQ(columns(reader->getNextEvents(1)), (std::vector<unsigned>{3}));
    EXPECT_TRUE(reader->seekTime(5000));
    EXPECT_FALSE(reader->isEnd());
    EXPECT_EQ(columns(reader->getNextEvents(1)), (std::vector<unsigned>{5}));
    EXPECT_TRUE(reader->isEnd());
    EXPECT_TRUE(reader->seekTime(100));
    EXPECT_FALSE(reader->isEnd());
    EXPECT_EQ(columns(reader->getNextEvents(1)), (std::vector<unsigned>{1, 2}));
    EXPECT_TRUE(reader->seekTime(700));
    EXPECT_EQ(columns(reader->getNextEvents(301)), (std::vector<unsigned>{4}));
}

TEST_F(RawFileReaderTest, GivesTheTriggersOfAWindow)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_THAT(*reader->getTriggersAt(0, 150), ElementsAre(EventTriggerIn(1, 1, 50)));
    EXPECT_THAT(*reader->getTriggersAt(50, 101),
                ElementsAre(EventTriggerIn(1, 1, 50), EventTriggerIn(1, 0, 150)));
    EXPECT_THAT(*reader->getTriggersAt(51, 99), IsEmpty());
    EXPECT_THAT(*reader->getTriggersAt(1000, 1), ElementsAre(EventTriggerIn(2, 1, 1000)));
    // A window that starts inside may reach behind the last event.
    EXPECT_THAT(*reader->getTriggersAt(5000, 1001), ElementsAre(EventTriggerIn(2, 0, 6000)));
}

TEST_F(RawFileReaderTest, StreamsEventsWithBothLimitsUntilTheSinkHasEnough)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    std::vector<Event2D> found;
    const auto keep = [&found](std::span<const Event2D> piece) {
        found.insert(found.end(), piece.begin(), piece.end());
        return true;
    };
    reader->streamEvents(200, 1000, keep);
    EXPECT_THAT(found, ElementsAre(Event2D(3, 10, 1, 200), Event2D(4, 10, 1, 1000)));
    found.clear();
    reader->streamEvents(0, endless, keep);
    EXPECT_THAT(found, SizeIs(5));
    found.clear();
    reader->streamEvents(201, 999, keep);
    reader->streamEvents(1000, 200, keep);
    reader->streamEvents(5001, endless, keep);
    EXPECT_THAT(found, IsEmpty());

    int calls = 0;
    reader->streamEvents(0, endless, [&calls](auto) {
        ++calls;
        return false;
    });
    EXPECT_EQ(calls, 1);
}

TEST_F(RawFileReaderTest, EventsBelongToTheirTakerEvenWhenTheReaderIsGone)
{
    auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    auto first = reader->getEventsAt(0, 5001);
    auto second = reader->getEventsAt(0, 5001);
    first->clear();
    EXPECT_THAT(*second, SizeIs(5));
    for (int i = 0; i < 10; ++i) {
        // Vectors are used again, but never with what they held before.
        EXPECT_EQ(columns(reader->getEventsAt(200, 1)), (std::vector<unsigned>{3}));
        EXPECT_THAT(*reader->getEventsAt(201, 1), IsEmpty());
    }
    reader.reset();
    EXPECT_THAT(*second, SizeIs(5));
    EXPECT_EQ(second->back(), Event2D(5, 10, 0, 5000));
}

TEST_F(RawFileReaderTest, ARecordingWithASingleEventHasAStartAndAnEnd)
{
    path = recordings.write("one.raw", TemporaryRecordings::header(EvtEncoding::Evt2),
                            words2({high2(5), high2(6), cd2(1, 7, 8, 9)}));
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(startOf(*reader), 71u);
    EXPECT_EQ(endOf(*reader), 71u);
    EXPECT_TRUE(reader->seekTime(71));
    EXPECT_FALSE(reader->seekTime(70));
    EXPECT_FALSE(reader->seekTime(72));
    EXPECT_THAT(*reader->getNextEvents(1), SizeIs(1));
    EXPECT_TRUE(reader->isEnd());
}

TEST_F(RawFileReaderTest, AStreamWithoutAnEventInsideTheSensorIsNotLoaded)
{
    const struct
    {
        const char* name;
        EvtEncoding encoding;
        Bytes body;
    } cases[]{
        {"nothing", EvtEncoding::Evt2, {}},
        {"less than a word", EvtEncoding::Evt21, {0, 0, 0}},
        {"only time", EvtEncoding::Evt2, words2({high2(5), high2(6), high2(7)})},
        {"only triggers", EvtEncoding::Evt3, words3({high3(5), low3(6), trigger3(1, 1)})},
        {"only before time", EvtEncoding::Evt2, words2({cd2(1, 1, 1, 1), high2(5)})},
        {"no time", EvtEncoding::Evt3, words3({row3(1), x3(1, 1)})},
        {"only outside", EvtEncoding::Evt21,
         words21({high21(1), cd21(1, 0, 640, 1, 7), cd21(1, 0, 1, 480, 7)})},
        {"no row", EvtEncoding::Evt3, words3({high3(1), x3(1, 1), base3(1, 1), vector12(1)})},
    };
    for (const auto& one : cases) {
        path = recordings.write("without.raw", TemporaryRecordings::header(one.encoding), one.body);
        const auto reader = open();
        ASSERT_TRUE(reader) << one.name;
        const CapturedMessages messages;
        EXPECT_FALSE(reader->loadFile()) << one.name;
        ASSERT_EQ(messages.warnings().size(), 1) << one.name;
        EXPECT_TRUE(messages.warnings()[0].contains(QString::fromStdString(path))) << one.name;
        EXPECT_TRUE(messages.warnings()[0].contains(QStringLiteral("no change event"))) << one.name;
        expectNothing(*reader);
    }
}

TEST_F(RawFileReaderTest, AFileThatIsGoneWhenItIsLoadedIsReported)
{
    const auto reader = open();
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path)));
    const CapturedMessages messages;
    EXPECT_FALSE(reader->loadFile());
    ASSERT_EQ(messages.warnings().size(), 1);
    EXPECT_TRUE(messages.warnings()[0].contains(QString::fromStdString(path)));
    expectNothing(*reader);
}

TEST_F(RawFileReaderTest, InfersAMissingGeometryAndDropsNoEvent)
{
    const Bytes words = words2({high2(1), cd2(1, 0, 500, 100), cd2(1, 1, 1279, 719)});
    path = recordings.write("old.raw", "% evt 2.0\n", words);
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(reader->sensorGeometry(), (Geometry{1280, 720}));
    EXPECT_THAT(*reader->getEventsAt(0, 10), SizeIs(2));

    path = recordings.write("strange.raw", "% evt 2.0\n",
                            words2({high2(1), cd2(1, 0, 2047, 0), cd2(1, 1, 0, 2047), cd2(1, 2, 1500, 800)}));
    const auto large = open();
    ASSERT_TRUE(large->loadFile());
    EXPECT_EQ(large->sensorGeometry(), (Geometry{2048, 2048}));
    EXPECT_THAT(*large->getEventsAt(0, 10), SizeIs(3));
}

TEST_F(RawFileReaderTest, ChoosesTheWordOrderByContentWhereTheHeaderIsSilent)
{
    Bytes words;
    for (unsigned i = 0; i < 100; ++i) {
        append(words, high21(i), 8);
        append(words, cd21(1, 3, 32, 7, 0x80000001), 8);
    }
    const CapturedMessages messages;
    for (const bool swapped : {false, true}) {
        path = recordings.write("order.raw", "% format EVT21;width=640;height=480\n% end\n",
                                swapped ? legacy(words) : words);
        const auto reader = open();
        EXPECT_EQ(reader->encoding(), swapped ? EvtEncoding::Evt21Legacy : EvtEncoding::Evt21);
        ASSERT_TRUE(reader->loadFile());
        EXPECT_THAT(*reader->getEventsAt(0, 64), ElementsAre(Event2D(32, 7, 1, 3), Event2D(63, 7, 1, 3)));
    }
    EXPECT_THAT(messages.warnings(), IsEmpty());
}

TEST_F(RawFileReaderTest, FollowsTheHeadersWordOrderButWarnsWhenTheWordsContradictIt)
{
    Bytes words;
    for (unsigned i = 0; i < 100; ++i) {
        append(words, high21(i), 8);
        append(words, cd21(1, 3, 32, 7, 0x80000001), 8);
    }
    for (const bool swapped : {false, true}) {
        const auto stated = swapped ? EvtEncoding::Evt21Legacy : EvtEncoding::Evt21;
        path = recordings.write("order.raw", TemporaryRecordings::header(stated),
                                swapped ? words : legacy(words));
        const CapturedMessages messages;
        const auto reader = open();
        EXPECT_EQ(reader->encoding(), stated);
        ASSERT_EQ(messages.warnings().size(), 1);
        EXPECT_TRUE(messages.warnings()[0].contains(QString::fromStdString(path)));
        EXPECT_TRUE(messages.warnings()[0].contains(QStringLiteral("word order")));
    }
    // Agreement, or a body that says nothing, is no reason to warn.
    const CapturedMessages messages;
    path = recordings.write("order.raw", TemporaryRecordings::header(EvtEncoding::Evt21), words);
    open();
    path = recordings.write("order.raw", TemporaryRecordings::header(EvtEncoding::Evt21Legacy), {});
    open();
    EXPECT_THAT(messages.warnings(), IsEmpty());
}

TEST_F(RawFileReaderTest, ReadsRecordingsWithoutAHeader)
{
    Bytes words;
    for (unsigned i = 0; i < 200; ++i) {
        append(words, high3(i / 8), 2);
        append(words, low3(512 * (i % 8)), 2);
        append(words, row3(i % 240), 2);
        append(words, x3(1, i), 2);
    }
    path = recordings.write("bare.raw", "", words);
    const auto reader = open();
    EXPECT_EQ(reader->encoding(), EvtEncoding::Evt3);
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(reader->sensorGeometry(), (Geometry{304, 240}));
    EXPECT_THAT(*reader->getEventsAt(0, 1000000), SizeIs(200));
}

TEST_F(RawFileReaderTest, ReportsEachKindOfFindingOnceForAFile)
{
    path = recordings.write(
        "odd.raw", TemporaryRecordings::header(EvtEncoding::Evt2),
        words2({cd2(1, 1, 1, 1), high2(1000), cd2(1, 20, 1, 1), 0x90000000, cd2(1, 10, 1, 1),
                cd2(1, 30, 700, 1), high2(90000), high2(1001), cd2(1, 1, 1, 1), high2(10), cd2(1, 1, 1, 1)}));
    const CapturedMessages messages;
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    for (int i = 0; i < 5; ++i)
        reader->getEventsAt(0, 1000000);
    EXPECT_THAT(messages.warnings(), IsEmpty());
    const auto lines = messages.of(QtInfoMsg);
    EXPECT_EQ(lines.size(), 6) << lines.join(QLatin1Char('\n')).toStdString();
    for (const QString& line : lines)
        EXPECT_TRUE(line.startsWith(QString::fromStdString(path) + QStringLiteral(": ")))
            << line.toStdString();
    const EvtCounts counts = reader->metCounts();
    EXPECT_GE(counts.beforeTime, 1u);
    EXPECT_GE(counts.reservedWords, 1u);
    EXPECT_GE(counts.clamped, 1u);
    EXPECT_GE(counts.outside, 1u);
    EXPECT_GE(counts.wildTimes, 1u);
    EXPECT_GE(counts.restarts, 1u);
    EXPECT_EQ(counts.withoutRow + counts.withoutBase, 0u);
}

TEST_F(RawFileReaderTest, TheScanCountsRestartsAndDamagedTimeWordsWhileLoading)
{
    path = recordings.write("odd.raw", TemporaryRecordings::header(EvtEncoding::Evt2),
                            words2({high2(1000), cd2(1, 20, 1, 1), high2(90000), high2(1001), cd2(1, 1, 1, 1),
                                    high2(10), cd2(1, 1, 1, 1)}));
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(reader->metCounts().restarts, 1u);
    EXPECT_EQ(reader->metCounts().wildTimes, 1u);
}

TEST_F(RawFileReaderTest, ReportsTheBytesBehindTheLastWholeWordOnce)
{
    body.pop_back();
    path = recordings.write("cut.raw", TemporaryRecordings::header(EvtEncoding::Evt2), body);
    const CapturedMessages messages;
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    reader->getEventsAt(0, 10000);
    const auto lines = messages.of(QtInfoMsg);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains(QStringLiteral("3 bytes")));
    EXPECT_TRUE(lines[0].contains(QString::fromStdString(path)));
}

TEST_F(RawFileReaderTest, AFileThatShrinksWhileItIsOpenEndsThere)
{
    // Enough events for many pages: one every 10 us.
    Bytes words;
    for (unsigned i = 0; i < 100000; ++i) {
        append(words, high2(i * 10 / 64), 4);
        append(words, cd2(1, i * 10 % 64, i % 640, 5), 4);
    }
    const std::string head = TemporaryRecordings::header(EvtEncoding::Evt2);
    path = recordings.write("shrinking.raw", head, words);
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    ASSERT_EQ(endOf(*reader), 999990u);
    const auto before = reader->getEventsAt(0, 1000000);
    ASSERT_THAT(*before, SizeIs(100000));

    const CapturedMessages messages;
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), qint64(head.size()) + 8 * 30000 + 3));
    const auto after = reader->getEventsAt(0, 1000000);
    ASSERT_THAT(*after, SizeIs(30000));
    EXPECT_TRUE(std::equal(after->begin(), after->end(), before->begin()));
    EXPECT_THAT(*reader->getEventsAt(299990, 20), SizeIs(1));
    // Behind the cut the recording is quiet; its length stays what it was.
    ASSERT_TRUE(reader->getEventsAt(500000, 1000));
    EXPECT_THAT(*reader->getEventsAt(500000, 1000), IsEmpty());
    EXPECT_EQ(endOf(*reader), 999990u);
    EXPECT_FALSE(reader->getEventsAt(999991, 10));

    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), qint64(head.size()) - 5));
    EXPECT_THAT(*reader->getEventsAt(0, 1000000), IsEmpty());
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), 0));
    EXPECT_THAT(*reader->getEventsAt(0, 1000000), IsEmpty());
    EXPECT_THAT(*reader->getTriggersAt(0, 1000000), IsEmpty());
    EXPECT_TRUE(reader->seekTime(400000));
    EXPECT_THAT(*reader->getNextEvents(1000), IsEmpty());

    ASSERT_EQ(messages.warnings().size(), 1) << "once a file";
    EXPECT_TRUE(messages.warnings()[0].contains(QString::fromStdString(path)));
}

TEST_F(RawFileReaderTest, AWindowOfTooManyEventsIsCutShortWithOneWarning)
{
    // A word of EVT 2.1 holds 32 events: a small file may claim any number in a microsecond.
    Bytes words;
    words.reserve(9 << 20);
    append(words, high21(0), 8);
    for (std::size_t i = 0; i <= RawFileReader::maximumWindow / 32; ++i)
        append(words, cd21(1, 0, 0, 0, 0xFFFFFFFF), 8);
    path = recordings.write("crowded.raw", TemporaryRecordings::header(EvtEncoding::Evt21), words);
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    const CapturedMessages messages;
    for (int i = 0; i < 2; ++i) {
        const auto events = reader->getEventsAt(0, 10);
        ASSERT_TRUE(events);
        EXPECT_LE(events->size(), RawFileReader::maximumWindow);
        EXPECT_GT(events->size(), RawFileReader::maximumWindow / 2);
    }
    ASSERT_EQ(messages.warnings().size(), 1);
    EXPECT_TRUE(messages.warnings()[0].contains(QString::fromStdString(path)));

    std::uint64_t streamed = 0;
    reader->streamEvents(0, 10, [&streamed](std::span<const Event2D> piece) {
        streamed += piece.size();
        return true;
    });
    EXPECT_EQ(streamed, RawFileReader::maximumWindow + 32);
}

} // namespace
