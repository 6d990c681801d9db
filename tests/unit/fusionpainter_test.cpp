#include "display/kernels/fusionpainter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

using korvane::Event2D;

namespace {

constexpr int width = 1280;
constexpr int height = 720;
constexpr std::size_t pixels = std::size_t{width} * height;

using Colour = std::array<std::uint8_t, 3>;
constexpr Colour red{0, 0, 255}; // blue, green, red
constexpr Colour blue{255, 0, 0};
constexpr Colour grey{90, 91, 92};

/// A picture of 1280 x 720 pixels in grey, its rows padded.
struct Picture
{
    Picture() : bytes(stride * height)
    {
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
                std::copy(grey.begin(), grey.end(), bytes.begin() + std::ptrdiff_t(y * stride + x * 3));
    }
    korvane::kernels::BgrPicture view() { return {bytes.data(), stride, width, height}; }
    Colour at(std::size_t x, std::size_t y) const
    {
        const std::uint8_t* const pixel = bytes.data() + y * stride + x * 3;
        return {pixel[0], pixel[1], pixel[2]};
    }
    std::size_t painted() const
    {
        std::size_t count = 0;
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
                count += at(x, y) != grey ? 1U : 0U;
        return count;
    }

    static constexpr std::size_t stride = std::size_t{width} * 3 + 8;
    std::vector<std::uint8_t> bytes;
};

std::vector<std::uint16_t> countsOf(const std::vector<Event2D>& events)
{
    std::vector<std::uint16_t> counts(pixels * 2);
    korvane::kernels::countEvents(events.data(), events.data() + events.size(), counts, width);
    return counts;
}

std::size_t counted(const std::vector<std::uint16_t>& counts)
{
    std::size_t sum = 0;
    for (const std::uint16_t count : counts)
        sum += count;
    return sum;
}

Event2D event(int x, int y, int polarity)
{
    return {static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y), static_cast<std::uint8_t>(polarity),
            0};
}

std::vector<Event2D> randomEvents(std::size_t count)
{
    std::mt19937 random(11);
    std::vector<Event2D> events;
    for (std::size_t i = 0; i < count; ++i)
        events.push_back(event(int(random() % 1400), int(random() % 800), int(random() % 3)));
    return events;
}

} // namespace

TEST(FusionPainter, AnEventCountsAtItsMirroredColumnAndPolarity)
{
    const auto counts = countsOf({event(1000, 3, 1), event(1000, 3, 0), event(1000, 3, 0)});
    const std::size_t pixel = std::size_t{3} * width + (width - 1000);
    EXPECT_EQ(counts[2 * pixel], 2);
    EXPECT_EQ(counts[2 * pixel + 1], 1);
    EXPECT_EQ(counted(counts), 3U);
}

TEST(FusionPainter, ColumnZeroCountsAtTheFirstColumnOfTheNextRowAndIsDroppedInTheLast)
{
    EXPECT_EQ(countsOf({event(0, 0, 0)})[std::size_t{2} * width], 1);
    EXPECT_EQ(counted(countsOf({event(0, 719, 0), event(0, 719, 1)})), 0U);
}

TEST(FusionPainter, ACounterStopsAtTen)
{
    const std::vector<Event2D> events(14, event(640, 100, 1));
    const auto counts = countsOf(events);
    EXPECT_EQ(counts[2 * (std::size_t{100} * width + 640) + 1], 10);
    EXPECT_EQ(counted(counts), 10U);
}

TEST(FusionPainter, EventsBeyondTheCountersAreDropped)
{
    EXPECT_EQ(counted(countsOf({event(65535, 0, 0), event(5, 65535, 1), event(1279, 720, 1)})), 0U);
}

TEST(FusionPainter, TiesGoToPolarityOneAndMoreOfPolarityZeroIsBlue)
{
    std::vector<std::uint16_t> counts(pixels * 2);
    const auto set = [&counts](std::size_t x, std::uint16_t off, std::uint16_t on) {
        counts[2 * x] = off;
        counts[2 * x + 1] = on;
    };
    set(1, 3, 3);
    set(2, 4, 3);
    set(3, 0, 1);
    set(4, 1, 0);
    set(5, 1, 2);
    Picture picture;
    korvane::kernels::paintCounts(counts, picture.view());
    EXPECT_EQ(picture.at(0, 0), grey);
    EXPECT_EQ(picture.at(1, 0), red);
    EXPECT_EQ(picture.at(2, 0), blue);
    EXPECT_EQ(picture.at(3, 0), red);
    EXPECT_EQ(picture.at(4, 0), blue);
    EXPECT_EQ(picture.at(5, 0), red);
    EXPECT_EQ(picture.painted(), 5U);
}

TEST(FusionPainter, CountingAndPaintingRandomEventsEqualsThePlainRule)
{
    const auto events = randomEvents(400'000);
    std::vector<int> plain(pixels * 2);
    for (const Event2D& one : events) {
        const int index = one.polarity + 2 * (width * one.y + (width - one.x));
        if (index >= 0 && index < int(plain.size()) && plain[std::size_t(index)] < 10)
            ++plain[std::size_t(index)];
    }
    const auto counts = countsOf(events);
    EXPECT_TRUE(std::equal(counts.begin(), counts.end(), plain.begin(), plain.end()));
    Picture picture;
    korvane::kernels::paintCounts(counts, picture.view());
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const int off = plain[2 * (y * width + x)];
            const int on = plain[2 * (y * width + x) + 1];
            const Colour expected = off == 0 && on == 0 ? grey : (on == 0 || on < off ? blue : red);
            ASSERT_EQ(picture.at(x, y), expected) << x << ", " << y;
        }
    }
}

TEST(FusionPainter, EventsArePaintedMirroredAndOnlyInside)
{
    Picture picture;
    const std::vector<Event2D> events{event(1279, 5, 1), event(1, 6, 0),    event(0, 7, 1),
                                      event(10, 720, 1), event(1281, 8, 1), event(65535, 9, 1)};
    korvane::kernels::paintMirrored(events.data(), events.data() + events.size(), picture.view());
    EXPECT_EQ(picture.at(1, 5), red);
    EXPECT_EQ(picture.at(1279, 6), blue);
    EXPECT_EQ(picture.painted(), 2U);
}

TEST(FusionPainter, PaintingRandomEventsEqualsThePlainRule)
{
    const auto events = randomEvents(50'000);
    Picture picture;
    korvane::kernels::paintMirrored(events.data(), events.data() + events.size(), picture.view());
    Picture expected;
    for (const Event2D& event : events) {
        const int column = width - event.x;
        if (column < 0 || column >= width || event.y >= height)
            continue;
        const Colour& colour = event.polarity == 1 ? red : blue;
        std::copy(colour.begin(), colour.end(),
                  expected.bytes.begin()
                      + std::ptrdiff_t(event.y * Picture::stride + std::size_t(column) * 3));
    }
    EXPECT_TRUE(picture.bytes == expected.bytes);
}

TEST(FusionPainter, OnlyPolarityOneIsRedAndTheLaterEventIsSeen)
{
    Picture picture;
    const std::vector<Event2D> events{event(700, 5, 2), event(701, 5, 0), event(702, 5, 1), event(703, 5, 0),
                                      event(703, 5, 1)};
    korvane::kernels::paintMirrored(events.data(), events.data() + events.size(), picture.view());
    EXPECT_EQ(picture.at(580, 5), blue);
    EXPECT_EQ(picture.at(579, 5), blue);
    EXPECT_EQ(picture.at(578, 5), red);
    EXPECT_EQ(picture.at(577, 5), red);
}
