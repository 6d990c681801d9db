#include "tests/support/decodeall.h"
#include "tests/support/evtwriter.h"
#include "tests/support/recordprinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace korvane;
using namespace korvane::recording;
using namespace evt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr Geometry vga{640, 480};

bool isTimeHigh(EvtEncoding encoding, const std::uint8_t* word)
{
    const std::size_t top = encoding == EvtEncoding::Evt21Legacy ? 3 : wordSize(encoding) - 1;
    return word[top] >> 4 == 8;
}

/// Decodes with every instruction set. Repeated time-high words change nothing, so they are put before and
/// behind the words under test, to bring these to every place in the blocks that wide instructions take.
decoding::Result decodeEveryWay(EvtEncoding encoding, const Bytes& bytes, Geometry geometry = vga)
{
    const auto plain = decoding::decodeAll(encoding, InstructionSet::Portable, bytes, geometry);
    const std::size_t size = wordSize(encoding);
    const std::size_t whole = bytes.size() / size * size;
    Bytes front;
    if (whole > 0 && isTimeHigh(encoding, bytes.data()))
        front.assign(bytes.begin(), bytes.begin() + std::ptrdiff_t(size));
    Bytes back;
    for (std::size_t at = 0; at < whole; at += size) {
        if (isTimeHigh(encoding, bytes.data() + at))
            back.assign(bytes.begin() + std::ptrdiff_t(at), bytes.begin() + std::ptrdiff_t(at + size));
    }
    for (const int repeats : {0, 1, 7, 16, 31}) {
        Bytes padded;
        for (int i = 0; i < repeats; ++i)
            padded.insert(padded.end(), front.begin(), front.end());
        padded.insert(padded.end(), bytes.begin(), bytes.begin() + std::ptrdiff_t(whole));
        for (int i = 0; i < 40; ++i)
            padded.insert(padded.end(), back.begin(), back.end());
        for (const auto instructions : {InstructionSet::Portable, InstructionSet::Best}) {
            const auto found = decoding::decodeAll(encoding, instructions, padded, geometry);
            EXPECT_EQ(found.events, plain.events) << repeats << " words in front";
            EXPECT_EQ(found.triggers, plain.triggers) << repeats << " words in front";
            EXPECT_EQ(found.counts, plain.counts) << repeats << " words in front";
        }
    }
    return plain;
}

decoding::Result decode2(const std::vector<std::uint32_t>& words, Geometry geometry = vga)
{
    return decodeEveryWay(EvtEncoding::Evt2, words2(words), geometry);
}

decoding::Result decode21(const std::vector<std::uint64_t>& words, Geometry geometry = vga)
{
    auto little = decodeEveryWay(EvtEncoding::Evt21, words21(words), geometry);
    const auto swapped = decodeEveryWay(EvtEncoding::Evt21Legacy, legacy(words21(words)), geometry);
    EXPECT_EQ(little.events, swapped.events);
    EXPECT_EQ(little.triggers, swapped.triggers);
    EXPECT_EQ(little.counts, swapped.counts);
    return little;
}

decoding::Result decode3(const std::vector<std::uint16_t>& words, Geometry geometry = vga)
{
    return decodeEveryWay(EvtEncoding::Evt3, words3(words), geometry);
}

std::vector<std::uint64_t> timesOf(const decoding::Result& result)
{
    std::vector<std::uint64_t> times;
    for (const auto& event : result.events)
        times.push_back(event.timestamp);
    return times;
}

std::vector<unsigned> columnsOf(const decoding::Result& result)
{
    std::vector<unsigned> columns;
    for (const auto& event : result.events)
        columns.push_back(event.x);
    return columns;
}

// --- EVT 2.0 ---------------------------------------------------------------------------------------------

