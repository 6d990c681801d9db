#include "camera/simulation/triggerinput.h"
#include "tests/support/recordprinters.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using korvane::EventTriggerIn;
using korvane::simulation::TriggerInput;

std::vector<EventTriggerIn> edges(TriggerInput& input, std::uint64_t until)
{
    const auto found = input.edgesUntil(until);
    return {found.begin(), found.end()};
}

} // namespace

TEST(TriggerInput, IsOffAtFirst)
{
    TriggerInput input(10000);
    bool enabled = true;
    ASSERT_TRUE(input.tool()->getBoolParameter("enable", enabled));
    EXPECT_FALSE(enabled);
    EXPECT_TRUE(edges(input, 1000000).empty());
}

TEST(TriggerInput, GivesBothEdgesOfASquareWaveInTimeOrder)
{
    TriggerInput input(10000);
    ASSERT_TRUE(input.tool()->setBoolParameter("enable", true));
    EXPECT_EQ(edges(input, 16000),
              (std::vector<EventTriggerIn>{{0, 1, 0}, {0, 0, 5000}, {0, 1, 10000}, {0, 0, 15000}}));
    EXPECT_EQ(edges(input, 32000),
              (std::vector<EventTriggerIn>{{0, 1, 20000}, {0, 0, 25000}, {0, 1, 30000}}));
}

TEST(TriggerInput, GivesEveryEdgeOnceHoweverTheTimeIsCut)
{
    TriggerInput whole(700);
    TriggerInput pieces(700);
    ASSERT_TRUE(whole.tool()->setBoolParameter("enable", true));
    ASSERT_TRUE(pieces.tool()->setBoolParameter("enable", true));
    std::vector<EventTriggerIn> gathered;
    for (std::uint64_t until = 0; until <= 5000; until += 50) {
        const auto more = edges(pieces, until);
        gathered.insert(gathered.end(), more.begin(), more.end());
    }
    EXPECT_EQ(gathered, edges(whole, 5000));
    EXPECT_EQ(gathered.size(), 15U);
}

TEST(TriggerInput, BeginsAndEndsWithItsSwitch)
{
    TriggerInput input(10000);
    EXPECT_TRUE(edges(input, 16000).empty());
    ASSERT_TRUE(input.tool()->setBoolParameter("enable", true));
    // What came before it was switched on is gone.
    EXPECT_EQ(edges(input, 32000).front(), EventTriggerIn(0, 1, 20000));
    ASSERT_TRUE(input.tool()->setBoolParameter("enable", false));
    EXPECT_TRUE(edges(input, 64000).empty());
    EXPECT_FALSE(input.tool()->setIntParameter("enable", 1));
}
