#include "camera/simulation/spanassembler.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

using korvane::Event2D;
using korvane::simulation::SpanAssembler;

/// One event every 100 microseconds in [from, to).
std::vector<Event2D> ticks(std::uint64_t from, std::uint64_t to)
{
    std::vector<Event2D> events;
    for (std::uint64_t time = (from + 99) / 100 * 100; time < to; time += 100)
        events.emplace_back(std::uint16_t{1}, std::uint16_t{2}, std::uint8_t{1}, time);
    return events;
}

/// Feeds [from, to) in steps of 8 ms.
void feed(SpanAssembler& spans, std::uint64_t from, std::uint64_t to)
{
    for (std::uint64_t start = from; start < to; start += 8000)
        spans.append(ticks(start, start + 8000), start + 8000);
}

TEST(SpanAssembler, SpansAreHalfOpenAndLieOnMultiplesOfTheirLength)
{
    SpanAssembler spans;
    spans.setSpan(10000);
    std::vector<Event2D> out;
    spans.append(ticks(0, 8000), 8000);
    EXPECT_FALSE(spans.take(out));
    spans.append(ticks(8000, 16000), 16000);
    ASSERT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(0, 10000));
    EXPECT_EQ(out.back().timestamp, 9900U);
    spans.append(ticks(16000, 24000), 24000);
    ASSERT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(10000, 20000));
    EXPECT_EQ(out.front().timestamp, 10000U);
}

TEST(SpanAssembler, EveryBoundaryIsExactWhateverTheLength)
{
    for (const std::uint64_t length : {1U, 7U, 999U, 7999U, 8000U, 8001U, 33333U, 100003U}) {
        SpanAssembler spans;
        spans.setSpan(length);
        std::vector<Event2D> out;
        std::uint64_t last = 0;
        for (std::uint64_t start = 0; start < 400000; start += 8000) {
            spans.append(ticks(start, start + 8000), start + 8000);
            if (!spans.take(out))
                continue;
            const std::uint64_t end = (start + 8000) / length * length;
            EXPECT_EQ(out, ticks(end - length, end)) << length;
            EXPECT_GT(end, last);
            last = end;
        }
        EXPECT_GT(last, 200000U);
    }
}

TEST(SpanAssembler, CompleteSpanMayBeEmpty)
{
    SpanAssembler spans;
    spans.setSpan(5000);
    std::vector<Event2D> out(3);
    spans.append({}, 8000);
    ASSERT_TRUE(spans.take(out));
    EXPECT_TRUE(out.empty());
    EXPECT_FALSE(spans.take(out));
}

TEST(SpanAssembler, OnlyTheNewestSpanWaits)
{
    SpanAssembler spans;
    spans.setSpan(10000);
    feed(spans, 0, 1000000);
    std::vector<Event2D> out;
    ASSERT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(990000, 1000000));
    EXPECT_FALSE(spans.take(out));
}

TEST(SpanAssembler, MemoryDoesNotGrowWhileNobodyReadsAndVectorsAreUsedAgain)
{
    SpanAssembler spans;
    spans.setSpan(10000);
    std::vector<Event2D> out;
    feed(spans, 0, 160000);
    ASSERT_TRUE(spans.take(out));
    feed(spans, 160000, 320000);
    ASSERT_TRUE(spans.take(out));
    // From here on the reader sleeps and wakes; the same three vectors go round.
    std::set<const Event2D*> places;
    std::size_t largest = 0;
    for (std::uint64_t start = 320000; start < 4000000; start += 160000) {
        feed(spans, start, start + 160000);
        ASSERT_TRUE(spans.take(out));
        places.insert(out.data());
        largest = std::max(largest, out.capacity());
    }
    EXPECT_LE(places.size(), 3U);
    EXPECT_LE(largest, 400U);
}

TEST(SpanAssembler, NewLengthDropsWhatWaitsAndBeginsWithTheRunningSpanWhenThatIsAtHand)
{
    SpanAssembler spans;
    spans.setSpan(40000);
    std::vector<Event2D> out;
    feed(spans, 0, 64000);
    // The span [0, 40000) waits, [40000, 80000) is being collected.
    spans.setSpan(15000);
    EXPECT_FALSE(spans.take(out));
    feed(spans, 64000, 80000);
    ASSERT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(60000, 75000));
}

TEST(SpanAssembler, LongerSpanWaitsForItsStart)
{
    SpanAssembler spans;
    spans.setSpan(10000);
    std::vector<Event2D> out;
    feed(spans, 0, 64000);
    spans.setSpan(50000);
    // [50000, 100000) has lost its start.
    feed(spans, 64000, 144000);
    EXPECT_FALSE(spans.take(out));
    feed(spans, 144000, 152000);
    ASSERT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(100000, 150000));
}

TEST(SpanAssembler, SameLengthOrZeroChangesNothing)
{
    SpanAssembler spans;
    spans.setSpan(10000);
    std::vector<Event2D> out;
    feed(spans, 0, 16000);
    spans.setSpan(10000);
    spans.setSpan(0);
    ASSERT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(0, 10000));
}

TEST(SpanAssembler, SpanThatHoldsTooMuchIsDroppedAndTheNextOneComes)
{
    SpanAssembler spans(150);
    spans.setSpan(10000);
    std::vector<Event2D> dense;
    for (std::uint64_t time = 0; time < 10000; time += 10)
        dense.emplace_back(std::uint16_t{0}, std::uint16_t{0}, std::uint8_t{0}, time);
    std::vector<Event2D> out;
    spans.append(dense, 10000);
    EXPECT_FALSE(spans.take(out));
    spans.append(ticks(10000, 20000), 20000);
    ASSERT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(10000, 20000));
}

TEST(SpanAssembler, EndlessSpanNeverCompletes)
{
    SpanAssembler spans(1000);
    spans.setSpan(~std::uint64_t{0});
    feed(spans, 0, 800000);
    std::vector<Event2D> out;
    EXPECT_FALSE(spans.take(out));
    spans.setSpan(8000);
    feed(spans, 800000, 816000);
    EXPECT_TRUE(spans.take(out));
    EXPECT_EQ(out, ticks(808000, 816000));
}

TEST(SpanAssembler, WaitingSpanCanBeDropped)
{
    SpanAssembler spans;
    spans.setSpan(8000);
    std::vector<Event2D> out;
    feed(spans, 0, 8000);
    spans.dropWaiting();
    EXPECT_FALSE(spans.take(out));
}

} // namespace
