#include "tests/support/decodeall.h"
#include "tests/support/evtwriter.h"
#include "tests/support/recordprinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// What becomes of times that jump or step back. The same rules hold for all encodings; the two kinds of
// time-high words (64 us and 4096 us a step) are both tried.

using namespace korvane;
using namespace korvane::recording;
using namespace evt;
using testing::ElementsAre;

namespace {

constexpr Geometry vga{640, 480};

decoding::Result decode2(const std::vector<std::uint32_t>& words)
{
    return decoding::decodeAll(EvtEncoding::Evt2, InstructionSet::Best, words2(words), vga);
}

/// The first word is a time-high word; a row follows it here, so that tests need not repeat it.
decoding::Result decode3(const std::vector<std::uint16_t>& words)
{
    Bytes bytes;
    for (std::size_t i = 0; i < words.size(); ++i) {
        append(bytes, words[i], 2);
        if (i == 0)
            append(bytes, row3(1), 2);
    }
    return decoding::decodeAll(EvtEncoding::Evt3, InstructionSet::Best, bytes, vga);
}

std::uint32_t at2(unsigned bits)
{
    return cd2(1, bits, 1, 1);
}

const std::uint16_t event3 = x3(1, 1);

std::vector<std::uint64_t> timesOf(const decoding::Result& result)
{
    std::vector<std::uint64_t> times;
    for (const auto& event : result.events)
        times.push_back(event.timestamp);
    return times;
}

std::vector<std::uint64_t> triggerTimesOf(const decoding::Result& result)
{
    std::vector<std::uint64_t> times;
    for (const auto& trigger : result.triggers)
        times.push_back(trigger.timestamp);
    return times;
}

// --- steps back under 10 ms ------------------------------------------------------------------------------

TEST(EvtClock, HoldsEventsUntilTimeHasCaughtUpAfterAShortStepBack)
{
    const auto found = decode2({high2(1000), at2(5), high2(1002), at2(7), high2(1001), at2(9), high2(1002),
                                at2(6), at2(8), high2(1003), at2(0)});
    EXPECT_THAT(timesOf(found), ElementsAre(5, 135, 135, 135, 136, 192));
    EXPECT_EQ(found.counts.clamped, 2u);
    EXPECT_EQ(found.counts.restarts, 0u);
}

TEST(EvtClock, ATimeHighWordRaisesTheFloorOfEventsAndTriggersEvenWithoutAny)
{
    const auto found = decode2(
        {high2(0), high2(10), high2(9), at2(60), trigger2(61, 0, 1), high2(10), at2(1), trigger2(2, 0, 1)});
    EXPECT_THAT(timesOf(found), ElementsAre(640, 641));
    EXPECT_THAT(triggerTimesOf(found), ElementsAre(640, 642));
    EXPECT_EQ(found.counts.clamped, 2u);
}

TEST(EvtClock, EventsAndTriggersAreHeldApart)
{
    const auto found = decode3({high3(0), low3(4000), event3, low3(100), trigger3(0, 1), low3(3000),
                                trigger3(0, 0), event3, low3(2000), trigger3(0, 1), low3(4001), event3});
    EXPECT_THAT(timesOf(found), ElementsAre(4000, 4000, 4001));
    EXPECT_THAT(triggerTimesOf(found), ElementsAre(100, 3000, 3000));
}

TEST(EvtClock, AStepBackOfOneUnitIsAlwaysJitterInEvt3)
{
    // From the very end of one period to the very start of the one before: 8191 us.
    const auto found = decode3(
        {high3(7), high3(8), low3(4095), event3, high3(7), low3(0), event3, high3(8), low3(4095), event3});
    EXPECT_THAT(timesOf(found), ElementsAre(8191, 8191, 8191));
    EXPECT_EQ(found.counts.restarts, 0u);
}

// --- steps back of 10 ms and more --------------------------------------------------------------------

TEST(EvtClock, ALongStepBackRestartsTheClockWhereItHadGotTo)
{
    const auto found = decode2({high2(100000), at2(9), high2(50000), at2(3), high2(50001), at2(0)});
    EXPECT_THAT(timesOf(found), ElementsAre(9, 10 + 3, 10 + 64));
    EXPECT_EQ(found.counts.restarts, 1u);
    EXPECT_EQ(found.counts.clamped, 0u);

    const auto evt3
        = decode3({high3(1000), low3(9), event3, high3(500), low3(3), event3, high3(501), event3});
    EXPECT_THAT(timesOf(evt3), ElementsAre(9, 10 + 3, 10 + 4096));
    EXPECT_EQ(evt3.counts.restarts, 1u);
}

TEST(EvtClock, ARestartGoesOnBehindTheLastTriggerOrTimeWordToo)
{
    EXPECT_THAT(timesOf(decode2({high2(100000), at2(9), trigger2(50, 0, 1), high2(50000), at2(0)})),
                ElementsAre(9, 51));
    EXPECT_THAT(timesOf(decode2({high2(100000), at2(9), high2(100001), high2(50000), at2(0)})),
                ElementsAre(9, 65));
    EXPECT_THAT(timesOf(decode3({high3(1000), event3, low3(77), high3(500), event3})), ElementsAre(0, 78));
}

TEST(EvtClock, TriggersGoOnWithTheRestartedClock)
{
    const auto found
        = decode2({high2(100000), trigger2(9, 0, 1), high2(50000), trigger2(3, 0, 0), high2(50001), at2(0)});
    EXPECT_THAT(triggerTimesOf(found), ElementsAre(9, 13));
    EXPECT_THAT(timesOf(found), ElementsAre(74));
}

TEST(EvtClock, EveryRestartIsCounted)
{
    const auto found = decode2({high2(9000), at2(0), high2(6000), at2(0), high2(3000), at2(0)});
    EXPECT_THAT(timesOf(found), ElementsAre(0, 1, 2));
    EXPECT_EQ(found.counts.restarts, 2u);
}

TEST(EvtClock, TenMillisecondsAreARestartAndOneMicrosecondLessIsJitterInEvt2)
{
    // Got to 12800 us; the step leads to 2752 us, and the events' bits decide: 2800 is 10 ms back.
    const auto before = std::vector<std::uint32_t>{high2(0), high2(100), high2(200), at2(0), high2(43)};
    auto words = before;
    words.push_back(at2(48));
    const auto restart = decode2(words);
    EXPECT_THAT(timesOf(restart), ElementsAre(12800, 12801 + 48));
    EXPECT_EQ(restart.counts.restarts, 1u);

    words.back() = at2(49);
    const auto jitter = decode2(words);
    EXPECT_THAT(timesOf(jitter), ElementsAre(12800, 12800));
    EXPECT_EQ(jitter.counts.restarts, 0u);
    EXPECT_EQ(jitter.counts.clamped, 1u);
}

TEST(EvtClock, ATriggerOrAnEventOutsideDecidesAsWellInEvt2)
{
    const auto before = std::vector<std::uint32_t>{high2(0), high2(100), high2(200), at2(0), high2(43)};
    auto words = before;
    words.insert(words.end(), {trigger2(48, 0, 1), at2(50)});
    EXPECT_EQ(decode2(words).counts.restarts, 1u);
    words = before;
    words.insert(words.end(), {trigger2(49, 0, 1), at2(0)});
    EXPECT_EQ(decode2(words).counts.restarts, 0u);
    words = before;
    words.insert(words.end(), {cd2(1, 48, 700, 1), at2(50)});
    EXPECT_EQ(decode2(words).counts.restarts, 1u);
}

TEST(EvtClock, OnceDecidedAStepStaysWhatItIs)
{
    const auto found
        = decode2({high2(0), high2(100), high2(200), at2(0), high2(43), at2(49), at2(0), at2(50)});
    EXPECT_THAT(timesOf(found), ElementsAre(12800, 12800, 12800, 12800));
    EXPECT_EQ(found.counts.restarts, 0u);
}

TEST(EvtClock, TheNextTimeLowWordDecidesAStepOfTwoUnitsInEvt3)
{
    // Got to 14096 us, stepped to 4096 us: without time-low bits that is 10 ms.
    const auto before
        = std::vector<std::uint16_t>{high3(0), high3(1), high3(2), high3(3), low3(1808), event3, high3(1)};
    auto words = before;
    words.insert(words.end(), {low3(0), event3, low3(10), event3});
    const auto restart = decode3(words);
    EXPECT_THAT(timesOf(restart), ElementsAre(14096, 14097, 14107));
    EXPECT_EQ(restart.counts.restarts, 1u);

    words = before;
    words.insert(words.end(), {low3(1), event3, low3(0), event3});
    const auto jitter = decode3(words);
    EXPECT_THAT(timesOf(jitter), ElementsAre(14096, 14096, 14096));
    EXPECT_EQ(jitter.counts.restarts, 0u);
}

TEST(EvtClock, TheFirstOfManyTimeLowWordsDecidesEvenWhereNoEventIsNear)
{
    // The step stands at every place of the blocks that wide instructions take.
    for (unsigned shift = 0; shift < 32; ++shift) {
        for (const unsigned first : {0u, 1u}) {
            std::vector<std::uint16_t> words(shift + 1, high3(0));
            for (const std::uint16_t word : {high3(1), high3(2), high3(3), low3(1808), event3, high3(1)})
                words.push_back(word);
            for (unsigned i = 0; i < 100; ++i)
                words.push_back(low3(i == 0 ? first : 4000 - i * first));
            words.push_back(event3);
            EXPECT_EQ(decode3(words).counts.restarts, first == 0 ? 1u : 0u) << shift;
        }
    }
}

TEST(EvtClock, AnEventOrATriggerBeforeTheTimeLowWordDecidesWithNoBitsInEvt3)
{
    const auto before
        = std::vector<std::uint16_t>{high3(0), high3(1), high3(2), high3(3), low3(1808), event3, high3(1)};
    for (const std::uint16_t word : {event3, trigger3(0, 1)}) {
        auto words = before;
        words.insert(words.end(), {word, low3(1), event3});
        const auto found = decode3(words);
        EXPECT_EQ(found.counts.restarts, 1u);
        EXPECT_EQ(found.events.back().timestamp, 14098u);
    }
}

TEST(EvtClock, ATimeHighWordDecidesAStepThatNothingElseDid)
{
    const auto found = decode3(
        {high3(0), high3(1), high3(2), high3(3), low3(1808), event3, high3(1), high3(1), high3(2), event3});
    EXPECT_THAT(timesOf(found), ElementsAre(14096, 14097 + 4096));
    EXPECT_EQ(found.counts.restarts, 1u);
}

TEST(EvtClock, ShortStepsThatAddUpAreARestart)
{
    // Each step is under 10 ms, but time is held at what it had got to.
    const auto found
        = decode2({high2(1000), at2(0), high2(900), at2(0), high2(800), at2(0), high2(801), at2(0)});
    EXPECT_THAT(timesOf(found), ElementsAre(0, 0, 1, 65));
    EXPECT_EQ(found.counts.restarts, 1u);
    EXPECT_EQ(found.counts.clamped, 1u);
}

TEST(EvtClock, AFallThatTheNextTimeHighWordTakesBackIsSkipped)
{
    for (const unsigned next : {5000u, 5001u, 5156u}) {
        const auto found = decode2({high2(5000), at2(5), high2(8), at2(6), high2(next), at2(7)});
        EXPECT_THAT(timesOf(found), ElementsAre(5, 6, 64 * (next - 5000) + 7));
        EXPECT_EQ(found.counts.wildTimes, 1u);
        EXPECT_EQ(found.counts.restarts, 0u);
    }
    // Not back where it was: the clock did restart.
    for (const unsigned next : {8u, 9u, 4999u, 5157u})
        EXPECT_EQ(decode2({high2(5000), at2(5), high2(8), at2(6), high2(next), at2(7)}).counts.wildTimes, 0u);
}

TEST(EvtClock, AFallAtTheEndOfAStreamIsARestart)
{
    const auto found = decode2({high2(5000), at2(5), high2(8), at2(6)});
    EXPECT_THAT(timesOf(found), ElementsAre(5, 12));
    EXPECT_EQ(found.counts.restarts, 1u);
}

// --- jumps forward ---------------------------------------------------------------------------------------

TEST(EvtClock, AJumpForwardIsFollowedWhereNothingContradictsIt)
{
    EXPECT_THAT(timesOf(decode2({high2(0), at2(0), high2(1000000), at2(1)})), ElementsAre(0, 64000001));
    EXPECT_THAT(timesOf(decode2({high2(0), at2(0), high2(1000000), at2(1), high2(1000000), at2(2)})),
                ElementsAre(0, 64000001, 64000002));
    EXPECT_THAT(timesOf(decode2({high2(0), at2(0), high2(1000000), at2(1), high2(1000001), at2(2)})),
                ElementsAre(0, 64000001, 64000066));
    EXPECT_THAT(timesOf(decode3({high3(0), event3, high3(4095), event3})), ElementsAre(0, 4095 * 4096));
}

TEST(EvtClock, AJumpForwardThatTheNextTimeHighWordTakesBackIsSkipped)
{
    for (const unsigned next : {100u, 101u, 5099u}) {
        const auto found
            = decode2({high2(100), at2(5), high2(5100), at2(6), trigger2(6, 0, 1), high2(next), at2(7)});
        EXPECT_EQ(found.events[1].timestamp, 6u) << next;
        EXPECT_EQ(found.events[2].timestamp, 64 * (next - 100) + 7) << next;
        EXPECT_THAT(triggerTimesOf(found), ElementsAre(6));
        EXPECT_EQ(found.counts.wildTimes, 1u) << next;
    }
}

TEST(EvtClock, ASkippedTimeHighWordLeavesTimeLowAlone)
{
    const auto found
        = decode3({high3(10), low3(50), event3, high3(700), event3, low3(60), event3, high3(10), event3});
    EXPECT_THAT(timesOf(found), ElementsAre(50, 50, 60, 60));
    EXPECT_EQ(found.counts.wildTimes, 1u);
}

TEST(EvtClock, AWildTimeHighWordInEvt3LeavesNoTrace)
{
    // A step of half the range or more would read as a wrap.
    for (const unsigned wild : {3u, 500u, 2057u, 2058u, 4095u}) {
        const auto found
            = decode3({high3(10), event3, high3(wild), event3, high3(10), event3, high3(11), event3});
        EXPECT_THAT(timesOf(found), ElementsAre(0, 0, 0, 4096)) << wild;
        EXPECT_EQ(found.counts.wildTimes, 1u) << wild;
    }
}

TEST(EvtClock, AJumpOfTenMillisecondsOrLessIsNotQuestioned)
{
    // 156 steps are 9984 us, 157 are 10048.
    const auto followed = decode2({high2(0), at2(0), high2(156), at2(1), high2(1), at2(2)});
    EXPECT_THAT(timesOf(followed), ElementsAre(0, 9985, 9985));
    EXPECT_EQ(followed.counts.wildTimes, 0u);
    const auto skipped = decode2({high2(0), at2(0), high2(157), at2(1), high2(1), at2(2)});
    EXPECT_THAT(timesOf(skipped), ElementsAre(0, 1, 66));
    EXPECT_EQ(skipped.counts.wildTimes, 1u);
    // 2 steps are 8192 us, 3 are 12288.
    EXPECT_EQ(decode3({high3(0), high3(2), high3(1)}).counts.wildTimes, 0u);
    EXPECT_EQ(decode3({high3(0), high3(3), high3(1)}).counts.wildTimes, 1u);
}

TEST(EvtClock, AJumpOverAWrapIsQuestionedLikeAnyOther)
{
    const auto found
        = decode3({high3(4090), event3, high3(1000), event3, high3(4091), event3, high3(0), event3});
    EXPECT_THAT(timesOf(found), ElementsAre(0, 0, 4096, 6 * 4096));
    EXPECT_EQ(found.counts.wildTimes, 1u);
}

TEST(EvtClock, TheFirstTimeHighWordIsNoWrapAndNoJump)
{
    EXPECT_THAT(timesOf(decode3({high3(4095), event3, high3(0), event3})), ElementsAre(0, 4096));
    EXPECT_THAT(timesOf(decode3({high3(0), event3, high3(1), event3})), ElementsAre(0, 4096));
}

TEST(EvtClock, TheSameWildValueTwiceIsBelieved)
{
    const auto found = decode2({high2(0), at2(0), high2(500000), high2(500000), at2(0), high2(1), at2(0)});
    EXPECT_THAT(timesOf(found), ElementsAre(0, 32000000, 32000001));
    EXPECT_EQ(found.counts.restarts, 1u);
}

TEST(EvtClock, ManyWrapsAddUp)
{
    std::vector<std::uint16_t> words{high3(0)};
    for (int wrap = 0; wrap < 5; ++wrap) {
        for (const unsigned high : {1000u, 2000u, 3000u, 4000u, 0u})
            words.push_back(high3(high));
    }
    words.push_back(event3);
    EXPECT_THAT(timesOf(decode3(words)), ElementsAre(5ull << 24));

    std::vector<std::uint32_t> wide{high2(0)};
    for (int wrap = 0; wrap < 5; ++wrap) {
        for (const unsigned high : {0x5000000u, 0xA000000u, 0xF800000u, 0u})
            wide.push_back(high2(high));
    }
    wide.push_back(at2(1));
    EXPECT_THAT(timesOf(decode2(wide)), ElementsAre((5ull << 34) + 1));
}

} // namespace
