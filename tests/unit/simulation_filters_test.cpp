#include "camera/simulation/flickerfilter.h"
#include "camera/simulation/random.h"
#include "camera/simulation/regionfilter.h"
#include "camera/simulation/trailfilter.h"
#include "tests/support/recordprinters.h"
#include "tests/unit/simulation_filtering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace {

using namespace korvane::simulation;
using namespace korvane::simulation::testing;
using korvane::Event2D;

using Pixel = std::pair<int, int>;

Pixel pixelOf(const Event2D& event)
{
    return {event.x, event.y};
}

// The plain forms of the filters: 64-bit times, a map, one rule after the other.

class PlainTrailFilter
{
public:
    PlainTrailFilter(TrailFilter::Mode chosen, std::uint64_t thresholdUs)
        : mode(chosen), threshold(thresholdUs)
    {
    }

    bool passes(const Event2D& event)
    {
        auto& burst = bursts[pixelOf(event)];
        const bool follows = burst.length > 0 && burst.last.polarity == event.polarity
            && event.timestamp - burst.last.timestamp <= threshold;
        burst.length = follows ? burst.length + 1 : 1;
        burst.last = event;
        if (mode == TrailFilter::Mode::Trail)
            return burst.length == 1;
        return mode == TrailFilter::Mode::Stc ? burst.length >= 2 : burst.length == 2;
    }

private:
    struct Burst
    {
        int length = 0;
        Event2D last;
    };
    TrailFilter::Mode mode;
    std::uint64_t threshold;
    std::map<Pixel, Burst> bursts;
};

class PlainFlickerFilter
{
public:
    PlainFlickerFilter(std::uint64_t shortestTicks, std::uint64_t longestTicks)
        : shortest(shortestTicks), longest(longestTicks)
    {
    }

    bool flickers(Event2D event)
    {
        event.timestamp >>= FlickerFilter::tickShift;
        History& history = histories[pixelOf(event)];
        const bool rises = event.polarity == 1 && history.polarity == 0;
        history.polarity = event.polarity;
        const bool current = history.rise && event.timestamp - *history.rise <= 2 * longest;
        if (rises)
            judge(history, event.timestamp, current);
        return history.score >= 3 && current;
    }

private:
    struct History
    {
        int polarity = 0;
        std::optional<std::uint64_t> rise;
        std::optional<std::uint64_t> period;
        int score = 0;
    };

    void judge(History& history, std::uint64_t now, bool current) const
    {
        std::optional<std::uint64_t> period;
        if (history.rise && now - *history.rise >= shortest && now - *history.rise <= longest)
            period = now - *history.rise;
        const auto distance = [](std::uint64_t a, std::uint64_t b) { return a > b ? a - b : b - a; };
        const bool fits
            = period && history.period && distance(*period, *history.period) < *history.period / 4;
        if (fits)
            history.score = std::min(history.score + 1, 7);
        else
            history.score = current ? std::max(history.score - 2, 0) : 0;
        history.rise = now;
        history.period = period;
    }

    std::uint64_t shortest;
    std::uint64_t longest;
    std::map<Pixel, History> histories;
};

