#include "tests/gui/kvthreehandlesliderfixture.h"
#include "widgets/kvthreehandleslider.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int middle = 14; ///< across the slider, within the groove and every handle

void press(KvThreeHandleSlider& slider, int x)
{
    QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(x, middle));
}

void moveTo(KvThreeHandleSlider& slider, int x)
{
    QTest::mouseMove(&slider, QPoint(x, middle));
}

void release(KvThreeHandleSlider& slider, int x)
{
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(x, middle));
}

/// Every signal of a slider in the order it came.
class SignalLog : public QObject
{
public:
    explicit SignalLog(KvThreeHandleSlider& slider)
    {
        const auto log = [this](const char* name) {
            return
                [this, name](int value) { all.push_back(std::string(name) + " " + std::to_string(value)); };
        };
        connect(&slider, &KvThreeHandleSlider::lowerValueChanged, this, log("lower"));
        connect(&slider, &KvThreeHandleSlider::upperValueChanged, this, log("upper"));
        connect(&slider, &KvThreeHandleSlider::centerValueChanged, this, log("center"));
        connect(&slider, &KvThreeHandleSlider::centerValueTrackClick, this, log("click"));
        connect(&slider, &KvThreeHandleSlider::centerValueMove, this, log("move"));
        connect(&slider, &KvThreeHandleSlider::rangeChanged, this, [this](int low, int high) {
            all.push_back("range " + std::to_string(low) + " " + std::to_string(high));
        });
    }

    using Entries = std::vector<std::string>;
    Entries take()
    {
        Entries taken;
        taken.swap(all);
        return taken;
    }

private:
    Entries all;
};

using Entries = SignalLog::Entries;

} // namespace

TEST(KvThreeHandleSlider, StartsWithTheBoundsOpenAndThePlayheadAtZero)
{
    const KvThreeHandleSlider slider(nullptr, 1, 1);
    EXPECT_EQ(slider.minimum(), 0U);
    EXPECT_EQ(slider.maximum(), ~uint64_t{0});
    EXPECT_EQ(slider.lowerValue(), 0);
    EXPECT_EQ(slider.upperValue(), -1);
    EXPECT_EQ(slider.centerValue(), 0);
    EXPECT_EQ(slider.effectiveLowerValue(), 0);
    EXPECT_EQ(slider.effectiveUpperValue(), -1);
    EXPECT_EQ(slider.handleMode(), 1);
}

TEST(KvThreeHandleSlider, TakesItsPlaceInALayout)
{
    const KvThreeHandleSlider slider(nullptr, 1, 1);
    EXPECT_TRUE(slider.hasMouseTracking());
    EXPECT_EQ(slider.sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    EXPECT_EQ(slider.sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    EXPECT_EQ(slider.minimumHeight(), 30);
    EXPECT_EQ(slider.minimumSizeHint(), QSize(12, 6));
    EXPECT_EQ(slider.focusPolicy(), Qt::NoFocus);
}

TEST(KvThreeHandleSlider, SettingTheMaximumResetsBothSidesAndReportsInOrder)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    SignalLog log(*slider);
    slider->setMaximum(900);
    EXPECT_EQ(log.take(), (Entries{"lower 0", "upper 900", "range 0 900"}));
    EXPECT_EQ(slider->centerValue(), 200) << "the playhead stays";
}

TEST(KvThreeHandleSlider, SettingTheMinimumResetsBothSidesAndReportsInOrder)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    SignalLog log(*slider);
    slider->setMinimum(50);
    EXPECT_EQ(log.take(), (Entries{"lower 50", "upper 400", "range 50 400"}));
    EXPECT_EQ(slider->centerValue(), 200);
}

TEST(KvThreeHandleSlider, AMaximumBelowThePlayheadKeepsTheEndAtThePlayheadInModeThree)
{
    const auto slider = sliderOf(3, 0, 200, 400);
    SignalLog log(*slider);
    slider->setMaximum(150);
    EXPECT_EQ(log.take(), (Entries{"lower 0", "upper 200", "range 0 150"}));

    const auto alone = sliderOf(1, 0, 200, 400);
    alone->setMaximum(150);
    EXPECT_EQ(alone->upperValue(), 150) << "only mode 3 looks at the playhead";
}

