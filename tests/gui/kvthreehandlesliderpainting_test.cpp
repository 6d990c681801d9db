#include "tests/gui/kvthreehandlesliderfixture.h"
#include "widgets/kvthreehandleslider.h"

#include <QImage>
#include <QTest>
#include <gtest/gtest.h>

namespace {

QImage picture(KvThreeHandleSlider& slider)
{
    QImage image(slider.size(), QImage::Format_RGB32);
    slider.render(&image);
    return image;
}

} // namespace

TEST(KvThreeHandleSlider, PaintsTheWholeGrooveInTheAccentColourInModeOne)
{
    const auto slider = sliderOf(1, 0, 200, 400);
    const QImage image = picture(*slider);
    const QColor accent(0x00, 0x4B, 0x6A);
    EXPECT_EQ(image.pixelColor(8, 15), accent);
    EXPECT_EQ(image.pixelColor(404, 15), accent);
    EXPECT_EQ(image.pixelColor(206, 15), QColor(Qt::white)) << "inside the playhead";
    EXPECT_EQ(image.pixelColor(196, 15), accent) << "its ring";
    const QColor background = slider->palette().color(QPalette::Window);
    EXPECT_EQ(image.pixelColor(0, 10), background) << "round groove ends";
    EXPECT_EQ(image.pixelColor(2, 3), background) << "no side handle";
}

TEST(KvThreeHandleSlider, PaintsTheRangeBetweenItsHandlesInModeThree)
{
    const auto slider = sliderOf(3, 100, 200, 300); // handles at 95, 196 and 311
    const QImage image = picture(*slider);
    const QColor accent(0x00, 0x4B, 0x6A);
    const QColor groove(208, 208, 208);
    EXPECT_EQ(image.pixelColor(50, 15), groove);
    EXPECT_EQ(image.pixelColor(370, 15), groove);
    EXPECT_EQ(image.pixelColor(150, 15), accent);
    EXPECT_EQ(image.pixelColor(101, 10), accent) << "square range corners";
    EXPECT_EQ(image.pixelColor(97, 5), accent) << "start handle";
    EXPECT_EQ(image.pixelColor(314, 5), accent) << "end handle";
    EXPECT_EQ(image.pixelColor(206, 15), QColor(Qt::white));
}

TEST(KvThreeHandleSlider, PaintsNoRangeWhenTheStartLiesBeyondTheEnd)
{
    const auto slider = sliderOf(3, 0, 50, 100);
    slider->setLowerValue(300); // handles at 285 and 121
    const QImage image = picture(*slider);
    EXPECT_EQ(image.pixelColor(200, 15), QColor(208, 208, 208));
    EXPECT_EQ(image.pixelColor(287, 5), QColor(0x00, 0x4B, 0x6A)) << "the start handle is still there";
}

TEST(KvThreeHandleSlider, PaintsGreyWhenDisabledAndInColourAgainWhenEnabled)
{
    const auto slider = sliderOf(3, 100, 200, 300);
    slider->setEnabled(false);
    const QColor grey(0xC7, 0xC7, 0xC7);
    QImage image = picture(*slider);
    EXPECT_EQ(image.pixelColor(150, 15), grey);
    EXPECT_EQ(image.pixelColor(97, 5), grey);
    EXPECT_EQ(image.pixelColor(314, 5), grey);
    EXPECT_EQ(image.pixelColor(206, 15), grey) << "inside the playhead";
    EXPECT_EQ(image.pixelColor(196, 15), QColor(0x70, 0x70, 0x70)) << "its ring";
    slider->setEnabled(true);
    image = picture(*slider);
    EXPECT_EQ(image.pixelColor(150, 15), QColor(0x00, 0x4B, 0x6A));
    EXPECT_EQ(image.pixelColor(206, 15), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(196, 15), QColor(0x00, 0x4B, 0x6A));
}

TEST(KvThreeHandleSlider, PaintsNoHandleForAPlayheadOutsideTheRange)
{
    KvThreeHandleSlider slider(nullptr, 1, 1);
    slider.resize(sliderLength, 30);
    slider.setMaximum(2'000'000);
    slider.setMinimum(1'000'000); // the playhead stays at 0, far below
    const QImage image = picture(slider);
    for (int x = 6; x < sliderLength - 6; ++x)
        ASSERT_EQ(image.pixelColor(x, 15), QColor(0x00, 0x4B, 0x6A)) << x;
}

TEST(KvThreeHandleSlider, PaintsAnyRangeAtAnySize)
{
    const auto drawn = [](KvThreeHandleSlider& slider) {
        const QImage image = picture(slider);
        const QColor background = slider.palette().color(QPalette::Window);
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                pixels += image.pixelColor(x, y) != background ? 1 : 0;
        return pixels;
    };
    for (const int mode : {0, 1, 2, 3, 7}) {
        KvThreeHandleSlider slider(nullptr, 1, mode);
        for (const int width : {1, 12, 13, 32, 400}) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", width " << width);
            // A groove of ten rows, and nothing where the ends' insets leave no room for one.
            const int least = width > 20 ? 8 * (width - 20) : 0;
            slider.resize(width, 30);
            slider.setMaximum(10);
            slider.setMinimum(10);
            EXPECT_GE(drawn(slider), least);
            EXPECT_EQ(slider.lowerValue(), 10);
            EXPECT_EQ(slider.upperValue(), 10);
            slider.setMinimum(-1);
            EXPECT_GE(drawn(slider), least);
            slider.setMinimum(0);
            EXPECT_GE(drawn(slider), least);
            slider.setCenterValue(0);
            QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(width - 1, 15));
            EXPECT_GE(slider.centerValue(), 0);
            EXPECT_LE(slider.centerValue(), 10);
            EXPECT_EQ(slider.lowerValue(), 0);
            EXPECT_EQ(slider.upperValue(), 10);
        }
    }
}
