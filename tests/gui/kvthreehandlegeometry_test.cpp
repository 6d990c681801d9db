#include "widgets/saturate.h"
#include "widgets/threehandlegeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

/// 412 pixels long: the side track is 400, the one of mode 3's handles 380, the one of the lone playhead 386.
ThreeHandleGeometry geometryOf(int mode, int lower, int center, int upper)
{
    ThreeHandleGeometry geometry;
    geometry.minimum = 0;
    geometry.span = 1000;
    geometry.lower = lower;
    geometry.center = center;
    geometry.upper = upper;
    geometry.mode = mode;
    geometry.length = 412;
    geometry.breadth = 30;
    return geometry;
}

} // namespace

TEST(ThreeHandleGeometry, PlacesThePlayheadAloneBetweenItsInsets)
{
    EXPECT_EQ(geometryOf(1, 0, 0, 1000).centerHandle(), QRect(3, 5, 20, 20));
    EXPECT_EQ(geometryOf(1, 0, 500, 1000).centerHandle(), QRect(196, 5, 20, 20));
    EXPECT_EQ(geometryOf(1, 0, 1000, 1000).centerHandle(), QRect(389, 5, 20, 20));
}

TEST(ThreeHandleGeometry, PlacesHiddenSideHandlesAtTheTrackEnds)
{
    const ThreeHandleGeometry geometry = geometryOf(1, 0, 500, 1000);
    EXPECT_EQ(geometry.lowerHandle(), QRect(0, 1, 6, 27));
    EXPECT_EQ(geometry.upperHandle(), QRect(406, 1, 6, 27));
}

TEST(ThreeHandleGeometry, PlacesAllThreeHandlesInModeThree)
{
    const ThreeHandleGeometry geometry = geometryOf(3, 250, 500, 750);
    EXPECT_EQ(geometry.lowerHandle(), QRect(95, 1, 6, 27));
    EXPECT_EQ(geometry.centerHandle(), QRect(196, 5, 20, 20));
    EXPECT_EQ(geometry.upperHandle(), QRect(311, 1, 6, 27));
}

TEST(ThreeHandleGeometry, PutsHandlesOfEqualValuesSideBySide)
{
    for (const int value : {0, 300, 1000}) {
        const ThreeHandleGeometry geometry = geometryOf(3, value, value, value);
        EXPECT_EQ(geometry.lowerHandle().right() + 1, geometry.centerHandle().left()) << value;
        EXPECT_EQ(geometry.centerHandle().right() + 1, geometry.upperHandle().left()) << value;
    }
    EXPECT_EQ(geometryOf(3, 0, 0, 0).lowerHandle().left(), 0);
    EXPECT_EQ(geometryOf(3, 0, 1000, 1000).upperHandle().right(), 411);
}

TEST(ThreeHandleGeometry, TruncatesPositions)
{
    EXPECT_EQ(geometryOf(1, 0, 1, 1000).centerPosition(), 3) << "3.386";
    EXPECT_EQ(geometryOf(1, 0, 5, 1000).centerPosition(), 4) << "4.93";
    EXPECT_EQ(geometryOf(3, 999, 0, 1000).lowerPosition(), 379) << "379.62";
    EXPECT_EQ(geometryOf(3, 0, 0, 999).upperPosition(), 405) << "405.62";
}

TEST(ThreeHandleGeometry, FillsTheGrooveOrWhatLiesBetweenTheSideHandles)
{
    const ThreeHandleGeometry alone = geometryOf(1, 250, 500, 750);
    EXPECT_EQ(alone.groove(), QRect(0, 10, 412, 10));
    EXPECT_EQ(alone.range(), alone.groove());
    const ThreeHandleGeometry all = geometryOf(3, 250, 500, 750);
    EXPECT_EQ(all.groove(), QRect(0, 10, 412, 10));
    EXPECT_EQ(all.range(), QRect(101, 10, 210, 10));
}

TEST(ThreeHandleGeometry, OnlyModeThreeItselfLaysOutThreeHandles)
{
    // Seven has both low bits too, but is laid out like a lone playhead.
    EXPECT_EQ(geometryOf(7, 250, 500, 750).centerHandle(), geometryOf(1, 250, 500, 750).centerHandle());
    EXPECT_EQ(geometryOf(2, 250, 500, 750).lowerHandle(), geometryOf(1, 250, 500, 750).lowerHandle());
}

TEST(ThreeHandleGeometry, LaysOutVertically)
{
    ThreeHandleGeometry geometry = geometryOf(3, 250, 500, 750);
    geometry.horizontal = false;
    EXPECT_EQ(geometry.groove(), QRect(10, 0, 10, 412));
    EXPECT_EQ(geometry.lowerHandle(), QRect(1, 95, 27, 6));
    EXPECT_EQ(geometry.centerHandle(), QRect(5, 196, 20, 20));
    EXPECT_EQ(geometry.upperHandle(), QRect(1, 311, 27, 6));
}

TEST(ThreeHandleGeometry, FindsTheValueUnderAPosition)
{
    const ThreeHandleGeometry shown = geometryOf(1, 0, 0, 1000);
    EXPECT_EQ(shown.valueAt(13), 0);
    EXPECT_EQ(shown.valueAt(213), 500);
    EXPECT_EQ(shown.valueAt(214), 502) << "502.5";
    EXPECT_EQ(shown.valueAt(413), 1000);
    EXPECT_EQ(shown.valueAt(0), -32) << "-32.5";
    EXPECT_EQ(geometryOf(2, 0, 0, 1000).valueAt(200), 500) << "no playhead, no margin";
}