TEST(KvThreeHandleSlider, AMinimumAboveTheMaximumLimitsTheStartAndRaisesTheEnd)
{
    const auto slider = sliderOf(1);
    SignalLog log(*slider);
    slider->setMinimum(500);
    EXPECT_EQ(log.take(), (Entries{"lower 400", "upper 500", "range 500 400"}));
}

TEST(KvThreeHandleSlider, AMinimumOfMinusOneIsLargerThanAnyMaximum)
{
    const auto slider = sliderOf(1);
    SignalLog log(*slider);
    slider->setMinimum(-1);
    EXPECT_EQ(slider->minimum(), ~uint64_t{0});
    EXPECT_EQ(slider->lowerValue(), 400);
    EXPECT_EQ(slider->upperValue(), -1);
    EXPECT_EQ(log.take(), (Entries{"lower 400", "upper -1", "range -1 400"}));
}

TEST(KvThreeHandleSlider, TheStartIsHeldBetweenTheBoundsOnly)
{
    const auto slider = sliderOf(3, 0, 100, 200);
    SignalLog log(*slider);
    slider->setLowerValue(150);
    EXPECT_EQ(slider->lowerValue(), 150) << "above the playhead";
    slider->setLowerValue(350);
    EXPECT_EQ(slider->lowerValue(), 350) << "above the end";
    slider->setLowerValue(500);
    EXPECT_EQ(slider->lowerValue(), 400);
    slider->setLowerValue(-3);
    EXPECT_EQ(slider->lowerValue(), 400) << "a negative value counts as larger than any positive one";
    slider->setMinimum(20);
    slider->setLowerValue(5);
    EXPECT_EQ(slider->lowerValue(), 20);
    EXPECT_EQ(log.take(),
              (Entries{"lower 150", "lower 350", "lower 400", "lower 400", "lower 20", "upper 400",
                       "range 20 400", "lower 20"}));
}

TEST(KvThreeHandleSlider, TheEndStopsAtThePlayheadInModeThreeOnly)
{
    const auto all = sliderOf(3, 0, 100, 400);
    SignalLog log(*all);
    all->setUpperValue(50);
    all->setUpperValue(900);
    all->setUpperValue(-7);
    EXPECT_EQ(log.take(), (Entries{"upper 100", "upper 400", "upper 400"}));

    const auto alone = sliderOf(1, 0, 100, 400);
    alone->setMinimum(20);
    alone->setUpperValue(50);
    EXPECT_EQ(alone->upperValue(), 50);
    alone->setUpperValue(10);
    EXPECT_EQ(alone->upperValue(), 20);
}

TEST(KvThreeHandleSlider, ThePlayheadIsHeldBetweenStartAndEnd)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    SignalLog log(*slider);
    slider->setCenterValue(50);
    slider->setCenterValue(350);
    slider->setCenterValue(250);
    EXPECT_EQ(log.take(), (Entries{"center 100", "center 300", "center 250"}));

    slider->setLowerValue(350);
    log.take();
    slider->setCenterValue(320);
    EXPECT_EQ(log.take(), (Entries{"center 350"})) << "lowered to the end first, raised to the start last";
}

TEST(KvThreeHandleSlider, ChangingTheModeResetsTheRangeWithoutASignal)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    SignalLog log(*slider);
    slider->setHandleMode(1);
    EXPECT_EQ(slider->lowerValue(), 0);
    EXPECT_EQ(slider->upperValue(), 400);
    EXPECT_EQ(slider->centerValue(), 200);
    EXPECT_EQ(slider->handleMode(), 1);
    EXPECT_TRUE(log.take().empty());
}