TEST(Evt2Decoder, ReadsEventsFromBytesWrittenByHand)
{
    const Bytes bytes{
        0x10, 0x00, 0x00, 0x80, // time-high 0x10
        0xC8, 0x60, 0x49, 0x11, // ON, 5 us, x = 300, y = 200
        0x11, 0x00, 0x00, 0x80, // time-high 0x11: 64 us later
        0xDF, 0xF9, 0xC3, 0x0F, // OFF, 63 us, x = 127, y = 479
    };
    const auto found = decodeEveryWay(EvtEncoding::Evt2, bytes);
    EXPECT_THAT(found.events, ElementsAre(Event2D(300, 200, 1, 5), Event2D(127, 479, 0, 64 + 63)));
    EXPECT_EQ(found.counts, EvtCounts());
}

TEST(Evt2Decoder, CountsTimeFromTheFirstTimeHighWord)
{
    EXPECT_THAT(timesOf(decode2({high2(0xABCDEF0), cd2(1, 3, 1, 1), high2(0xABCDEF2), cd2(1, 3, 1, 1)})),
                ElementsAre(3, 131));
}

TEST(Evt2Decoder, DropsWhatStandsBeforeTheFirstTimeHighWord)
{
    const auto found = decode2(
        {cd2(1, 3, 1, 1), cd2(0, 3, 1, 1), trigger2(1, 0, 1), high2(7), cd2(0, 9, 2, 3), trigger2(10, 1, 1)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(2, 3, 0, 9)));
    EXPECT_THAT(found.triggers, ElementsAre(EventTriggerIn(1, 1, 10)));
    EXPECT_EQ(found.counts.beforeTime, 2u);
}

TEST(Evt2Decoder, GivesNothingWithoutATimeHighWord)
{
    const auto found = decode2(std::vector<std::uint32_t>(200, cd2(1, 3, 1, 1)));
    EXPECT_THAT(found.events, IsEmpty());
    EXPECT_EQ(found.counts.beforeTime, 200u);
}

TEST(Evt2Decoder, ReadsTriggersWithFiveBitsOfChannelFromBytesWrittenByHand)
{
    const Bytes bytes{
        0x00, 0x00, 0x00, 0x80, // time-high 0
        0x01, 0x1F, 0x40, 0xA0, // 1 us, channel 31, rising
        0x00, 0x00, 0x80, 0xA0, // 2 us, channel 0, falling
        0xFE, 0xF2, 0xBF, 0xA0, // 2 us, channel 18, falling, every unused bit set
    };
    const auto found = decodeEveryWay(EvtEncoding::Evt2, bytes);
    EXPECT_THAT(found.triggers,
                ElementsAre(EventTriggerIn(31, 1, 1), EventTriggerIn(0, 0, 2), EventTriggerIn(18, 0, 2)));
    EXPECT_THAT(found.events, IsEmpty());
}

TEST(Evt2Decoder, PassesOverMonitoringWordsAndTheirPayload)
{
    const auto found
        = decode2({high2(0), others2(3, 0x14), continued2(0x123), cd2(1, 1, 5, 6), continued2(0x8FFFFFF)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(5, 6, 1, 1)));
    EXPECT_EQ(found.counts, EvtCounts());
}

TEST(Evt2Decoder, SkipsAndCountsReservedTypes)
{
    std::vector<std::uint32_t> words{high2(0)};
    for (const unsigned type : {0x2u, 0x3u, 0x4u, 0x5u, 0x6u, 0x7u, 0x9u, 0xBu, 0xCu, 0xDu}) {
        words.push_back(type << 28 | 0x0FFFFFF);
        words.push_back(cd2(1, 1, type, 6));
    }
    const auto found = decode2(words);
    EXPECT_THAT(columnsOf(found), ElementsAre(2, 3, 4, 5, 6, 7, 9, 11, 12, 13));
    EXPECT_EQ(found.counts.reservedWords, 10u);
}

TEST(Evt2Decoder, DropsOnlyEventsOutsideTheSensor)
{
    const auto found = decode2({high2(0), cd2(1, 0, 639, 479), cd2(1, 0, 640, 0), cd2(1, 0, 0, 480),
                                cd2(1, 0, 2047, 2047), cd2(0, 0, 0, 0)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(639, 479, 1, 0), Event2D(0, 0, 0, 0)));
    EXPECT_EQ(found.counts.outside, 3u);
}

