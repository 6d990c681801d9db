#include "camera/recording/evt3encoder.h"

#include "tests/support/decodeall.h"
#include "tests/support/evtwriter.h"
#include "tests/support/referencedecoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <random>

namespace {

using korvane::Event2D;
using korvane::EventTriggerIn;
using namespace korvane::recording;

constexpr Geometry hd{1280, 720};
using Events = std::vector<Event2D>;
using Triggers = std::vector<EventTriggerIn>;

decoding::Result decode(const std::vector<std::uint8_t>& words, Geometry geometry = hd)
{
    auto decoded = decoding::decodeAll(EvtEncoding::Evt3, InstructionSet::Best, words, geometry);
    EXPECT_EQ(decoded.counts, EvtCounts()) << "a clean stream has nothing to complain about";
    return decoded;
}

/// What decoding has to give: times count from the first time-high word.
template <typename Records>
Records counted(Records records, std::uint64_t base)
{
    for (auto& record : records)
        record.timestamp -= base;
    return records;
}

std::uint64_t baseOf(const Events& events, const Triggers& triggers = {})
{
    std::uint64_t first = ~std::uint64_t(0);
    if (!events.empty())
        first = events.front().timestamp;
    if (!triggers.empty())
        first = std::min(first, triggers.front().timestamp);
    return first / 4096 * 4096;
}

std::vector<std::uint8_t> encode(const Events& events, const Triggers& triggers = {}, Geometry geometry = hd)
{
    std::vector<std::uint8_t> words;
    Evt3Encoder encoder(geometry);
    encoder.encode(events, triggers, words);
    return words;
}

} // namespace

TEST(Evt3Encoder, AStreamStartsWithTimeHighThenTimeLowThenRow)
{
    EXPECT_EQ(encode({{100, 50, 1, 4096 * 7 + 33}}),
              evt::words3({evt::high3(7), evt::low3(33), evt::row3(50), evt::x3(1, 100)}));
}

TEST(Evt3Encoder, TimeLowAndRowAreWrittenOnChangeOnly)
{
    const auto words = encode({{100, 50, 1, 40}, {90, 50, 0, 40}, {90, 51, 0, 40}, {90, 51, 0, 41}});
    EXPECT_EQ(words,
              evt::words3({evt::high3(0), evt::low3(40), evt::row3(50), evt::x3(1, 100), evt::x3(0, 90),
                           evt::row3(51), evt::x3(0, 90), evt::low3(41), evt::x3(0, 90)}));
}

TEST(Evt3Encoder, FiveEventsOfABlockBecomeAWholeTripleAndFourDoNot)
{
    Events four;
    for (int x : {64, 66, 77, 95})
        four.emplace_back(std::uint16_t(x), std::uint16_t(5), std::uint8_t(1), 16);
    EXPECT_EQ(encode(four),
              evt::words3({evt::high3(0), evt::low3(16), evt::row3(5), evt::x3(1, 64), evt::x3(1, 66),
                           evt::x3(1, 77), evt::x3(1, 95)}));
    Events five = four;
    five.emplace(five.begin() + 3, std::uint16_t(90), std::uint16_t(5), std::uint8_t(1), 16);
    EXPECT_EQ(encode(five),
              evt::words3({evt::high3(0), evt::low3(16), evt::row3(5), evt::base3(1, 64),
                           evt::vector12(0b101), evt::vector12(0b10), evt::vector8(0b10000100)}));
}

TEST(Evt3Encoder, ANeighbouringBlockNeedsNoNewBase)
{
    Events events;
    for (std::uint16_t x = 32; x < 96; ++x)
        events.emplace_back(x, std::uint16_t(5), std::uint8_t(0), 0);
    EXPECT_EQ(encode(events),
              evt::words3({evt::high3(0), evt::low3(0), evt::row3(5), evt::base3(0, 32), evt::vector12(0xFFF),
                           evt::vector12(0xFFF), evt::vector8(0xFF), evt::vector12(0xFFF),
                           evt::vector12(0xFFF), evt::vector8(0xFF)}));
}

TEST(Evt3Encoder, NoTripleRunsPastTheRightEdge)
{
    // 320 x 2: blocks fit. 304 wide: the last block would run past the edge, its events stay single.
    Events events;
    for (std::uint16_t x = 288; x < 304; ++x)
        events.emplace_back(x, std::uint16_t(1), std::uint8_t(1), 3);
    const auto narrow = encode(events, {}, {304, 240});
    EXPECT_EQ(narrow.size(), 2 * (3 + events.size()));
    EXPECT_EQ(decode(narrow, {304, 240}).events, events);
    EXPECT_LT(encode(events, {}, {320, 240}).size(), narrow.size());
}