TEST(KvThreeHandleSlider, TheEffectiveRangeIsStartAndEndInModeThreeElseTheBounds)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    EXPECT_EQ(slider->effectiveLowerValue(), 100);
    EXPECT_EQ(slider->effectiveUpperValue(), 300);
    slider->setHandleMode(1);
    EXPECT_EQ(slider->effectiveLowerValue(), 0);
    EXPECT_EQ(slider->effectiveUpperValue(), 400);
    slider->setLowerValue(30);
    slider->setUpperValue(40);
    EXPECT_EQ(slider->effectiveLowerValue(), 0);
    EXPECT_EQ(slider->effectiveUpperValue(), 400);
    slider->setMinimum(10);
    slider->setMaximum(700);
    EXPECT_EQ(slider->effectiveLowerValue(), 10);
    EXPECT_EQ(slider->effectiveUpperValue(), 700);
    slider->setHandleMode(3);
    slider->setLowerValue(60);
    slider->setUpperValue(500);
    EXPECT_EQ(slider->effectiveLowerValue(), 60);
    EXPECT_EQ(slider->effectiveUpperValue(), 500);
}

TEST(KvThreeHandleSlider, ListenersAlreadySeeTheNewEffectiveRange)
{
    const auto slider = sliderOf(3, 0, 100, 400);
    int seenLower = -1;
    int seenUpper = -1;
    QObject::connect(slider.get(), &KvThreeHandleSlider::lowerValueChanged, slider.get(),
                     [&] { seenLower = slider->effectiveLowerValue(); });
    QObject::connect(slider.get(), &KvThreeHandleSlider::upperValueChanged, slider.get(),
                     [&] { seenUpper = slider->effectiveUpperValue(); });
    slider->setLowerValue(50);
    slider->setUpperValue(300);
    EXPECT_EQ(seenLower, 50);
    EXPECT_EQ(seenUpper, 300);
    slider->setMaximum(800);
    EXPECT_EQ(seenLower, 0);
    EXPECT_EQ(seenUpper, 800);
}

TEST(KvThreeHandleSlider, AnotherThreadReadsTheEffectiveRangeWhileItChanges)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    std::atomic<bool> stop = false;
    std::atomic<int> strange = 0;
    std::atomic<int> reads = 0;
    std::thread reader([&] {
        while (!stop) {
            const int lower = slider->effectiveLowerValue();
            const int upper = slider->effectiveUpperValue();
            if ((lower != 0 && lower != 100) || (upper != 400 && upper != 300))
                ++strange;
            ++reads;
        }
    });
    for (int round = 0; round < 2000 || reads == 0; ++round) {
        slider->setHandleMode(1);
        slider->setHandleMode(3);
        slider->setLowerValue(100);
        slider->setUpperValue(300);
    }
    stop = true;
    reader.join();
    EXPECT_GT(reads, 0);
    EXPECT_EQ(strange, 0);
}

TEST(KvThreeHandleSlider, SettersWorkWhileDisabled)
{
    const auto slider = sliderOf(3);
    slider->setEnabled(false);
    slider->setMaximum(1000);
    slider->setLowerValue(300);
    slider->setUpperValue(900);
    slider->setCenterValue(500);
    EXPECT_EQ(slider->effectiveLowerValue(), 300);
    EXPECT_EQ(slider->effectiveUpperValue(), 900);
    EXPECT_EQ(slider->centerValue(), 500);
}

TEST(KvThreeHandleSlider, AClickOnTheTrackMovesThePlayheadAndReportsOnce)
{
    const auto slider = sliderOf(1);
    SignalLog log(*slider);
    press(*slider, 213);
    release(*slider, 213);
    EXPECT_EQ(log.take(), (Entries{"center 200", "click 200"}));
}

TEST(KvThreeHandleSlider, AClickOutsideTheRangeStopsAtTheNearerLimit)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    SignalLog log(*slider);
    press(*slider, 50);
    release(*slider, 50);
    EXPECT_EQ(log.take(), (Entries{"center 100", "click 100"}));
    press(*slider, 380);
    release(*slider, 380);
    EXPECT_EQ(log.take(), (Entries{"center 300", "click 300"}));
}