TEST(Evt2Decoder, HoldsTheLargestCoordinates)
{
    EXPECT_THAT(decode2({high2(0), cd2(1, 0, 2047, 2047)}, {2048, 2048}).events,
                ElementsAre(Event2D(2047, 2047, 1, 0)));
}

TEST(Evt2Decoder, IgnoresTheBytesBehindTheLastWholeWord)
{
    for (std::size_t tail = 1; tail < 4; ++tail) {
        Bytes bytes = words2({high2(0), cd2(1, 1, 5, 6), cd2(1, 1, 7, 8)});
        bytes.resize(8 + tail);
        EXPECT_THAT(decodeEveryWay(EvtEncoding::Evt2, bytes).events, ElementsAre(Event2D(5, 6, 1, 1)));
    }
}

TEST(Evt2Decoder, CountsOnOverAWrapOfTheTimeHighWord)
{
    EXPECT_THAT(timesOf(decode2({high2(0xFFFFFFF), cd2(1, 63, 1, 1), high2(0), cd2(1, 0, 1, 1), high2(1),
                                 cd2(1, 0, 1, 1)})),
                ElementsAre(63, 64, 128));
}

TEST(Evt2Decoder, TakesAStepFromTheLastSixteenthToTheFirstForAWrapAndNoOther)
{
    // Widest wrap: from the start of the last sixteenth to the end of the first.
    EXPECT_THAT(timesOf(decode2({high2(0xF000000), cd2(1, 0, 1, 1), high2(0x0FFFFFF), cd2(1, 0, 1, 1)})),
                ElementsAre(0, 64ull * 0x1FFFFFF));
    // One less on either side is no wrap but a restart of the clock.
    const auto early = decode2({high2(0xEFFFFFF), cd2(1, 0, 1, 1), high2(0x0FFFFFF), cd2(1, 0, 1, 1)});
    EXPECT_THAT(timesOf(early), ElementsAre(0, 1));
    EXPECT_EQ(early.counts.restarts, 1u);
    const auto late = decode2({high2(0xF000000), cd2(1, 0, 1, 1), high2(0x1000000), cd2(1, 0, 1, 1)});
    EXPECT_THAT(timesOf(late), ElementsAre(0, 1));
    EXPECT_EQ(late.counts.restarts, 1u);
}

TEST(Evt2Decoder, HoldsTimeBitsThatRunBackwards)
{
    const auto found = decode2({high2(0), cd2(1, 40, 1, 1), cd2(1, 10, 2, 1), cd2(1, 30, 3, 1),
                                cd2(1, 41, 4, 1), trigger2(5, 0, 1), trigger2(4, 0, 1)});
    EXPECT_THAT(timesOf(found), ElementsAre(40, 40, 40, 41));
    EXPECT_THAT(found.triggers, ElementsAre(EventTriggerIn(0, 1, 5), EventTriggerIn(0, 1, 5)));
    EXPECT_EQ(found.counts.clamped, 3u);
}

TEST(Evt2Decoder, AnEventAfterATriggerIsHeldByEventsOnly)
{
    const auto found = decode2({high2(0), trigger2(40, 0, 1), cd2(1, 10, 2, 1), trigger2(9, 0, 0)});
    EXPECT_THAT(timesOf(found), ElementsAre(10));
    EXPECT_THAT(found.triggers, ElementsAre(EventTriggerIn(0, 1, 40), EventTriggerIn(0, 0, 40)));
}

// --- EVT 2.1 ---------------------------------------------------------------------------------------------

