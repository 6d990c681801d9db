#include "display/imagerelay.h"

#include <QApplication>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

QImage imageOf(int level)
{
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(QColor(level, level, level));
    return image;
}

} // namespace

TEST(ImageRelay, BringsTheNewestOfThePicturesOfAnotherThreadToTheGuiThread)
{
    ImageRelay relay;
    std::vector<int> levels;
    QObject::connect(&relay, &ImageRelay::imageReady, &relay, [&levels](const QImage& image) {
        EXPECT_EQ(QThread::currentThread(), QApplication::instance()->thread());
        levels.push_back(image.pixelColor(0, 0).red());
    });
    std::thread maker([&relay] {
        for (int level = 1; level <= 5; ++level)
            relay.put(imageOf(level));
    });
    maker.join();
    ASSERT_TRUE(QTest::qWaitFor([&levels] { return !levels.empty(); }));
    QApplication::processEvents();
    EXPECT_EQ(levels, std::vector<int>{5});
    relay.put(imageOf(6));
    ASSERT_TRUE(QTest::qWaitFor([&levels] { return levels.size() == 2; }));
    EXPECT_EQ(levels.back(), 6);
}

TEST(ImageRelay, APictureDroppedOnItsWayIsNotShownAndTheNextOneIs)
{
    ImageRelay relay;
    std::vector<int> levels;
    QObject::connect(&relay, &ImageRelay::imageReady, &relay,
                     [&levels](const QImage& image) { levels.push_back(image.pixelColor(0, 0).red()); });
    relay.put(imageOf(1));
    relay.clear();
    QApplication::processEvents();
    EXPECT_TRUE(levels.empty());
    relay.put(imageOf(2));
    ASSERT_TRUE(QTest::qWaitFor([&levels] { return !levels.empty(); }));
    EXPECT_EQ(levels, std::vector<int>{2});
}
