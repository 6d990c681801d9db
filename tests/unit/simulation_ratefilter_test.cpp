#include "camera/simulation/random.h"
#include "camera/simulation/ratefilter.h"
#include "tests/support/recordprinters.h"
#include "tests/unit/simulation_filtering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace {

using namespace korvane::simulation;
using namespace korvane::simulation::testing;
using korvane::Event2D;

/// Events by chance at a rate that may change, on 640 x 480 pixels.
std::vector<Event2D> randomEvents(double seconds, const std::function<double(double)>& rateAt,
                                  std::uint64_t start = 0)
{
    Random random(3);
    std::vector<Event2D> events;
    double now = 0;
    for (;;) {
        now += random.exponential() / rateAt(now);
        if (now >= seconds)
            return events;
        events.emplace_back(
            static_cast<std::uint16_t>(random.below(640)), static_cast<std::uint16_t>(random.below(480)),
            static_cast<std::uint8_t>(random.below(2)), start + static_cast<std::uint64_t>(now * 1e6));
    }
}

RateFilter holdingAt(std::uint32_t limit)
{
    RateFilter filter;
    filter.configure({true, limit});
    return filter;
}

TEST(RateFilter, HoldsAnyWindowOfTenMillisecondsWithinFivePercentOfItsLimit)
{
    for (const std::uint64_t start : {std::uint64_t{0}, std::uint64_t{0xFFFF'0000U}}) {
        for (const auto& [limit, rate] : {std::pair{100'000U, 0.3e6},
                                          {500'000U, 0.6e6},
                                          {1'000'000U, 8e6},
                                          {5'000'000U, 6e6},
                                          {3'000'000U, 20e6}}) {
            RateFilter filter = holdingAt(limit);
            const auto events = randomEvents(
                0.2, [steady = rate](double) { return steady; }, start);
            const auto [fewest, most] = ratesOf(filtered(filter, events), start, start + 200'000);
            EXPECT_GE(fewest, 0.95 * limit) << rate;
            EXPECT_LE(most, 1.05 * limit) << rate;
        }
    }
}

TEST(RateFilter, NoBurstAfterSilenceLiftsAWindowAboveItsLimit)
{
    constexpr std::uint32_t limit = 1'000'000;
    RateFilter filter = holdingAt(limit);
    const auto bursts = [](double now) { return std::fmod(now, 0.02) < 0.013 ? 2e3 : 30e6; };
    const auto [fewest, most] = ratesOf(filtered(filter, randomEvents(0.2, bursts)), 0, 200'000);
    EXPECT_LE(most, 1.05 * limit);
    EXPECT_LT(fewest, 0.5 * limit);
}

TEST(RateFilter, AStreamBelowTheLimitPassesWhole)
{
    RateFilter filter = holdingAt(2'000'000);
    const auto events = randomEvents(0.3, [](double) { return 1.5e6; });
    EXPECT_TRUE(filtered(filter, events) == events);
}

TEST(RateFilter, KeepsTheOrderAndAddsNothing)
{
    RateFilter filter = holdingAt(200'000);
    const auto events = randomEvents(0.2, [](double) { return 1e6; });
    const auto left = filtered(filter, events);
    std::size_t next = 0;
    for (const Event2D& event : left) {
        while (next < events.size() && !(events[next] == event))
            ++next;
        ASSERT_LT(next, events.size());
        ++next;
    }
}

TEST(RateFilter, NoPixelLosesMoreThanAnother)
{
    // Every microsecond the same pixels fire in the order of a sensor; a filter that lets the first ones of
    // each moment pass, or counts through with a fixed step, would favour some of them.
    constexpr std::uint16_t pixels = 8;
    std::vector<Event2D> events;
    for (std::uint64_t now = 0; now < 200'000; ++now) {
        for (std::uint16_t y = 0; y < pixels; ++y)
            events.emplace_back(std::uint16_t{5}, y, std::uint8_t{1}, now);
    }
    for (const std::uint32_t limit : {1'000'000U, 2'000'000U, 3'300'000U}) {
        RateFilter filter = holdingAt(limit);
        std::vector<double> share(pixels);
        for (const Event2D& event : filtered(filter, events))
            share[event.y] += 1.0 / 200'000;
        const double even = limit / 8e6;
        for (const double of : share)
            EXPECT_NEAR(of, even, 0.1 * even) << limit;
    }
}

TEST(RateFilter, WhatPassesIsSpreadOverTime)
{
    RateFilter filter = holdingAt(1'000'000);
    auto left = randomEvents(0.2, [](double) { return 10e6; });
    left.resize(filter.filter(left.data(), left.size()));
    std::uint64_t longestGap = 0;
    for (std::size_t i = 1; i < left.size(); ++i)
        longestGap = std::max(longestGap, left[i].timestamp - left[i - 1].timestamp);
    EXPECT_LE(longestGap, 20U);
}

TEST(RateFilter, ANewLimitHoldsFromThenOnAndSwitchedOnAgainItBeginsAnew)
{
    RateFilter filter = holdingAt(4'000'000);
    auto events = randomEvents(0.1, [](double) { return 8e6; });
    filtered(filter, events);
    filter.configure({true, 400'000});
    for (Event2D& event : events)
        event.timestamp += 100'000;
    EXPECT_NEAR(static_cast<double>(filtered(filter, events).size()), 40'000, 2'000);

    // Its clock may have gone on, or back, meanwhile.
    filter.configure({false, 400'000});
    filter.configure({true, 400'000});
    for (Event2D& event : events)
        event.timestamp -= 100'000;
    EXPECT_NEAR(static_cast<double>(filtered(filter, events).size()), 40'000, 2'000);
}

TEST(RateFilter, CountsWhatItDropsSecondBySecond)
{
    std::vector<RateFilter::Count> counts;
    RateFilter filter([&counts](const RateFilter::Count& count) { counts.push_back(count); });
    filter.configure({true, 100'000});
    // Nothing is dropped in the second and third second, and the fourth is not over.
    const auto rate = [](double now) { return now < 1.0 || now > 3.0 ? 300e3 : 10e3; };
    const auto events = randomEvents(3.5, rate);
    const auto left = filtered(filter, events);
    const auto in = [](const std::vector<Event2D>& all, std::uint64_t from, std::uint64_t to) {
        return static_cast<std::uint64_t>(std::count_if(all.begin(), all.end(), [=](const Event2D& event) {
            return event.timestamp >= from && event.timestamp < to;
        }));
    };
    ASSERT_EQ(counts.size(), 1U);
    EXPECT_EQ(counts[0].passed, in(left, 0, 1'000'000));
    EXPECT_EQ(counts[0].passed + counts[0].dropped, in(events, 0, 1'000'000));
    EXPECT_NEAR(static_cast<double>(counts[0].dropped), 200e3, 6e3);
    filter.configure({false, 100'000});
    ASSERT_EQ(counts.size(), 2U);
    EXPECT_EQ(counts[1].passed + counts[1].dropped, in(events, 3'000'000, 4'000'000));
}

TEST(RateFilter, TheEndOfTimeIsReached)
{
    RateFilter filter = holdingAt(1'000'000);
    std::vector<Event2D> events(1000, Event2D(1, 1, 1, ~std::uint64_t{0}));
    EXPECT_LE(filter.filter(events.data(), events.size()), 60U);
    EXPECT_EQ(filter.filter(nullptr, 0), 0U);
}

} // namespace