TEST(Evt21Decoder, ReadsBothWordOrdersFromBytesWrittenByHand)
{
    const Bytes little{
        0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x80, // time-high 2
        0x01, 0x00, 0x00, 0x80, 0x07, 0x00, 0xC1, 0x10, // ON, 3 us, x = 32, y = 7, pixels 0 and 31
        0x02, 0x00, 0x00, 0x00, 0xC8, 0x60, 0x49, 0x01, // OFF, 5 us, x = 300, y = 200, pixel 1
    };
    const Bytes swapped{
        0x02, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x00, //
        0x07, 0x00, 0xC1, 0x10, 0x01, 0x00, 0x00, 0x80, //
        0xC8, 0x60, 0x49, 0x01, 0x02, 0x00, 0x00, 0x00, //
    };
    const std::vector<Event2D> expected{{32, 7, 1, 3}, {63, 7, 1, 3}, {301, 200, 0, 5}};
    EXPECT_EQ(decodeEveryWay(EvtEncoding::Evt21, little).events, expected);
    EXPECT_EQ(decodeEveryWay(EvtEncoding::Evt21Legacy, swapped).events, expected);
}

TEST(Evt21Decoder, GivesThePixelsOfAMaskFromLeftToRight)
{
    const auto found = decode21({high21(0), cd21(0, 0, 64, 9, 0xFFFFFFFF)});
    ASSERT_THAT(found.events, SizeIs(32));
    for (unsigned i = 0; i < 32; ++i)
        EXPECT_EQ(found.events[i], Event2D(static_cast<std::uint16_t>(64 + i), 9, 0, 0));
}

TEST(Evt21Decoder, AMaskWithoutPixelsGivesNothing)
{
    const auto found = decode21({high21(0), cd21(1, 3, 32, 5, 0), cd21(1, 4, 700, 900, 0)});
    EXPECT_THAT(found.events, IsEmpty());
    EXPECT_EQ(found.counts, EvtCounts());
}

TEST(Evt21Decoder, DoesNotRelyOnAlignedColumns)
{
    EXPECT_THAT(columnsOf(decode21({high21(0), cd21(1, 0, 37, 5, 0x80000001), cd21(1, 0, 319, 5, 1)})),
                ElementsAre(37, 68, 319));
}

TEST(Evt21Decoder, DropsOnlyThePixelsOutsideTheSensor)
{
    const auto edge = decode21({high21(0), cd21(1, 0, 630, 5, 0xFFFFFFFF)});
    EXPECT_THAT(columnsOf(edge), ElementsAre(630, 631, 632, 633, 634, 635, 636, 637, 638, 639));
    EXPECT_EQ(edge.counts.outside, 22u);
    const auto beyond = decode21({high21(0), cd21(1, 0, 640, 5, 0xF), cd21(1, 0, 0, 480, 0x7)});
    EXPECT_THAT(beyond.events, IsEmpty());
    EXPECT_EQ(beyond.counts.outside, 7u);
    // 320 is a multiple of 32, 304 is not.
    EXPECT_THAT(columnsOf(decode21({high21(0), cd21(1, 0, 288, 5, 0x00018001)}, {304, 240})),
                ElementsAre(288, 303));
}

TEST(Evt21Decoder, DropsWhatStandsBeforeTheFirstTimeHighWordAndCountsItsPixels)
{
    const auto found
        = decode21({cd21(1, 0, 0, 0, 0xF0F), trigger21(0, 1, 1), high21(100), cd21(1, 1, 0, 0, 1)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(0, 0, 1, 1)));
    EXPECT_THAT(found.triggers, IsEmpty());
    EXPECT_EQ(found.counts.beforeTime, 8u);
}

TEST(Evt21Decoder, ReadsTriggersAndPassesOverMonitoringWordsWithAnyPayload)
{
    const auto found = decode21({high21(1), trigger21(7, 31, 1), others21(9, 0x14, 0xF0000123),
                                 others21(9, 0x16, 0x80000000), 0xF123456789ABCDEF, trigger21(8, 0, 0),
                                 cd21(0, 9, 1, 1, 1)});
    EXPECT_THAT(found.triggers, ElementsAre(EventTriggerIn(31, 1, 7), EventTriggerIn(0, 0, 8)));
    EXPECT_THAT(found.events, ElementsAre(Event2D(1, 1, 0, 9)));
    EXPECT_EQ(found.counts, EvtCounts());
}