/// Events on a few pixels, some periodic, some not. `unrest` is how often they are disturbed; some of that
/// are silences beyond what 30 and 32 bits count.
std::vector<Event2D> restlessPixels(std::uint64_t start, std::size_t count, double meanGap, double unrest)
{
    Random random(count);
    std::vector<Event2D> events;
    std::uint64_t now = start;
    while (events.size() < count) {
        const double kind = random.uniform();
        if (kind < 0.1 * unrest)
            now += static_cast<std::uint64_t>(random.uniform(0, 1.0) * 0x1.4p32);
        else if (kind < 0.2 * unrest)
            now += static_cast<std::uint64_t>(random.uniform(0, 0x1p31));
        else if (kind < unrest)
            now += static_cast<std::uint64_t>(random.uniform(0, 300'000));
        else
            now += static_cast<std::uint64_t>(random.exponential() * meanGap);
        const auto x = static_cast<std::uint16_t>(random.below(4));
        const auto y = static_cast<std::uint16_t>(random.below(3));
        // Two of three pixels see a light of 90 to 400 Hz, now and then disturbed.
        const double frequency = 90.0 + 30.0 * (x + 4 * y);
        const bool lit = (x + y) % 3 != 0 && !random.chance(unrest);
        const double phase = static_cast<double>(now - start) * 1e-6 * frequency;
        const bool bright
            = lit ? phase - static_cast<double>(static_cast<std::uint64_t>(phase)) < 0.5 : random.chance(0.5);
        events.emplace_back(x, y, bright ? std::uint8_t{1} : std::uint8_t{0}, now);
    }
    return events;
}

constexpr std::uint64_t starts[] = {0, 5, 0xFFFF'F000U, 0x1'0000'0000U, 0x7FFF'FFFF'FFFF'0000U};

TEST(RegionFilter, PassesWhatLiesInsideOrOutsideInItsOrder)
{
    Random random(4);
    std::vector<Event2D> events;
    for (std::uint64_t i = 0; i < 50'000; ++i) {
        events.emplace_back(static_cast<std::uint16_t>(random.below(1280)),
                            static_cast<std::uint16_t>(random.below(720)),
                            static_cast<std::uint8_t>(random.below(2)), i);
    }
    for (const Region& region : {Region{0, 0, 1280, 720}, Region{100, 50, 300, 200}, Region{1279, 719, 1, 1},
                                 Region{0, 0, 1, 720}}) {
        for (const bool outside : {false, true}) {
            RegionFilter filter;
            filter.configure({true, outside, region});
            std::vector<Event2D> expected;
            std::copy_if(events.begin(), events.end(), std::back_inserter(expected), [&](const Event2D& e) {
                const bool inside = e.x >= region.x && e.x < region.x + region.width && e.y >= region.y
                    && e.y < region.y + region.height;
                return inside != outside;
            });
            EXPECT_TRUE(filtered(filter, events) == expected);
        }
    }
}

TEST(RegionFilter, AnEmptyBatchStaysEmpty)
{
    RegionFilter filter;
    filter.configure({true, false, {0, 0, 10, 10}});
    EXPECT_EQ(filter.filter(nullptr, 0), 0U);
}

TEST(TrailFilter, DoesWhatItsPlainFormDoesWhateverTheClockShows)
{
    using Mode = TrailFilter::Mode;
    for (const Mode mode : {Mode::Trail, Mode::Stc, Mode::StcWithoutTrail}) {
        for (const std::uint32_t threshold : {1U, 3000U, 100'000U, TrailFilter::longestThreshold}) {
            for (const std::uint64_t start : starts) {
                const std::vector<Event2D> events = restlessPixels(start, 6000, 400, 0.02);
                TrailFilter filter(4, 3);
                filter.configure({true, mode, threshold});
                PlainTrailFilter plain(mode, threshold);
                std::vector<Event2D> expected;
                std::copy_if(events.begin(), events.end(), std::back_inserter(expected),
                             [&plain](const Event2D& event) { return plain.passes(event); });
                ASSERT_TRUE(filtered(filter, events) == expected) << "from " << start;
            }
        }
    }
}

std::vector<Event2D> afterFiltering(TrailFilter::Mode mode, std::vector<Event2D> events)
{
    TrailFilter filter(8, 8);
    filter.configure({true, mode, 1000});
    events.resize(filter.filter(events.data(), events.size()));
    return events;
}

TEST(TrailFilter, EachModeKeepsItsPartOfABurst)
{
    const Event2D first(3, 3, 1, 10'000);
    const Event2D second(3, 3, 1, 10'400);
    const Event2D third(3, 3, 1, 11'400); // exactly the threshold after the second
    const Event2D elsewhere(4, 3, 1, 11'450);
    const Event2D turned(3, 3, 0, 11'500);
    const Event2D late(3, 3, 0, 12'501); // just beyond the threshold
    const std::vector<Event2D> events{first, second, third, elsewhere, turned, late};
    using Events = std::vector<Event2D>;
    EXPECT_EQ(afterFiltering(TrailFilter::Mode::Trail, events), (Events{first, elsewhere, turned, late}));
    EXPECT_EQ(afterFiltering(TrailFilter::Mode::Stc, events), (Events{second, third}));
    EXPECT_EQ(afterFiltering(TrailFilter::Mode::StcWithoutTrail, events), (Events{second}));
}

TEST(TrailFilter, TheFirstEventOfAPixelFollowsNoneEvenAtTimeZero)
{
    const std::vector<Event2D> events{{0, 0, 0, 0}, {1, 0, 1, 0}, {0, 0, 0, 1}};
    EXPECT_EQ(afterFiltering(TrailFilter::Mode::Trail, events), (std::vector<Event2D>{events[0], events[1]}));
}

TEST(TrailFilter, WhatLiesOutsideTheSensorPassesAndHarmsNothing)
{
    const std::vector<Event2D> events{{8, 0, 1, 10}, {0, 8, 1, 11}, {65535, 65535, 0, 12}, {8, 0, 1, 13}};
    for (const auto mode : {TrailFilter::Mode::Trail, TrailFilter::Mode::Stc})
        EXPECT_EQ(afterFiltering(mode, events), events);
}

TEST(TrailFilter, SwitchedOnAgainItHasForgottenWhatItSaw)
{
    TrailFilter filter(8, 8);
    filter.configure({true, TrailFilter::Mode::Trail, 1000});
    Event2D event(1, 1, 1, 500);
    EXPECT_EQ(filter.filter(&event, 1), 1U);
    filter.configure({true, TrailFilter::Mode::Trail, 900});
    EXPECT_EQ(filter.filter(&event, 1), 0U);
    filter.configure({false, TrailFilter::Mode::Trail, 900});
    filter.configure({true, TrailFilter::Mode::Trail, 900});
    EXPECT_EQ(filter.filter(&event, 1), 1U);
}

TEST(TrailFilter, AClockThatGoesBackBeginsAnew)
{
    std::vector<Event2D> events{{1, 1, 1, 5'000'000'000U}, {1, 1, 1, 100}, {1, 1, 1, 200}};
    EXPECT_EQ(afterFiltering(TrailFilter::Mode::Trail, events), (std::vector<Event2D>{events[0], events[1]}));
}

TEST(FlickerFilter, DoesWhatItsPlainFormDoesWhateverTheClockShows)
{
    using Mode = FlickerFilter::Mode;
    constexpr float tickUs = 1U << FlickerFilter::tickShift;
    for (const auto& [low, high] : {std::pair{50.0F, 500.0F}, {100.0F, 200.0F}, {10.0F, 1000.0F}}) {
        for (const std::uint64_t start : starts) {
            const std::vector<Event2D> events = restlessPixels(start, 60'000, 20, 0.0005);
            PlainFlickerFilter plain(static_cast<std::uint64_t>(std::floor(1e6F / high / tickUs)),
                                     static_cast<std::uint64_t>(std::ceil(1e6F / low / tickUs)));
            std::vector<Event2D> motion;
            std::vector<Event2D> flicker;
            for (const Event2D& event : events)
                (plain.flickers(event) ? flicker : motion).push_back(event);
            ASSERT_GT(flicker.size(), 300U);
            ASSERT_GT(motion.size(), 3000U);
            FlickerFilter stop(4, 3);
            stop.configure({true, Mode::BandStop, low, high});
            ASSERT_TRUE(filtered(stop, events) == motion) << "from " << start;
            FlickerFilter pass(4, 3);
            pass.configure({true, Mode::BandPass, low, high});
            ASSERT_TRUE(filtered(pass, events) == flicker) << "from " << start;
        }
    }
}

/// Two ON and two OFF events a period on pixel (1, 1).
std::vector<Event2D> lampEvents(double frequency, double seconds)
{
    std::vector<Event2D> events;
    for (double time = 0; time < seconds; time += 1.0 / frequency) {
        for (const auto& [phase, polarity] : {std::pair{0.1, 1}, {0.3, 1}, {0.6, 0}, {0.8, 0}}) {
            events.emplace_back(std::uint16_t{1}, std::uint16_t{1}, static_cast<std::uint8_t>(polarity),
                                static_cast<std::uint64_t>((time + phase / frequency) * 1e6));
        }
    }
    return events;
}

TEST(FlickerFilter, RemovesALightInsideItsBandWithinAFewPeriods)
{
    for (const double frequency : {51.0, 100.0, 120.0, 490.0}) {
        FlickerFilter filter(4, 4);
        filter.configure({true, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
        const std::vector<Event2D> events = lampEvents(frequency, 1.0);
        const std::vector<Event2D> left = filtered(filter, events);
        EXPECT_LE(left.size(), 20U) << frequency;
        EXPECT_LT(left.back().timestamp, static_cast<std::uint64_t>(5e6 / frequency)) << frequency;
    }
}

TEST(FlickerFilter, BothEndsBelongToItsBand)
{
    for (const float frequency : {50.0F, 60.0F, 100.0F, 117.0F, 333.0F}) {
        FlickerFilter filter(4, 4);
        filter.configure({true, FlickerFilter::Mode::BandStop, frequency, frequency});
        EXPECT_LE(filtered(filter, lampEvents(frequency, 1.0)).size(), 20U) << frequency;
    }
}

TEST(FlickerFilter, LeavesALightOutsideItsBand)
{
    for (const double frequency : {20.0, 45.0, 550.0, 900.0}) {
        FlickerFilter filter(4, 4);
        filter.configure({true, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
        const std::vector<Event2D> events = lampEvents(frequency, 1.0);
        EXPECT_TRUE(filtered(filter, events) == events) << frequency;
    }
}

TEST(FlickerFilter, WhatMovesWhereALampWentOutPasses)
{
    FlickerFilter filter(4, 4);
    filter.configure({true, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
    std::vector<Event2D> events = lampEvents(100.0, 0.5);
    filtered(filter, events);
    std::vector<Event2D> motion{{1, 1, 0, 560'000}, {1, 1, 0, 561'000}, {1, 1, 1, 640'000}};
    EXPECT_EQ(filter.filter(motion.data(), motion.size()), 3U);
}

TEST(FlickerFilter, WhatLiesOutsideTheSensorIsMotionAndHarmsNothing)
{
    std::vector<Event2D> events = lampEvents(100.0, 0.5);
    for (Event2D& event : events)
        event.x = 40'000;
    FlickerFilter filter(4, 4);
    filter.configure({true, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
    EXPECT_TRUE(filtered(filter, events) == events);
}

TEST(FlickerFilter, SwitchedOnAgainItHasForgottenWhatItSaw)
{
    FlickerFilter filter(4, 4);
    filter.configure({true, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
    std::vector<Event2D> events = lampEvents(100.0, 0.5);
    Event2D next(1, 1, 1, 501'000);
    filtered(filter, events);
    EXPECT_EQ(filter.filter(&next, 1), 0U);
    filter.configure({false, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
    filter.configure({true, FlickerFilter::Mode::BandStop, 50.0F, 500.0F});
    EXPECT_EQ(filter.filter(&next, 1), 1U);
}

} // namespace
