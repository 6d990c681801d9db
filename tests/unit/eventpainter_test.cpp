#include "display/kernels/eventpainter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <utility>
#include <vector>

using korvane::Event2D;
using korvane::kernels::EventRateCounter;
using korvane::kernels::PlaneBackground;
using korvane::kernels::PlaneOff;
using korvane::kernels::PlaneOn;

namespace {

constexpr unsigned width = 1280;
constexpr unsigned height = 720;

/// Paints batches and keeps the plane and the count.
struct Painter
{
    explicit Painter(unsigned columns = width, unsigned rows = height)
        : wide(columns), high(rows), plane(std::size_t(columns) * rows, PlaneBackground)
    {
    }
    void paint(const std::vector<Event2D>& events)
    {
        korvane::kernels::paintEvents(events.data(), events.data() + events.size(), plane.data(), wide, high,
                                      rate);
    }
    std::uint8_t at(unsigned x, unsigned y) const { return plane[std::size_t(y) * wide + x]; }
    std::size_t painted() const
    {
        std::size_t count = 0;
        for (const std::uint8_t value : plane)
            count += value != PlaneBackground ? 1u : 0u;
        return count;
    }

    unsigned wide;
    unsigned high;
    std::vector<std::uint8_t> plane;
    EventRateCounter rate;
};

/// So many events a microsecond apart from `first` on, at the origin.
std::vector<Event2D> stream(std::uint64_t first, std::size_t count)
{
    std::vector<Event2D> events;
    for (std::size_t i = 0; i < count; ++i)
        events.emplace_back(std::uint16_t(0), std::uint16_t(0), std::uint8_t(1), first + i);
    return events;
}

} // namespace

TEST(EventPainter, PaintsEachPolarityAtItsPixel)
{
    Painter painter;
    painter.paint({{0, 0, 1, 10}, {1279, 0, 0, 11}, {0, 719, 0, 12}, {1279, 719, 1, 13}, {17, 4, 1, 14}});
    EXPECT_EQ(painter.at(0, 0), PlaneOn);
    EXPECT_EQ(painter.at(1279, 0), PlaneOff);
    EXPECT_EQ(painter.at(0, 719), PlaneOff);
    EXPECT_EQ(painter.at(1279, 719), PlaneOn);
    EXPECT_EQ(painter.at(17, 4), PlaneOn);
    EXPECT_EQ(painter.painted(), 5u);
}

TEST(EventPainter, TakesAnyPolarityButZeroForOn)
{
    Painter painter;
    painter.paint({{1, 0, 2, 0}, {2, 0, 255, 0}, {3, 0, 0, 0}});
    EXPECT_EQ(painter.at(1, 0), PlaneOn);
    EXPECT_EQ(painter.at(2, 0), PlaneOn);
    EXPECT_EQ(painter.at(3, 0), PlaneOff);
}

TEST(EventPainter, TheLastEventAtAPixelWins)
{
    Painter painter;
    painter.paint({{5, 5, 1, 10}, {5, 5, 0, 11}, {6, 5, 0, 10}, {6, 5, 1, 10}});
    EXPECT_EQ(painter.at(5, 5), PlaneOff);
    EXPECT_EQ(painter.at(6, 5), PlaneOn);
    painter.paint({{5, 5, 1, 12}});
    EXPECT_EQ(painter.at(5, 5), PlaneOn);
}

TEST(EventPainter, EventsOutsideAreNeitherPaintedNorCounted)
{
    Painter painter;
    painter.paint(
        {{1280, 0, 1, 10}, {0, 720, 1, 11}, {1280, 720, 0, 12}, {65535, 65535, 1, 13}, {65535, 0, 1, 5}});
    EXPECT_EQ(painter.painted(), 0u);
    EXPECT_EQ(painter.rate.eventsInPeriod, 0u);
    // Nor do they begin a new period.
    painter.paint({{1280, 0, 1, 5'000'000}});
    EXPECT_EQ(painter.rate.periodStart, 0u);
    painter.paint({{1279, 719, 1, 14}});
    EXPECT_EQ(painter.rate.eventsInPeriod, 1u);
}

TEST(EventPainter, CountsTheEventsOfAPeriod)
{
    Painter painter;
    painter.paint(stream(0, 100));
    EXPECT_EQ(painter.rate.periodStart, 0u);
    EXPECT_EQ(painter.rate.eventsInPeriod, 100u);
    painter.paint(stream(1000, 50));
    EXPECT_EQ(painter.rate.eventsInPeriod, 150u);
}

TEST(EventPainter, APeriodEndsWithTheFirstEventMoreThanASecondAfterItsBegin)
{
    Painter painter;
    painter.paint({{0, 0, 1, 1'000'000}});
    EXPECT_EQ(painter.rate.periodStart, 0u);
    EXPECT_EQ(painter.rate.eventsInPeriod, 1u);
    // The event that begins a period is not counted in it.
    painter.paint({{0, 0, 1, 1'000'001}});
    EXPECT_EQ(painter.rate.periodStart, 1'000'001u);
    EXPECT_EQ(painter.rate.eventsInPeriod, 0u);
    painter.paint({{0, 0, 1, 2'000'001}});
    EXPECT_EQ(painter.rate.eventsInPeriod, 1u);
    painter.paint({{0, 0, 1, 2'000'002}});
    EXPECT_EQ(painter.rate.periodStart, 2'000'002u);
    EXPECT_EQ(painter.rate.eventsInPeriod, 0u);
}