TEST(Evt21Decoder, SkipsAndCountsReservedTypes)
{
    std::vector<std::uint64_t> words{high21(0)};
    for (const std::uint64_t type : {0x2u, 0x3u, 0x4u, 0x5u, 0x6u, 0x7u, 0x9u, 0xBu, 0xCu, 0xDu})
        words.push_back(type << 60 | 0x00FF);
    const auto found = decode21(words);
    EXPECT_THAT(found.events, IsEmpty());
    EXPECT_EQ(found.counts.reservedWords, 10u);
}

TEST(Evt21Decoder, IgnoresTheBytesBehindTheLastWholeWord)
{
    for (std::size_t tail = 1; tail < 8; ++tail) {
        Bytes bytes = words21({high21(0), cd21(1, 1, 5, 6, 1), cd21(1, 1, 7, 8, 1)});
        bytes.resize(16 + tail);
        EXPECT_THAT(decodeEveryWay(EvtEncoding::Evt21, bytes).events, ElementsAre(Event2D(5, 6, 1, 1)));
    }
}

TEST(Evt21Decoder, CountsOnOverAWrapAndHoldsStepsBack)
{
    const auto found = decode21(
        {high21(0xFFFFFFF), cd21(1, 60, 1, 1, 1), cd21(1, 50, 2, 1, 3), high21(0), cd21(1, 1, 1, 1, 1)});
    EXPECT_THAT(timesOf(found), ElementsAre(60, 60, 60, 65));
    EXPECT_EQ(found.counts.clamped, 2u);
}

// --- EVT 3.0 ---------------------------------------------------------------------------------------------

TEST(Evt3Decoder, ReadsEventsFromBytesWrittenByHand)
{
    const Bytes bytes{
        0x05, 0x80, // time-high 5
        0x64, 0x60, // time-low 100
        0x07, 0x00, // row 7
        0x2C, 0x29, // x = 300, ON
        0x2D, 0x21, // x = 301, OFF
        0x06, 0x80, // time-high 6: 4096 us later, time-low 0
        0x2C, 0x21, // x = 300, OFF, row 7 still
        0x60, 0x38, // base x = 96, ON
        0x05, 0x40, // 12 pixels: 0 and 2
        0x01, 0x48, // the next 12: 0 and 11
        0x80, 0x50, // the next 8: the last
    };
    const auto found = decodeEveryWay(EvtEncoding::Evt3, bytes);
    EXPECT_THAT(found.events,
                ElementsAre(Event2D(300, 7, 1, 100), Event2D(301, 7, 0, 100), Event2D(300, 7, 0, 4096),
                            Event2D(96, 7, 1, 4096), Event2D(98, 7, 1, 4096), Event2D(108, 7, 1, 4096),
                            Event2D(119, 7, 1, 4096), Event2D(127, 7, 1, 4096)));
    EXPECT_EQ(found.counts, EvtCounts());
}

TEST(Evt3Decoder, ForgetsRowsBasesAndTimeLowBeforeTheFirstTimeHighWord)
{
    const auto found
        = decode3({row3(7), base3(1, 64), low3(99), x3(1, 1), vector12(7), vector8(0xF03), trigger3(0, 1),
                   high3(10), x3(1, 2), vector12(3), row3(8), x3(1, 3), vector12(1)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(3, 8, 1, 0)));
    EXPECT_THAT(found.triggers, IsEmpty());
    EXPECT_EQ(found.counts.beforeTime, 1u + 3 + 2);
    EXPECT_EQ(found.counts.withoutRow, 1u);
    EXPECT_EQ(found.counts.withoutBase, 3u);
}

TEST(Evt3Decoder, DropsEventsBeforeAnyRow)
{
    const auto found
        = decode3({high3(1), low3(5), x3(1, 1), base3(0, 5), vector12(0x801), row3(2), x3(0, 9)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(9, 2, 0, 5)));
    EXPECT_EQ(found.counts.withoutRow, 3u);
}

