#include "display/eventframebuffer.h"

#include <gtest/gtest.h>

TEST(EventFramePixmap, HasTheSizeAndTheColoursOfThePictureAndClearsTheBuffer)
{
    EventFrameBuffer buffer;
    const korvane::Event2D events[] = {{0, 0, 1, 0}, {1279, 719, 0, 1}};
    buffer.addEvents(std::begin(events), std::end(events));
    QPixmap pixmap;
    buffer.takeFrame(pixmap);
    EXPECT_EQ(pixmap.size(), QSize(1280, 720));
    QImage image = pixmap.toImage();
    EXPECT_EQ(image.pixel(0, 0), qRgb(191, 188, 180));
    EXPECT_EQ(image.pixel(1279, 719), qRgb(64, 61, 51));
    EXPECT_EQ(image.pixel(640, 360), qRgb(112, 112, 112));
    EXPECT_FALSE(buffer.hasNewEvents());

    buffer.takeFrame(pixmap);
    image = pixmap.toImage();
    EXPECT_EQ(image.pixel(0, 0), qRgb(112, 112, 112));
    EXPECT_EQ(image.pixel(1279, 719), qRgb(112, 112, 112));
}