TEST(EventPainter, AClockThatStepsBackBeginsAPeriod)
{
    Painter painter;
    painter.paint(stream(5'000'000, 10));
    ASSERT_EQ(painter.rate.periodStart, 5'000'000u);
    painter.paint({{0, 0, 1, 4'999'999}});
    EXPECT_EQ(painter.rate.periodStart, 4'999'999u);
    EXPECT_EQ(painter.rate.eventsInPeriod, 0u);
}

TEST(EventPainter, AnEmptyBatchChangesNothing)
{
    Painter painter;
    painter.paint(stream(0, 3));
    const auto before = painter.plane;
    painter.paint({});
    korvane::kernels::paintEvents(nullptr, nullptr, painter.plane.data(), width, height, painter.rate);
    EXPECT_EQ(painter.plane, before);
    EXPECT_EQ(painter.rate.eventsInPeriod, 3u);
}

TEST(EventPainter, PaintsAnyEventsLikeAMapOfPixels)
{
    std::mt19937 random(20240131);
    for (const auto& [columns, rows] :
         {std::pair{1280u, 720u}, {1u, 1u}, {7u, 3u}, {304u, 240u}, {33u, 65u}}) {
        Painter painter(columns, rows);
        std::map<std::pair<unsigned, unsigned>, bool> expected;
        std::uint64_t inPeriod = 0;
        std::uint64_t begin = 0;
        std::uint64_t time = 0;
        std::uniform_int_distribution<unsigned> anyX(0, columns + columns / 4 + 1);
        std::uniform_int_distribution<unsigned> anyY(0, rows + rows / 4 + 1);
        for (int batch = 0; batch < 20; ++batch) {
            std::vector<Event2D> events;
            for (auto i = random() % 3000; i > 0; --i) {
                time += random() % 500;
                if (random() % 997 == 0)
                    time += 3'000'000;
                events.emplace_back(static_cast<std::uint16_t>(anyX(random)),
                                    static_cast<std::uint16_t>(anyY(random)),
                                    static_cast<std::uint8_t>(random() % 2), time);
            }
            painter.paint(events);
            for (const Event2D& event : events) {
                if (event.x >= columns || event.y >= rows)
                    continue;
                expected[{event.x, event.y}] = event.polarity == 1;
                if (event.timestamp - begin > 1'000'000) {
                    begin = event.timestamp;
                    inPeriod = 0;
                } else {
                    ++inPeriod;
                }
            }
        }
        ASSERT_EQ(painter.painted(), expected.size());
        for (const auto& [pixel, on] : expected)
            ASSERT_EQ(painter.at(pixel.first, pixel.second), on ? PlaneOn : PlaneOff);
        EXPECT_EQ(painter.rate.periodStart, begin);
        EXPECT_EQ(painter.rate.eventsInPeriod, inPeriod);
    }
}

TEST(ColourPlane, HasTheColoursOfTheDvsView)
{
    const std::vector<std::uint8_t> plane{PlaneBackground, PlaneOff, PlaneOn};
    std::vector<korvane::kernels::Rgb32> pixels(3);
    korvane::kernels::colourPlane(plane.data(), plane.size(), korvane::kernels::dvsPalette, pixels.data());
    EXPECT_EQ(pixels, (std::vector<korvane::kernels::Rgb32>{0xFF707070, 0xFF403D33, 0xFFBFBCB4}));
}

// The loop takes many pixels a step: every count up to a few steps has its own remainder.
TEST(ColourPlane, ColoursEveryCountOfPixelsAndNoneBehind)
{
    std::mt19937 random(7);
    const korvane::kernels::EventPalette palette{0xFF010203, 0xFF040506, 0xFF070809};
    const korvane::kernels::Rgb32 untouched = 0x12345678;
    for (std::size_t count = 0; count <= 300; ++count) {
        for (const std::size_t offset : {0u, 1u, 3u}) {
            std::vector<std::uint8_t> plane(offset + count);
            for (auto& value : plane)
                value = static_cast<std::uint8_t>(random() % 3);
            std::vector<korvane::kernels::Rgb32> pixels(offset + count + 64, untouched);
            korvane::kernels::colourPlane(plane.data() + offset, count, palette, pixels.data() + offset);
            for (std::size_t i = 0; i < pixels.size(); ++i) {
                korvane::kernels::Rgb32 expected = untouched;
                if (i >= offset && i < offset + count) {
                    expected = plane[i] == PlaneOn ? 0xFF070809
                        : plane[i] == PlaneOff     ? 0xFF040506
                                                   : 0xFF010203;
                }
                ASSERT_EQ(pixels[i], expected) << count << " pixels, at " << i;
            }
        }
    }
}