TEST(Evt3Decoder, DropsVectorsBeforeAnyBase)
{
    const auto found = decode3(
        {high3(1), row3(2), vector12(7), vector8(1), x3(1, 50), vector8(1), base3(1, 9), vector8(1)});
    EXPECT_THAT(columnsOf(found), ElementsAre(50, 9));
    EXPECT_EQ(found.counts.withoutBase, 5u);
}

TEST(Evt3Decoder, TimeLowFallsToZeroWhenTimeHighChangesButNotWhenItRepeats)
{
    EXPECT_THAT(timesOf(decode3({high3(1), low3(100), row3(0), x3(1, 0), high3(1), x3(1, 1), high3(2),
                                 x3(1, 2), low3(7), high3(2), x3(1, 3)})),
                ElementsAre(100, 100, 4096, 4103));
}

TEST(Evt3Decoder, TimeLowIsZeroBetweenTheFirstTimeHighWordAndTheFirstTimeLowWord)
{
    EXPECT_THAT(timesOf(decode3({high3(77), row3(0), x3(1, 0), low3(1), x3(1, 1)})), ElementsAre(0, 1));
}

TEST(Evt3Decoder, ATimeLowWordAheadThatNoEventFollowsMovesNothing)
{
    const auto found = decode3(
        {high3(1), row3(0), low3(100), x3(1, 0), low3(111), low3(100), x3(1, 1), low3(101), x3(1, 2)});
    EXPECT_THAT(timesOf(found), ElementsAre(100, 100, 101));
    EXPECT_EQ(found.counts, EvtCounts());
}

TEST(Evt3Decoder, HoldsTimeLowThatStepsBackBehindAnEvent)
{
    const auto found = decode3({high3(1), row3(0), low3(500), x3(1, 0), low3(100), x3(1, 1), base3(1, 2),
                                vector12(3), low3(600), x3(1, 4)});
    EXPECT_THAT(timesOf(found), ElementsAre(500, 500, 500, 500, 600));
    EXPECT_EQ(found.counts.clamped, 3u);
}

TEST(Evt3Decoder, AVectorKeepsThePolarityOfItsBaseAndASingleEventMovesNoBase)
{
    EXPECT_THAT(decode3({high3(0), row3(1), base3(1, 100), x3(0, 500), vector12(1), x3(0, 7), vector12(1),
                         vector8(0x80)})
                    .events,
                ElementsAre(Event2D(500, 1, 0, 0), Event2D(100, 1, 1, 0), Event2D(7, 1, 0, 0),
                            Event2D(112, 1, 1, 0), Event2D(131, 1, 1, 0)));
}

TEST(Evt3Decoder, DecodesEveryVectorWordByItself)
{
    // An eight alone, a twelve alone, an eight before a twelve.
    EXPECT_THAT(columnsOf(decode3({high3(0), row3(1), base3(0, 10), vector8(0x81), base3(0, 50),
                                   vector12(0x801), x3(0, 3), base3(0, 80), vector8(1), vector12(1)})),
                ElementsAre(10, 17, 50, 61, 3, 80, 88));
}

TEST(Evt3Decoder, TheBaseAdvancesOverEmptyVectorsAndIntoTheNextTriple)
{
    EXPECT_THAT(columnsOf(decode3({high3(0), row3(1), base3(1, 64), vector12(0), vector12(0), vector8(0),
                                   vector12(1), vector12(0), vector8(1)})),
                ElementsAre(96, 120));
}

TEST(Evt3Decoder, IgnoresTheUnusedBitsOfShortVectors)
{
    EXPECT_THAT(columnsOf(decode3({high3(0), row3(1), base3(1, 64), vector8(0xF01), vector8(0xF80)})),
                ElementsAre(64, 79));
}

TEST(Evt3Decoder, DropsOnlyThePixelsOfAVectorOutsideTheSensor)
{
    const auto found = decode3({high3(0), row3(1), base3(1, 620), vector12(0xFFF), vector12(0xFFF),
                                vector8(0xFF), x3(1, 639), x3(1, 640)});
    EXPECT_EQ(columnsOf(found).size(), 21u);
    EXPECT_EQ(found.events.front().x, 620);
    EXPECT_EQ(found.events[19].x, 639);
    EXPECT_EQ(found.events[20].x, 639);
    EXPECT_EQ(found.counts.outside, 12u + 1);
}