TEST(KvThreeHandleSlider, HiddenSideHandlesTakePressesAtTheTrackEnds)
{
    const auto slider = sliderOf(1, 0, 200, 400);
    SignalLog log(*slider);
    for (const int x : {1, 5, 406, 411}) {
        press(*slider, x);
        moveTo(*slider, 150);
        moveTo(*slider, 300);
        release(*slider, 300);
        EXPECT_TRUE(log.take().empty()) << x;
    }
    for (const int x : {6, 405}) {
        press(*slider, x);
        release(*slider, x);
        EXPECT_EQ(log.take().size(), 2U) << x << " lies beside them";
    }
}

TEST(KvThreeHandleSlider, ThePlayheadIsHitBeforeTheSideHandles)
{
    // In mode 1 the playhead at the begin covers part of the hidden start handle.
    const auto slider = sliderOf(1, 0, 0, 400);
    SignalLog log(*slider);
    press(*slider, 4);
    moveTo(*slider, 104);
    release(*slider, 104);
    EXPECT_EQ(log.take(), (Entries{"center 103", "move 103"}));
}

TEST(KvThreeHandleSlider, DraggingThePlayheadFollowsThePointer)
{
    const auto slider = sliderOf(1, 0, 200, 400);
    ASSERT_EQ(slider->centerValue(), 200); // the handle lies from 196 to 215
    SignalLog log(*slider);
    press(*slider, 200);
    EXPECT_TRUE(log.take().empty()) << "a press on the handle does not move it";
    moveTo(*slider, 250);
    EXPECT_EQ(log.take(), (Entries{"center 246", "move 246"}));
    release(*slider, 250);
    EXPECT_TRUE(log.take().empty());
    moveTo(*slider, 300);
    EXPECT_TRUE(log.take().empty()) << "the drag ended with the release";
}

TEST(KvThreeHandleSlider, ADraggedPlayheadStopsAtTheBounds)
{
    const auto slider = sliderOf(1, 0, 200, 400);
    SignalLog log(*slider);
    press(*slider, 200);
    moveTo(*slider, 1);
    EXPECT_EQ(log.take(), (Entries{"center 0", "move 0"}));
    moveTo(*slider, 411);
    EXPECT_EQ(log.take(), (Entries{"center 400", "move 400"}));
    moveTo(*slider, 413);
    EXPECT_TRUE(log.take().empty()) << "beyond the widget the drag rests";
    moveTo(*slider, -1);
    EXPECT_TRUE(log.take().empty());
    release(*slider, 0);
}

TEST(KvThreeHandleSlider, ALonePlayheadsDragIsLimitedByTheWidgetsPlaceInItsParent)
{
    QWidget parent;
    parent.resize(600, 100);
    KvThreeHandleSlider slider(&parent, 1, 1);
    slider.setGeometry(50, 20, sliderLength, 30);
    slider.setMaximum(400);
    slider.setCenterValue(200);
    SignalLog log(slider);
    press(slider, 200);
    moveTo(slider, 49);
    EXPECT_TRUE(log.take().empty()) << "left of the widget's own x";
    moveTo(slider, 50);
    EXPECT_EQ(log.take(), (Entries{"center 46", "move 46"}));
    moveTo(slider, 450);
    EXPECT_EQ(log.take(), (Entries{"center 400", "move 400"})) << "up to x + width";
    release(slider, 450);
}

TEST(KvThreeHandleSlider, ThePlayheadIsDraggedBetweenTheSideHandlesOnly)
{
    const auto slider = sliderOf(3, 100, 200, 300); // handles at 95, 196 and 311
    SignalLog log(*slider);
    press(*slider, 206);
    moveTo(*slider, 256);
    EXPECT_EQ(log.take(), (Entries{"center 246", "move 246"}));
    moveTo(*slider, 312);
    EXPECT_EQ(log.take(), (Entries{"center 246"}))
        << "right of the end handle: reported as set, not as moved";
    moveTo(*slider, 100);
    EXPECT_EQ(log.take(), (Entries{"center 246"})) << "left of the start handle's right edge";
    moveTo(*slider, 101);
    EXPECT_EQ(log.take(), (Entries{"center 100", "move 100"})) << "limited to the start";
    moveTo(*slider, 311);
    EXPECT_EQ(log.take(), (Entries{"center 300", "move 300"})) << "limited to the end";
    release(*slider, 311);
}

