#include "tests/unit/rawfilereaderfixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace korvane;
using namespace korvane::recording;
using namespace evt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

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

TEST_F(RawFileReaderTest, FindsEventsAndTriggersOfOneTimeHoweverFarApartTheyStand)
{
    Bytes words = words3({high3(5), low3(100), row3(1), x3(1, 1), trigger3(1, 1)});
    for (int i = 0; i < 200000; ++i)
        append(words, others3(0xFF), 2);
    for (const std::uint16_t word : {trigger3(1, 0), x3(1, 2), low3(200), x3(1, 3), trigger3(2, 1)})
        append(words, word, 2);
    path = recordings.write("apart.raw", TemporaryRecordings::header(EvtEncoding::Evt3), words);
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_EQ(columns(reader->getEventsAt(100, 1)), (std::vector<unsigned>{1, 2}));
    EXPECT_THAT(*reader->getTriggersAt(100, 1),
                ElementsAre(EventTriggerIn(1, 1, 100), EventTriggerIn(1, 0, 100)));
}

TEST_F(RawFileReaderTest, FindsTriggersThatRanAheadOfTheEvents)
{
    // Triggers and events are held apart: far behind a trigger, events may still be earlier than it.
    Bytes words = words3({high3(5), low3(4000), trigger3(1, 1), low3(100), row3(1)});
    for (unsigned i = 0; i < 2500000; ++i)
        append(words, i % 1000 == 0 ? x3(1, i / 5000) : others3(0xFF), 2);
    for (const std::uint16_t word : {high3(6), x3(0, 5), low3(1), trigger3(1, 0)})
        append(words, word, 2);
    path = recordings.write("ahead.raw", TemporaryRecordings::header(EvtEncoding::Evt3), words);
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    EXPECT_THAT(*reader->getTriggersAt(3000, 1001), ElementsAre(EventTriggerIn(1, 1, 4000)));
    EXPECT_THAT(*reader->getTriggersAt(3000, 2000),
                ElementsAre(EventTriggerIn(1, 1, 4000), EventTriggerIn(1, 0, 4097)));
    EXPECT_THAT(*reader->getEventsAt(100, 1), SizeIs(2500));
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

} // namespace