TEST(Evt3Decoder, ABaseThatRanOffTheSensorDoesNotComeBackIntoIt)
{
    // Twelve columns a word: enough words to run round a counter of 16 bits.
    std::vector<std::uint16_t> words{high3(0), row3(1), base3(1, 2040)};
    words.insert(words.end(), 6000, vector12(1));
    const auto found = decode3(words, {2048, 2048});
    EXPECT_THAT(columnsOf(found), ElementsAre(2040));
    EXPECT_EQ(found.counts.outside, 5999u);
}

TEST(Evt3Decoder, DropsARowBelowTheSensorUntilTheNextRow)
{
    const auto found = decode3(
        {high3(0), row3(480), x3(1, 1), base3(1, 0), vector12(3), row3(479), x3(1, 2), vector12(1)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(2, 479, 1, 0), Event2D(12, 479, 1, 0)));
    EXPECT_EQ(found.counts.outside, 3u);
}

TEST(Evt3Decoder, IgnoresTheOriginBitOfARow)
{
    EXPECT_THAT(decode3({high3(0), row3(0x800 | 5), x3(1, 1)}).events, ElementsAre(Event2D(1, 5, 1, 0)));
}

TEST(Evt3Decoder, ARowOfAnotherFamilyHidesItsEventsUntilTheNextRowAndLeavesTheBaseAlone)
{
    const auto found = decode3({high3(0), row3(5), x3(1, 1), foreignRow3(6), x3(1, 2), base3(0, 32),
                                vector12(5), vector8(1), row3(7), x3(1, 3), vector8(1)});
    EXPECT_THAT(found.events, ElementsAre(Event2D(1, 5, 1, 0), Event2D(3, 7, 1, 0), Event2D(32, 7, 0, 0)));
    EXPECT_EQ(found.counts.withoutRow, 4u);
    EXPECT_EQ(found.counts.reservedWords, 1u);
}

TEST(Evt3Decoder, SkipsAndCountsReservedTypesEvenInsideATriple)
{
    const auto found = decode3({high3(0), row3(5), base3(1, 32), vector12(1), 0x9999, vector12(1), 0xB123,
                                0xC123, vector8(1), 0xD123, x3(1, 600)});
    EXPECT_THAT(columnsOf(found), ElementsAre(32, 44, 56, 600));
    EXPECT_EQ(found.counts.reservedWords, 4u);
}

