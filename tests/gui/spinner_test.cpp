#include "tests/gui/imagecomparison.h"

#include <QFile>
#include <QImageReader>
#include <QMovie>

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString path = u":/img/icon/waiting.gif"_s;

std::vector<QImage> spinnerFrames()
{
    std::vector<QImage> frames;
    QImageReader reader(path);
    for (QImage frame = reader.read(); !frame.isNull(); frame = reader.read())
        frames.push_back(frame);
    return frames;
}

} // namespace

TEST(Spinner, IsASmoothEndlessAnimationOfOneSecond)
{
    EXPECT_LT(QFile(path).size(), 400 * 1024);
    QMovie movie(path);
    ASSERT_TRUE(movie.isValid());
    ASSERT_TRUE(movie.jumpToFrame(0));
    EXPECT_EQ(movie.currentImage().size(), QSize(300, 300));
    EXPECT_EQ(movie.loopCount(), -1);
    EXPECT_GE(movie.frameCount(), 24);
    EXPECT_LE(movie.frameCount(), 30);
}

TEST(Spinner, ShowsEachFrameForTheSameTime)
{
    // Asked of the reader: the movie takes the time that decoding took off its delays.
    QImageReader reader(path);
    int duration = 0;
    int frames = 0;
    while (!reader.read().isNull()) {
        EXPECT_EQ(reader.nextImageDelay(), 40) << frames;
        duration += reader.nextImageDelay();
        ++frames;
    }
    EXPECT_EQ(duration, 1000);
}

TEST(Spinner, EveryFrameIsClearAroundAndInsideTheRing)
{
    const std::vector<QImage> frames = spinnerFrames();
    ASSERT_GE(frames.size(), 24U);
    for (std::size_t index = 0; index < frames.size(); ++index) {
        const QImage& frame = frames[index];
        for (const QPoint& corner : {QPoint(0, 0), QPoint(299, 0), QPoint(0, 299), QPoint(299, 299)})
            EXPECT_EQ(qAlpha(frame.pixel(corner)), 0) << index;
        EXPECT_EQ(qAlpha(frame.pixel(150, 150)), 0) << index;
        const double painted = differingPart(frame, clearImage(frame.size()), differsVisibly);
        EXPECT_GT(painted, 0.08) << index;
        EXPECT_LT(painted, 0.30) << index;
    }
}

TEST(Spinner, HasALightRimThatKeepsItApartFromAPicturesGrey)
{
    for (const QImage& frame : spinnerFrames()) {
        int edges = 0;
        int dark = 0;
        for (int y = 0; y < frame.height(); ++y) {
            for (int x = 1; x < frame.width(); ++x) {
                const QRgb left = frame.pixel(x - 1, y);
                const QRgb right = frame.pixel(x, y);
                if ((qAlpha(left) > 0) == (qAlpha(right) > 0))
                    continue;
                ++edges;
                dark += qGray(qAlpha(left) > 0 ? left : right) < 0xC0 ? 1 : 0;
            }
        }
        EXPECT_GT(edges, 100);
        EXPECT_EQ(dark, 0);
    }
}

TEST(Spinner, EveryFrameReplacesTheOneBeforeIt)
{
    const std::vector<QImage> frames = spinnerFrames();
    ASSERT_GE(frames.size(), 24U);
    // A frame that left the one before it standing would only ever add.
    const auto leftClear = [](QRgb now, QRgb before) { return qAlpha(before) > 0 && qAlpha(now) == 0; };
    for (std::size_t index = 1; index < frames.size(); ++index)
        EXPECT_GT(differingPart(frames[index], frames[index - 1], leftClear), 0) << index;
}

TEST(Spinner, StepsEvenlyAlsoFromTheLastFrameToTheFirst)
{
    const std::vector<QImage> frames = spinnerFrames();
    ASSERT_GE(frames.size(), 24U);
    std::vector<double> steps;
    for (std::size_t index = 1; index < frames.size(); ++index)
        steps.push_back(differingPart(frames[index], frames[index - 1], differsVisibly));
    const auto [smallest, largest] = std::minmax_element(steps.begin(), steps.end());
    EXPECT_GT(*smallest, 0.005);
    EXPECT_LT(*largest, 3 * *smallest);
    const double around = differingPart(frames.front(), frames.back(), differsVisibly);
    EXPECT_GE(around, *smallest * 0.8);
    EXPECT_LE(around, *largest * 1.2);
}
