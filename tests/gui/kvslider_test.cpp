#include "widgets/kvslider.h"
#include "widgets/slidertrack.h"

#include <QSignalSpy>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTest>
#include <gtest/gtest.h>

#include <limits>

namespace {

class ProbedSlider : public KvSlider
{
public:
    using KvSlider::KvSlider;

    QRect handle() const
    {
        QStyleOptionSlider option;
        initStyleOption(&option);
        return style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    }
};

} // namespace

TEST(KvSlider, ClickBesideHandleJumpsAndReportsOnce)
{
    ProbedSlider slider(Qt::Horizontal);
    slider.setRange(0, 1000);
    slider.resize(300, 30);
    const int handleWidth = slider.handle().width();
    const int x = 180;
    const int expected = static_cast<int>(1000 * (x - handleWidth * 0.5) / (300 - handleWidth));
    QSignalSpy clicked(&slider, &KvSlider::trackClicked);
    QSignalSpy changed(&slider, &QSlider::valueChanged);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(x, 15));
    ASSERT_EQ(clicked.count(), 1);
    EXPECT_EQ(clicked.at(0).at(0).toInt(), expected);
    EXPECT_EQ(slider.value(), expected);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_NEAR(slider.handle().center().x(), x, 1) << "the handle's middle comes under the pointer";
}

TEST(KvSlider, AJumpStartsNoDrag)
{
    ProbedSlider slider(Qt::Horizontal);
    slider.setRange(0, 1000);
    slider.resize(300, 30);
    QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(180, 15));
    EXPECT_FALSE(slider.isSliderDown());
    const int jumped = slider.value();
    QTest::mouseMove(&slider, QPoint(240, 15));
    EXPECT_EQ(slider.value(), jumped);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(240, 15));
}

TEST(KvSlider, ClickOnHandleDoesNotJump)
{
    ProbedSlider slider(Qt::Horizontal);
    slider.setRange(0, 1000);
    slider.setValue(400);
    slider.resize(300, 30);
    QSignalSpy clicked(&slider, &KvSlider::trackClicked);
    const QRect handle = slider.handle();
    for (const int x : {handle.left(), handle.center().x(), handle.right()}) {
        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(x, handle.center().y()));
        EXPECT_EQ(slider.value(), 400) << x;
    }
    EXPECT_EQ(clicked.count(), 0);
}

TEST(KvSlider, PressOnHandleStartsANormalDrag)
{
    ProbedSlider slider(Qt::Horizontal);
    slider.setRange(0, 1000);
    slider.setValue(400);
    slider.resize(300, 30);
    const QPoint start = slider.handle().center();
    QTest::mousePress(&slider, Qt::LeftButton, {}, start);
    EXPECT_TRUE(slider.isSliderDown());
    QTest::mouseMove(&slider, start + QPoint(60, 0));
    EXPECT_GT(slider.value(), 550);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, start + QPoint(60, 0));
    EXPECT_FALSE(slider.isSliderDown());
}

TEST(KvSlider, OtherButtonsDoNotJump)
{
    ProbedSlider slider(Qt::Horizontal);
    slider.setRange(0, 1000);
    slider.resize(300, 30);
    QSignalSpy clicked(&slider, &KvSlider::trackClicked);
    QTest::mouseClick(&slider, Qt::RightButton, {}, QPoint(180, 15));
    EXPECT_EQ(clicked.count(), 0);
    EXPECT_EQ(slider.value(), 0);
}

TEST(KvSlider, ClickBeyondTheTrackIsHeldByTheRange)
{
    ProbedSlider slider(Qt::Horizontal);
    slider.setRange(10, 20);
    slider.setValue(15);
    slider.resize(300, 30);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(1, 15));
    EXPECT_EQ(slider.value(), 10);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(299, 15));
    EXPECT_EQ(slider.value(), 20);
}

TEST(KvSlider, VerticalSliderUsesTheHeight)
{
    ProbedSlider slider(Qt::Vertical);
    slider.setRange(0, 1000);
    slider.resize(30, 300);
    const int handleHeight = slider.handle().height();
    QSignalSpy clicked(&slider, &KvSlider::trackClicked);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(15, 100));
    ASSERT_EQ(clicked.count(), 1);
    EXPECT_EQ(slider.value(), static_cast<int>(1000 * (100 - handleHeight * 0.5) / (300 - handleHeight)));
}

TEST(SliderTrack, MapsTheHandlesMiddleToTheValue)
{
    const SliderTrack track{.minimum = 100, .maximum = 300, .handleLength = 10, .length = 210};
    EXPECT_EQ(track.valueAt(5), 100);
    EXPECT_EQ(track.valueAt(105), 200);
    EXPECT_EQ(track.valueAt(205), 300);
    EXPECT_EQ(track.valueAt(0), 95);
    const SliderTrack odd{.minimum = 0, .maximum = 100, .handleLength = 9, .length = 209};
    EXPECT_EQ(odd.valueAt(100), 47) << "47.75";
}

TEST(SliderTrack, WithoutATrackEveryPositionIsTheMinimum)
{
    const SliderTrack none{.minimum = 7, .maximum = 9, .handleLength = 10, .length = 10};
    EXPECT_EQ(none.valueAt(3), 7);
    const SliderTrack negative{.minimum = 7, .maximum = 9, .handleLength = 10, .length = 4};
    EXPECT_EQ(negative.valueAt(3), 7);
}

TEST(SliderTrack, HoldsTheWidestRange)
{
    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    const SliderTrack track{.minimum = lowest, .maximum = highest, .handleLength = 10, .length = 110};
    EXPECT_EQ(track.valueAt(5), lowest);
    EXPECT_EQ(track.valueAt(105), highest);
    EXPECT_EQ(track.valueAt(1000), highest);
}
