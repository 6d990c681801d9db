#include "tests/support/capturedmessages.h"
#include "tests/support/failingdevice.h"
#include "tests/unit/rawfilereaderfixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace korvane;
using namespace korvane::recording;
using namespace evt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Files that are odd in some way: what becomes of them and what is said about it.

namespace {

using RawFileReaderFiles = RawFileReaderTest;

TEST_F(RawFileReaderFiles, AStreamWithoutAnEventInsideTheSensorIsNotLoaded)
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

TEST_F(RawFileReaderFiles, AFileThatIsGoneWhenItIsLoadedIsReported)
{
    const auto reader = open();
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path)));
    const CapturedMessages messages;
    EXPECT_FALSE(reader->loadFile());
    ASSERT_EQ(messages.warnings().size(), 1);
    EXPECT_TRUE(messages.warnings()[0].contains(QString::fromStdString(path)));
    expectNothing(*reader);
}

TEST_F(RawFileReaderFiles, InfersAMissingGeometryAndDropsNoEvent)
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

TEST_F(RawFileReaderFiles, ChoosesTheWordOrderByContentWhereTheHeaderIsSilent)
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

TEST_F(RawFileReaderFiles, FollowsTheHeadersWordOrderButWarnsWhenTheWordsContradictIt)
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

TEST_F(RawFileReaderFiles, ReadsRecordingsWithoutAHeader)
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

TEST_F(RawFileReaderFiles, ReportsEachKindOfFindingOnceForAFile)
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

TEST_F(RawFileReaderFiles, TheScanCountsRestartsAndDamagedTimeWordsWhileLoading)
{
    path = recordings.write("odd.raw", TemporaryRecordings::header(EvtEncoding::Evt2),
                            words2({high2(1000), cd2(1, 20, 1, 1), high2(90000), high2(1001), cd2(1, 1, 1, 1),
                                    high2(10), cd2(1, 1, 1, 1)}));
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(reader->metCounts().restarts, 1u);
    EXPECT_EQ(reader->metCounts().wildTimes, 1u);
}

TEST_F(RawFileReaderFiles, ReportsTheBytesBehindTheLastWholeWordOnce)
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

TEST_F(RawFileReaderFiles, AFileThatShrinksWhileItIsOpenEndsThere)
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
    // Behind the cut there is no recording, though its times stay what they were.
    EXPECT_FALSE(reader->getEventsAt(500000, 1000));
    EXPECT_FALSE(reader->getTriggersAt(500000, 1000));
    EXPECT_TRUE(reader->getTriggersAt(100000, 1000)) << "none, but inside";
    EXPECT_EQ(endOf(*reader), 999990u);
    EXPECT_FALSE(reader->getEventsAt(999991, 10));
    EXPECT_TRUE(reader->seekTime(400000));
    EXPECT_FALSE(reader->getNextEvents(1000));

    const auto holdsNothing = [&reader](std::uint64_t start) {
        const auto events = reader->getEventsAt(start, 1000000);
        const auto triggers = reader->getTriggersAt(start, 1000000);
        return (!events || events->empty()) && (!triggers || triggers->empty());
    };
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), qint64(head.size()) - 5));
    EXPECT_TRUE(holdsNothing(0));
    EXPECT_TRUE(holdsNothing(100000));
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), 0));
    EXPECT_TRUE(holdsNothing(0));
    EXPECT_TRUE(holdsNothing(100000));

    ASSERT_EQ(messages.warnings().size(), 1) << "once a file";
    EXPECT_TRUE(messages.warnings()[0].contains(QString::fromStdString(path)));
}

TEST_F(RawFileReaderFiles, APartThatTheDeviceCannotReadIsLeftOutAndTheRestIsRead)
{
    // One event every 10 us, none at column or row 0: what is read as zeros would be events there.
    Bytes words;
    for (unsigned i = 0; i < 400000; ++i) {
        append(words, high2(i * 10 / 64), 4);
        append(words, cd2(1, i * 10 % 64, 1 + i % 600, 5), 4);
    }
    path = recordings.write("failing.raw", TemporaryRecordings::header(EvtEncoding::Evt2), words);
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    const auto before = reader->getEventsAt(0, 4000000);
    ASSERT_THAT(*before, SizeIs(400000));

    const CapturedMessages messages;
    // A page in the middle, two seconds into the recording.
    failReads(path, 1600000, 4096);
    const auto after = reader->getEventsAt(0, 4000000);
    ASSERT_TRUE(after);
    EXPECT_LT(after->size(), 400000u);
    EXPECT_GT(after->size(), 360000u) << "what lies far from the page is there";
    EXPECT_TRUE(std::includes(before->begin(), before->end(), after->begin(), after->end(),
                              [](const auto& a, const auto& b) { return a.timestamp < b.timestamp; }));
    EXPECT_TRUE(std::all_of(after->begin(), after->end(), [](const auto& event) { return event.x > 0; }));
    EXPECT_EQ(after->back(), before->back());
    const auto inside = reader->getEventsAt(1999000, 1000);
    ASSERT_TRUE(inside) << "a quiet window, not the end";
    EXPECT_TRUE(inside->empty());
    EXPECT_THAT(*reader->getEventsAt(3000000, 1000), SizeIs(100));
    EXPECT_EQ(endOf(*reader), 3999990u);
    EXPECT_EQ(
        messages.warnings(),
        QStringList(QString::fromStdString(path)
                    + QStringLiteral(": a part of the file cannot be read; the events there are left out")));

    // A cut or a video with a gap would pass for the whole; beside the gap both are made.
    EXPECT_FALSE(reader->cutFile(1000000, 3000000, recordings.path("cut.raw")));
    EXPECT_FALSE(reader->exportVideo(1900000, 2100000, recordings.path("video.mp4")));
    for (const int line : {1, 2})
        EXPECT_TRUE(messages.warnings().value(line).endsWith(
            QStringLiteral(": a part of the recording cannot be read")));
    EXPECT_TRUE(reader->cutFile(3000000, 3500000, recordings.path("cut.raw")));
    EXPECT_TRUE(reader->exportVideo(3000000, 3100000, recordings.path("video.mp4")));
}

TEST_F(RawFileReaderFiles, ACutFailsWhereTriggersBehindTheLastEventCannotBeRead)
{
    // An event, then time words and, far behind it, triggers; the gap begins behind one of them or between.
    Bytes words = words2({high2(0), cd2(1, 1, 1, 1)});
    for (unsigned i = 1; i < 1000000; ++i)
        append(words, i == 500000 ? trigger2(1, 1, 1) : high2(i), 4);
    for (const std::uint64_t gap : {2'008'192u, 3'000'000u}) {
        path = recordings.write("failing.raw", TemporaryRecordings::header(EvtEncoding::Evt2), words);
        const auto reader = open();
        ASSERT_TRUE(reader->loadFile());
        ASSERT_EQ(endOf(*reader), 1u);
        failReads(path, gap, 4096);
        const CapturedMessages messages;
        EXPECT_FALSE(reader->cutFile(0, endless, recordings.path("cut.raw"))) << gap;
        EXPECT_TRUE(messages.warnings().value(1).endsWith(
            QStringLiteral(": a part of the recording cannot be read")));
        // Before the gap there is nothing amiss.
        EXPECT_TRUE(reader->cutFile(0, 1000, recordings.path("before.raw")));
    }
}

TEST_F(RawFileReaderFiles, AWindowOfTooManyEventsIsCutShortWithOneWarning)
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