TEST(Evt3Decoder, PassesOverMonitoringWordsOfAnyLengthWithoutSwallowingWhatFollows)
{
    // Payloads of three, two and no words; the word behind each is not part of it.
    const auto found
        = decode3({high3(0), row3(5), others3(0x14), continued12(1), continued12(2), continued4(3), x3(1, 1),
                   others3(0x19), continued12(0xFFF), continued12(0xFFF), high3(1), x3(1, 2), others3(0x0FF),
                   x3(1, 3), continued4(0xFFF), x3(1, 4)});
    EXPECT_THAT(columnsOf(found), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(timesOf(found), ElementsAre(0, 4096, 4096, 4096));
    EXPECT_EQ(found.counts, EvtCounts());
}

TEST(Evt3Decoder, ReadsTriggersWithFourBitsOfChannelFromBytesWrittenByHand)
{
    const Bytes bytes{
        0x05, 0x80, // time-high
        0x0A, 0x60, // time-low 10
        0x01, 0xA6, // channel 6, rising
        0x14, 0x60, // time-low 20
        0xFE, 0xAF, // channel 15, falling, every unused bit set
        0x06, 0x80, // time-high: 4096 us later
        0x01, 0xA0, // channel 0, rising
    };
    const auto found = decodeEveryWay(EvtEncoding::Evt3, bytes);
    EXPECT_THAT(found.triggers,
                ElementsAre(EventTriggerIn(6, 1, 10), EventTriggerIn(15, 0, 20), EventTriggerIn(0, 1, 4096)));
}

TEST(Evt3Decoder, TriggersNeedNoRowAndDoNotHoldEvents)
{
    const auto found
        = decode3({high3(0), low3(50), trigger3(1, 1), low3(40), row3(3), x3(1, 1), trigger3(1, 0)});
    EXPECT_THAT(found.triggers, ElementsAre(EventTriggerIn(1, 1, 50), EventTriggerIn(1, 0, 50)));
    EXPECT_THAT(timesOf(found), ElementsAre(40));
    EXPECT_EQ(found.counts.clamped, 1u);
}

TEST(Evt3Decoder, KeepsNoTriggersWhereNobodyWantsThem)
{
    const Bytes bytes = words3({high3(0), low3(50), trigger3(1, 1), row3(3), x3(1, 1)});
    std::vector<Event2D> places(EvtDecoder::slack);
    EvtPass pass;
    pass.next = bytes.data();
    pass.end = pass.streamEnd = bytes.data() + bytes.size();
    pass.out = places.data();
    pass.outEnd = places.data() + places.size();
    pass.geometry = vga;
    EvtState state;
    EvtCounts counts;
    EvtDecoder(EvtEncoding::Evt3).decode(state, pass, counts);
    EXPECT_EQ(pass.out - places.data(), 1);
    EXPECT_EQ(state.triggerFloor, 50);
}

TEST(Evt3Decoder, IgnoresTheByteBehindTheLastWholeWordAndDecodesACutTriple)
{
    Bytes bytes = words3({high3(0), row3(1), base3(1, 0), vector12(1), vector12(3), vector8(1)});
    bytes.pop_back();
    EXPECT_THAT(columnsOf(decodeEveryWay(EvtEncoding::Evt3, bytes)), ElementsAre(0, 12, 13));
}

TEST(Evt3Decoder, CountsOnOverAWrapOfTheTimeHighWord)
{
    EXPECT_THAT(timesOf(decode3({high3(4095), row3(0), low3(4095), x3(1, 0), high3(0), x3(1, 0), low3(1),
                                 x3(1, 0), high3(1), x3(1, 0)})),
                ElementsAre(4095, 4096, 4097, 8192));
}

TEST(Evt3Decoder, TakesAStepBackByHalfTheRangeForAWrapAndNoShorterOne)
{
    const auto half = decode3({high3(3000), row3(0), x3(1, 0), high3(952), x3(1, 0)});
    EXPECT_THAT(timesOf(half), ElementsAre(0, 2048 * 4096));
    EXPECT_EQ(half.counts.restarts, 0u);
    const auto less = decode3({high3(3000), row3(0), x3(1, 0), high3(953), x3(1, 0)});
    EXPECT_THAT(timesOf(less), ElementsAre(0, 1));
    EXPECT_EQ(less.counts.restarts, 1u);
}

TEST(Evt3Decoder, AnAllZeroStretchGivesNothing)
{
    std::vector<std::uint16_t> words{high3(0), row3(9), x3(1, 1)};
    words.insert(words.end(), 500, 0);
    words.push_back(x3(1, 2));
    EXPECT_THAT(decode3(words).events, ElementsAre(Event2D(1, 9, 1, 0), Event2D(2, 0, 1, 0)));
}

TEST(Evt2Decoder, AnAllZeroStretchIsOffEventsInTheCorner)
{
    std::vector<std::uint32_t> words{high2(0), cd2(1, 9, 3, 3)};
    words.insert(words.end(), 500, 0);
    const auto found = decode2(words);
    ASSERT_THAT(found.events, SizeIs(501));
    EXPECT_EQ(found.events.back(), Event2D(0, 0, 0, 9));
}

TEST(Evt21Decoder, AnAllZeroStretchGivesNothing)
{
    std::vector<std::uint64_t> words{high21(0), cd21(1, 0, 3, 3, 1)};
    words.insert(words.end(), 500, 0);
    EXPECT_THAT(decode21(words).events, SizeIs(1));
}

} // namespace
