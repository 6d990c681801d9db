#include "camera/recording/eventpictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using korvane::Event2D;
using korvane::recording::EventPictures;
using namespace korvane::kernels;

namespace {

using Plane = std::vector<std::uint8_t>;

constexpr unsigned width = 16;
constexpr unsigned height = 8;
constexpr std::uint64_t period = 33333;

/// Gathers the pictures it is handed.
struct Gathered
{
    EventPictures pictures(std::uint64_t start, std::uint64_t end)
    {
        return {width, height, start, end, [this](const std::uint8_t* plane) {
                    planes.emplace_back(plane, plane + width * height);
                    return planes.size() < most;
                }};
    }
    std::uint8_t at(std::size_t picture, unsigned x, unsigned y) const
    {
        return planes[picture][y * width + x];
    }
    bool isEmpty(std::size_t picture) const
    {
        return std::all_of(planes[picture].begin(), planes[picture].end(),
                           [](std::uint8_t value) { return value == PlaneBackground; });
    }

    std::vector<Plane> planes;
    std::size_t most = 1000000;
};

} // namespace

TEST(EventPictures, CountsThePeriodsOfTheRangeTheLastPartialOneIncluded)
{
    const auto countOf
        = [](std::uint64_t start, std::uint64_t end) { return Gathered().pictures(start, end).count(); };
    EXPECT_EQ(countOf(77, 77), 1u);
    EXPECT_EQ(countOf(0, 33332), 1u);
    EXPECT_EQ(countOf(0, 33333), 2u);
    EXPECT_EQ(countOf(5, 33337), 1u);
    EXPECT_EQ(countOf(5, 33338), 2u);
    EXPECT_EQ(countOf(0, 1000000), 31u);
}

TEST(EventPictures, AnEventBelongsToThePictureWhoseTimeItHas)
{
    constexpr std::uint64_t start = 1234567;
    Gathered gathered;
    auto pictures = gathered.pictures(start, start + 2 * period);
    EXPECT_TRUE(pictures.add(std::vector<Event2D>{{1, 0, 1, start},
                                                  {2, 0, 0, start + period - 1},
                                                  {3, 0, 1, start + period},
                                                  {4, 0, 1, start + 2 * period - 1},
                                                  {5, 0, 0, start + 2 * period}}));
    EXPECT_TRUE(pictures.finish());
    ASSERT_EQ(gathered.planes.size(), 3u);
    EXPECT_EQ(gathered.at(0, 1, 0), PlaneOn);
    EXPECT_EQ(gathered.at(0, 2, 0), PlaneOff);
    EXPECT_EQ(gathered.at(0, 3, 0), PlaneBackground);
    EXPECT_EQ(gathered.at(1, 1, 0), PlaneBackground);
    EXPECT_EQ(gathered.at(1, 3, 0), PlaneOn);
    EXPECT_EQ(gathered.at(1, 4, 0), PlaneOn);
    EXPECT_EQ(gathered.at(2, 4, 0), PlaneBackground);
    EXPECT_EQ(gathered.at(2, 5, 0), PlaneOff);
}

TEST(EventPictures, TheLaterEventAtAPixelWins)
{
    Gathered gathered;
    auto pictures = gathered.pictures(0, 100);
    pictures.add(std::vector<Event2D>{{1, 1, 1, 10}, {1, 1, 0, 10}, {2, 1, 0, 10}});
    pictures.add(std::vector<Event2D>{{2, 1, 1, 11}});
    pictures.finish();
    ASSERT_EQ(gathered.planes.size(), 1u);
    EXPECT_EQ(gathered.at(0, 1, 1), PlaneOff);
    EXPECT_EQ(gathered.at(0, 2, 1), PlaneOn);
}

TEST(EventPictures, IdleStretchesMakeEmptyPictures)
{
    Gathered gathered;
    auto pictures = gathered.pictures(0, 100 * period);
    pictures.add(std::vector<Event2D>{{0, 0, 1, 0}});
    pictures.add(std::vector<Event2D>{{1, 0, 1, 50 * period}});
    pictures.add({});
    pictures.finish();
    ASSERT_EQ(gathered.planes.size(), 101u);
    for (std::size_t i = 0; i < gathered.planes.size(); ++i)
        EXPECT_EQ(gathered.isEmpty(i), i != 0 && i != 50) << i;
}

TEST(EventPictures, EventsOutsideThePictureAreNotDrawn)
{
    Gathered gathered;
    auto pictures = gathered.pictures(0, 0);
    pictures.add(std::vector<Event2D>{{width, 0, 1, 0}, {0, height, 1, 0}});
    pictures.finish();
    ASSERT_EQ(gathered.planes.size(), 1u);
    EXPECT_TRUE(gathered.isEmpty(0));
}

TEST(EventPictures, PiecesOfAnySizeMakeTheSamePictures)
{
    std::mt19937 random(4);
    std::vector<Event2D> events;
    std::uint64_t time = 1000;
    for (int i = 0; i < 20000; ++i) {
        time += random() % 400 == 0 ? random() % 200000 : random() % 30;
        events.emplace_back(static_cast<std::uint16_t>(random() % width),
                            static_cast<std::uint16_t>(random() % height),
                            static_cast<std::uint8_t>(random() % 2), time);
    }
    // Each picture for itself, from all events.
    std::vector<Plane> expected((time - 1000) / period + 1, Plane(width * height, PlaneBackground));
    for (const Event2D& event : events)
        expected[(event.timestamp - 1000) / period][event.y * width + event.x]
            = event.polarity != 0 ? PlaneOn : PlaneOff;
    for (const std::size_t piece : {std::size_t(1), std::size_t(7), std::size_t(1000), events.size()}) {
        Gathered gathered;
        auto pictures = gathered.pictures(1000, time);
        for (std::size_t at = 0; at < events.size(); at += piece)
            ASSERT_TRUE(pictures.add({events.data() + at, std::min(piece, events.size() - at)}));
        ASSERT_TRUE(pictures.finish());
        EXPECT_EQ(gathered.planes, expected) << "pieces of " << piece;
    }
}

TEST(EventPictures, EndWithTheirSink)
{
    Gathered gathered;
    gathered.most = 2;
    auto pictures = gathered.pictures(0, 100 * period);
    EXPECT_TRUE(pictures.add(std::vector<Event2D>{{0, 0, 1, period}}));
    EXPECT_FALSE(pictures.add(std::vector<Event2D>{{0, 0, 1, 2 * period}}));
    EXPECT_FALSE(pictures.finish());
}