TEST(KvThreeHandleSlider, TheStartHandleStopsAtThePlayhead)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    SignalLog log(*slider);
    press(*slider, 98); // the middle of the start handle
    moveTo(*slider, 53);
    EXPECT_EQ(log.take(), (Entries{"lower 50"}));
    moveTo(*slider, 193);
    EXPECT_EQ(log.take(), (Entries{"lower 190"})) << "its right edge touches the playhead";
    moveTo(*slider, 194);
    EXPECT_EQ(log.take(), (Entries{"lower 200"}));
    moveTo(*slider, 390);
    EXPECT_EQ(log.take(), (Entries{"lower 200"}));
    moveTo(*slider, -2);
    EXPECT_TRUE(log.take().empty()) << "left of the widget the drag rests";
    release(*slider, 0);
    EXPECT_EQ(slider->centerValue(), 200);
}

TEST(KvThreeHandleSlider, TheEndHandleStopsAtThePlayhead)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    SignalLog log(*slider);
    press(*slider, 314); // the middle of the end handle
    moveTo(*slider, 359);
    EXPECT_EQ(log.take(), (Entries{"upper 350"}));
    moveTo(*slider, 222);
    EXPECT_EQ(log.take(), (Entries{"upper 213"})) << "26 pixels right of the playhead's left edge";
    moveTo(*slider, 221);
    EXPECT_EQ(log.take(), (Entries{"upper 200"}));
    moveTo(*slider, 20);
    EXPECT_EQ(log.take(), (Entries{"upper 200"}));
    moveTo(*slider, 600);
    EXPECT_EQ(log.take(), (Entries{"upper 400"}));
    release(*slider, 600);
}

TEST(KvThreeHandleSlider, AStartDraggedPastTheLeftEndStaysAtTheMinimum)
{
    const auto slider = sliderOf(3, 0, 200, 400);
    SignalLog log(*slider);
    press(*slider, 5);
    moveTo(*slider, 2);
    EXPECT_EQ(log.take(), (Entries{"lower 0"}));
    release(*slider, 2);
}

TEST(KvThreeHandleSlider, OnlyTheLeftButtonActs)
{
    const auto slider = sliderOf(1, 0, 200, 400);
    SignalLog log(*slider);
    QTest::mouseClick(slider.get(), Qt::RightButton, {}, QPoint(100, middle));
    QTest::mouseClick(slider.get(), Qt::MiddleButton, {}, QPoint(100, middle));
    QTest::mousePress(slider.get(), Qt::RightButton, {}, QPoint(206, middle));
    moveTo(*slider, 300);
    QTest::mouseRelease(slider.get(), Qt::RightButton, {}, QPoint(300, middle));
    EXPECT_TRUE(log.take().empty());
}

TEST(KvThreeHandleSlider, ADragThatLostItsReleaseEndsWithTheNextPress)
{
    const auto slider = sliderOf(1, 0, 200, 400);
    slider->show();
    SignalLog log(*slider);
    press(*slider, 206);
    slider->setEnabled(false);
    release(*slider, 206); // a disabled widget does not get it
    slider->setEnabled(true);
    press(*slider, 113);
    EXPECT_EQ(log.take(), (Entries{"center 100", "click 100"}));
    moveTo(*slider, 150);
    EXPECT_TRUE(log.take().empty());
    release(*slider, 150);
}

TEST(KvThreeHandleSlider, WorksVertically)
{
    KvThreeHandleSlider slider(nullptr, 0, 3);
    slider.resize(30, sliderLength);
    slider.setMaximum(400);
    slider.setCenterValue(200);
    SignalLog log(slider);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(middle, 113));
    EXPECT_EQ(log.take(), (Entries{"center 100", "click 100"}));
}