TEST(Evt3Encoder, BehindTheLastColumnThatAWordCanNameThereIsNoBase)
{
    // The base behind column 2047 has the number of the polarity bit.
    constexpr Geometry wide{2048, 4};
    for (const unsigned polarity : {0u, 1u}) {
        Events events;
        for (std::uint16_t x = 2016; x < 2048; ++x)
            events.emplace_back(x, std::uint16_t(1), static_cast<std::uint8_t>(polarity), 3);
        for (std::uint16_t x = 0; x < 32; ++x)
            events.emplace_back(x, std::uint16_t(2), std::uint8_t(1), 4);
        EXPECT_EQ(decode(encode(events, {}, wide), wide).events, events);
    }
}

TEST(Evt3Encoder, VectorsNeverReorder)
{
    // Falling x, a repeated pixel and a change of polarity end a run.
    Events events;
    for (int x : {10, 9, 8, 7, 6, 5, 4, 3})
        events.emplace_back(std::uint16_t(x), std::uint16_t(7), std::uint8_t(1), 12);
    for (int i = 0; i < 8; ++i)
        events.emplace_back(std::uint16_t(40), std::uint16_t(7), std::uint8_t(1), 12);
    for (int x = 50; x < 60; ++x)
        events.emplace_back(std::uint16_t(x), std::uint16_t(7), std::uint8_t(x % 2), 12);
    EXPECT_EQ(decode(encode(events)).events, events);
}

TEST(Evt3Encoder, TimeHighIsRepeatedEverySixteenMicrosecondsWhileEventsCome)
{
    // An event every 3 us, through two changes of time-high.
    Events events;
    for (std::uint64_t time = 4000; time < 12500; time += 3)
        events.emplace_back(std::uint16_t(1), std::uint16_t(1), std::uint8_t(1), time);
    const auto words = encode(events);
    std::uint64_t time = 0;
    std::uint64_t lastHigh = ~std::uint64_t(0);
    std::uint64_t high = 0;
    for (std::size_t at = 0; at < words.size(); at += 2) {
        const unsigned word = words[at] | (unsigned(words[at + 1]) << 8);
        ASSERT_TRUE(at > 0 || word >> 12 == 0x8) << "the first word tells the time";
        if (word >> 12 == 0x8) {
            high = word & 0xFFF;
            lastHigh = ~std::uint64_t(0);
        } else if (word >> 12 == 0x6) {
            time = high * 4096 + (word & 0xFFF);
            if (lastHigh == ~std::uint64_t(0))
                lastHigh = time;
            EXPECT_LT(time - lastHigh, 16u);
        }
    }
    EXPECT_EQ(time, events.back().timestamp);
}

TEST(Evt3Encoder, TriggersThatWordsCannotNameAreDroppedAndCounted)
{
    Evt3Encoder encoder(hd);
    std::vector<std::uint8_t> words;
    encoder.encode({}, Triggers{{16, 1, 1}, {0, 1, 2}, {-1, 1, 3}, {15, 0, 4}}, words);
    EXPECT_EQ(encoder.droppedTriggers(), 2u);
    EXPECT_EQ(decode(words).triggers, (Triggers{{0, 1, 2}, {15, 0, 4}}));
}

TEST(Evt3Encoder, AnEventOutsideTheSensorEndsNoRunAndHidesNoGap)
{
    const std::uint64_t hour = 3'600'000'000;
    Evt3Encoder encoder(hd);
    std::vector<std::uint8_t> words;
    const Events events{{1, 1, 1, 5}, {1280, 1, 1, hour}, {0, 720, 1, 2 * hour}, {3, 1, 1, 3 * hour}};
    encoder.encode(events, {}, words);
    EXPECT_EQ(encoder.droppedEvents(), 2u);
    EXPECT_EQ(encoder.encodedEvents(), 2u);
    EXPECT_EQ(decode(words).events, (Events{events.front(), events.back()}));
}

TEST(Evt3Encoder, IdleGapsGetTimeHighWordsAtLeastEveryEightSeconds)
{
    const std::uint64_t hour = 3'600'000'000;
    const Events events{{1, 1, 1, 5}, {2, 1, 1, 5 + hour}, {3, 1, 1, 6 + hour}};
    const auto words = encode(events);
    EXPECT_EQ(decode(words).events, events);
    // An hour's gap in steps of at most 8 s.
    EXPECT_GE(words.size() / 2, 3600u / 8);
    EXPECT_LE(words.size() / 2, 3600u);
    std::optional<unsigned> last;
    for (std::size_t at = 0; at < words.size(); at += 2) {
        const unsigned word = words[at] | (unsigned(words[at + 1]) << 8);
        if (word >> 12 != 0x8)
            continue;
        const unsigned high = word & 0xFFF;
        EXPECT_LE(((high - last.value_or(high)) & 0xFFF) * 4096u, 4'004'096u);
        last = high;
    }
}