TEST(ThreeHandleGeometry, CountsValuesFromTheMinimum)
{
    ThreeHandleGeometry geometry = geometryOf(1, 5000, 5500, 6000);
    geometry.minimum = 5000;
    EXPECT_EQ(geometry.valueAt(213), 5500);
    EXPECT_EQ(geometry.centerPosition(), 196);
    EXPECT_EQ(geometry.upperPosition(), 406);
}

TEST(ThreeHandleGeometry, KnowsTheTrackOfEveryMode)
{
    const ThreeHandleGeometry geometry = geometryOf(1, 0, 0, 0);
    EXPECT_EQ(geometry.trackLength(1), 386);
    EXPECT_EQ(geometry.trackLength(3), 400);
    EXPECT_EQ(geometry.trackLength(7), 400);
    EXPECT_EQ(geometry.trackLength(2), 406);
    EXPECT_EQ(geometry.trackLength(0), 406);
}

TEST(ThreeHandleGeometry, DragsSideHandlesAlongTheWholeTrack)
{
    const ThreeHandleGeometry geometry = geometryOf(3, 0, 500, 1000);
    EXPECT_EQ(geometry.lowerValueAt(103, 0), 250);
    EXPECT_EQ(geometry.lowerValueAt(105, 2), 250);
    EXPECT_EQ(geometry.lowerValueAt(3, 0), 0);
    EXPECT_EQ(geometry.upperValueAt(309, 0), 750);
    EXPECT_EQ(geometry.upperValueAt(307, -2), 750);
    EXPECT_EQ(geometry.upperValueAt(409, 0), 1000);
}

TEST(ThreeHandleGeometry, AnEmptyRangePutsEveryHandleAtTheBegin)
{
    ThreeHandleGeometry geometry = geometryOf(3, 7, 7, 7);
    geometry.minimum = 7;
    geometry.span = 0;
    EXPECT_EQ(geometry.fraction(7), 0.0F);
    EXPECT_EQ(geometry.fraction(-5), 0.0F);
    EXPECT_EQ(geometry.lowerPosition(), 0);
    EXPECT_EQ(geometry.centerPosition(), 6);
    EXPECT_EQ(geometry.upperPosition(), 26);
    EXPECT_EQ(geometry.valueAt(300), 7);
}

TEST(ThreeHandleGeometry, WithoutATrackEveryPositionIsTheMinimum)
{
    for (const int length : {12, 5, 0}) {
        ThreeHandleGeometry geometry = geometryOf(3, 40, 50, 60);
        geometry.minimum = 40;
        geometry.length = length;
        EXPECT_EQ(geometry.valueAt(100), 40) << length;
        EXPECT_EQ(geometry.lowerValueAt(100, 0), 40) << length;
        EXPECT_EQ(geometry.upperValueAt(100, 0), 40) << length;
    }
}

TEST(ThreeHandleGeometry, AValueBelowTheMinimumLiesFarBeyondTheEnd)
{
    ThreeHandleGeometry geometry = geometryOf(1, 10, 9, 20);
    geometry.minimum = 10;
    geometry.span = 10;
    EXPECT_GT(geometry.fraction(9), 1e18F) << "the difference is taken as unsigned";
    EXPECT_GT(geometry.centerHandle().left(), 1'000'000);
    EXPECT_EQ(geometry.centerHandle().size(), QSize(20, 20)) << "the rectangle must not overflow";
}

TEST(ThreeHandleGeometry, AMinimumOfAllOnesStillMapsTheBounds)
{
    ThreeHandleGeometry geometry = geometryOf(1, 100, 50, -1);
    geometry.minimum = ~uint64_t{0};
    geometry.span = 101;
    EXPECT_EQ(geometry.fraction(-1), 0.0F);
    EXPECT_EQ(geometry.fraction(100), 1.0F);
    EXPECT_EQ(geometry.valueAt(200), std::numeric_limits<int>::max());
}

TEST(ThreeHandleGeometry, HoldsPositionsOfTheWidestRangeExactly)
{
    ThreeHandleGeometry geometry = geometryOf(3, 0, 0, 2'147'483'647);
    geometry.span = 2'147'483'647;
    EXPECT_EQ(geometry.upperPosition(), 406);
    EXPECT_EQ(geometry.upperValueAt(409, 0), 2'147'483'647);
    EXPECT_EQ(geometry.valueAt(5000), 2'147'483'647) << "beyond int there is no wrap to the other end";
}

TEST(SaturateToInt, TruncatesTowardsZeroAndHoldsAtTheLimits)
{
    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    EXPECT_EQ(saturateToInt(2.9), 2);
    EXPECT_EQ(saturateToInt(-2.9), -2);
    EXPECT_EQ(saturateToInt(2147483647.9), highest);
    EXPECT_EQ(saturateToInt(2147483648.0), highest);
    EXPECT_EQ(saturateToInt(-2147483649.0), lowest);
    EXPECT_EQ(saturateToInt(1e19), highest);
    EXPECT_EQ(saturateToInt(-1e300), lowest);
    EXPECT_EQ(saturateToInt(std::numeric_limits<double>::infinity()), highest);
    EXPECT_EQ(saturateToInt(std::nan("")), 0);
}