TEST(Evt3Encoder, TriggersAreKeptInTimeOrder)
{
    const Events events{{1, 1, 1, 100}, {2, 1, 1, 200}, {3, 1, 1, 300}};
    const Triggers triggers{{0, 1, 50}, {6, 0, 200}, {15, 1, 250}, {1, 0, 5000}};
    const auto decoded = decode(encode(events, triggers));
    EXPECT_EQ(decoded.events, events);
    EXPECT_EQ(decoded.triggers, triggers);
}

TEST(Evt3Encoder, EventsOutsideTheSensorAreDroppedAndCounted)
{
    Evt3Encoder encoder({640, 480});
    std::vector<std::uint8_t> words;
    const Events events{{640, 0, 1, 1}, {0, 480, 1, 1}, {639, 479, 1, 1}};
    encoder.encode(events, {}, words);
    EXPECT_EQ(encoder.droppedEvents(), 2u);
    EXPECT_EQ(decode(words, {640, 480}).events, (Events{{639, 479, 1, 1}}));
}

TEST(Evt3Encoder, EventsThatNoWordCanNameAreDroppedAndCounted)
{
    // Column 2048 has the number of the polarity bit, row 2048 that of another origin.
    Evt3Encoder encoder({4096, 4096});
    std::vector<std::uint8_t> words;
    encoder.encode(Events{{2048, 1, 0, 1}, {1, 2048, 0, 1}, {2047, 2047, 0, 1}}, {}, words);
    EXPECT_EQ(encoder.droppedEvents(), 2u);
    EXPECT_EQ(decode(words, {2048, 2048}).events, (Events{{2047, 2047, 0, 1}}));
}

TEST(Evt3Encoder, ATimeThatStepsBackIsHeld)
{
    const Events events{{1, 1, 1, 100}, {2, 1, 1, 90}, {3, 1, 1, 101}};
    EXPECT_EQ(decode(encode(events)).events, (Events{{1, 1, 1, 100}, {2, 1, 1, 100}, {3, 1, 1, 101}}));
}

TEST(Evt3Encoder, DecodingGivesBackWhatWasEncodedForRandomStreams)
{
    std::mt19937_64 random(7);
    for (int round = 0; round < 24; ++round) {
        // The width of most cameras, and the greatest that words can name.
        const Geometry sensor = round % 6 == 5 ? Geometry{2048, 720} : hd;
        const unsigned density = static_cast<unsigned>(round % 5) + 1;
        Events events;
        Triggers triggers;
        // From a day of running time on, with gaps of seconds and one of hours: many wraps.
        std::uint64_t time = round % 2 == 0 ? random() % 1000 : 86'400'000'000 + random() % 1000;
        while (events.size() < 20000) {
            const auto y = static_cast<std::uint16_t>(random() % 720);
            auto x = static_cast<unsigned>(random() % sensor.width);
            auto polarity = static_cast<std::uint8_t>(random() & 1);
            for (std::uint64_t n = random() % (density * 8 + 2); n > 0 && x < sensor.width; --n) {
                events.emplace_back(static_cast<std::uint16_t>(x), y, polarity, time);
                x = random() % 40 == 0 ? static_cast<unsigned>(random() % sensor.width)
                                       : x + 1 + static_cast<unsigned>(random() % density);
                polarity = static_cast<std::uint8_t>(random() % 50 == 0 ? polarity ^ 1 : polarity);
            }
            if (random() % 100 == 0)
                triggers.emplace_back(static_cast<std::int16_t>(random() % 16),
                                      static_cast<std::int16_t>(random() & 1), time);
            time += random() % 2000 == 0 ? random() % 30'000'000 : random() % 4;
        }
        time += 7'200'000'000;
        events.emplace_back(std::uint16_t(5), std::uint16_t(5), std::uint8_t(1), time);

        // In pieces of any size, as a recorder gets them.
        Evt3Encoder encoder(sensor);
        std::vector<std::uint8_t> words;
        std::size_t event = 0;
        std::size_t trigger = 0;
        while (event < events.size()) {
            const std::size_t count = std::min<std::size_t>(events.size() - event, random() % 3000 + 1);
            const std::uint64_t limit
                = event + count < events.size() ? events[event + count].timestamp : ~std::uint64_t(0);
            std::size_t last = trigger;
            while (last < triggers.size() && triggers[last].timestamp < limit)
                ++last;
            encoder.encode({events.data() + event, count}, {triggers.data() + trigger, last - trigger},
                           words);
            event += count;
            trigger = last;
        }
        const auto decoded = decode(words, sensor);
        const std::uint64_t base = baseOf(events, triggers);
        ASSERT_EQ(decoded.events, counted(events, base)) << "round " << round;
        ASSERT_EQ(decoded.triggers, counted(triggers, base)) << "round " << round;
        // And by a decoder that shares no code with ours.
        const auto judged = reference::decode(EvtEncoding::Evt3, words, sensor);
        ASSERT_EQ(judged.events, decoded.events) << "round " << round;
        ASSERT_EQ(judged.triggers, decoded.triggers) << "round " << round;
    }
}
