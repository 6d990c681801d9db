#include "playback/fusioncomposer.h"

#include "tests/support/alignmentreference.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedfusioncamera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

const QColor white(255, 255, 255);
const QColor red(255, 0, 0);
const QColor blue(0, 0, 255);

korvane::Event2D event(int x, int y, int polarity)
{
    return {static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y), static_cast<std::uint8_t>(polarity),
            0};
}

class FusionComposerTest : public testing::Test
{
protected:
    FusionComposerTest()
    {
        // Every pixel of a frame is (30, 20, 10) in red, green, blue.
        for (std::size_t i = 0; i < pixels.size(); i += 3) {
            pixels[i] = 10;
            pixels[i + 1] = 20;
            pixels[i + 2] = 30;
        }
        camera->onCounts = [this](std::shared_ptr<korvane::EventCountFrame>& out, std::uint64_t time) {
            asked.push_back(time);
            out = counts;
            return counts != nullptr;
        };
    }

    void frame(std::uint64_t time) { composer.onApsFrame({pixels.data(), 3840, 2160, time}); }
    void events(const std::vector<korvane::Event2D>& batch)
    {
        composer.onEvents(batch.data(), batch.data() + batch.size());
    }
    /// Counts at one pixel of an otherwise empty frame of counts.
    void count(int x, int y, std::uint16_t off, std::uint16_t on)
    {
        if (!counts) {
            counts = std::make_shared<korvane::EventCountFrame>();
            counts->counts.resize(std::size_t{1280} * 720 * 2);
        }
        const std::size_t index = 2 * (std::size_t(y) * 1280 + std::size_t(x));
        counts->counts[index] = off;
        counts->counts[index + 1] = on;
    }

    ScriptedLog log;
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(std::size_t{3840} * 2160 * 3);
    std::shared_ptr<ScriptedFusionCamera> camera = std::make_shared<ScriptedFusionCamera>("cam", log);
    std::shared_ptr<korvane::EventCountFrame> counts;
    std::vector<std::uint64_t> asked;
    std::vector<QImage> images;
    std::vector<std::uint64_t> times;
    FusionPicture picture;
    FusionComposer composer{picture,
                            {
                                [this](const QImage& image) {
                                    images.push_back(image);
                                    log.add("image");
                                },
                                [this](std::uint64_t time) {
                                    times.push_back(time);
                                    log.add("time " + std::to_string(time));
                                },
                            }};
};

} // namespace

TEST_F(FusionComposerTest, TheApsViewShowsTheFrameAndItsTime)
{
    composer.setViewerType(korvane::STREAM_APS);
    frame(77);
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(images[0].size(), QSize(1280, 720));
    EXPECT_EQ(images[0].pixelColor(640, 360), QColor(30, 20, 10));
    EXPECT_EQ(images[0].pixelColor(0, 0), white);
    EXPECT_EQ(times, std::vector<std::uint64_t>{77});
    EXPECT_TRUE(asked.empty());
}

TEST_F(FusionComposerTest, TheFusionViewDrawsTheCamerasCountsOverTheFrame)
{
    count(640, 360, 0, 1);
    count(641, 360, 2, 1);
    count(642, 360, 3, 3);
    composer.setFusionCamera(camera);
    frame(100);
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(asked, std::vector<std::uint64_t>{100});
    EXPECT_EQ(images[0].pixelColor(640, 360), red);
    EXPECT_EQ(images[0].pixelColor(641, 360), blue);
    EXPECT_EQ(images[0].pixelColor(642, 360), red);
    EXPECT_EQ(images[0].pixelColor(643, 360), QColor(30, 20, 10));
    EXPECT_EQ(times, std::vector<std::uint64_t>{100});
}

TEST_F(FusionComposerTest, WithoutCountsForAFrameTheFusionViewMakesNoPicture)
{
    composer.setFusionCamera(camera);
    frame(100);
    EXPECT_EQ(asked.size(), 1U);
    EXPECT_TRUE(images.empty());
    EXPECT_TRUE(times.empty());
}

TEST_F(FusionComposerTest, WithoutACameraOrWithALostOneTheFusionViewMakesNoPicture)
{
    count(1, 1, 1, 1);
    frame(1);
    camera->connected = false;
    composer.setFusionCamera(camera);
    frame(2);
    EXPECT_TRUE(images.empty());
    EXPECT_TRUE(asked.empty());
}

TEST_F(FusionComposerTest, CountsShorterThanThePictureMakeNoPicture)
{
    counts = std::make_shared<korvane::EventCountFrame>();
    counts->counts.resize(100);
    composer.setFusionCamera(camera);
    frame(1);
    EXPECT_TRUE(images.empty());
}

TEST_F(FusionComposerTest, TheDvsViewShowsTheEventsSinceTheFrameBefore)
{
    composer.setViewerType(korvane::STREAM_DVS);
    events({event(280, 10, 1), event(281, 10, 0)});
    frame(5);
    events({event(282, 10, 1)});
    frame(6);
    ASSERT_EQ(images.size(), 2U);
    EXPECT_EQ(images[0].pixelColor(1000, 10), red);
    EXPECT_EQ(images[0].pixelColor(999, 10), blue);
    EXPECT_EQ(images[0].pixelColor(998, 10), white);
    EXPECT_EQ(images[1].pixelColor(1000, 10), white);
    EXPECT_EQ(images[1].pixelColor(998, 10), red);
    EXPECT_EQ(times, (std::vector<std::uint64_t>{5, 6}));
}

TEST_F(FusionComposerTest, EqualCountsAreShownInTheColourOfPolarityOne)
{
    composer.setViewerType(korvane::STREAM_DVS);
    events({event(280, 10, 1), event(280, 10, 0)});
    frame(5);
    EXPECT_EQ(images.at(0).pixelColor(1000, 10), red);
}

TEST_F(FusionComposerTest, ColumnZeroShowsInTheNextRowAndInTheLastRowNotAtAll)
{
    composer.setViewerType(korvane::STREAM_DVS);
    events({event(0, 0, 1), event(0, 719, 1)});
    frame(5);
    EXPECT_EQ(images.at(0).pixelColor(0, 1), red);
    EXPECT_EQ(images.at(0).pixelColor(0, 719), white);
    EXPECT_EQ(images.at(0).pixelColor(0, 0), white);
}

TEST_F(FusionComposerTest, EventsCountOnlyWhileTheDvsViewIsShownAndAreKeptWhenItChanges)
{
    composer.setViewerType(korvane::STREAM_FUSION);
    events({event(280, 10, 1)});
    composer.setViewerType(korvane::STREAM_DVS);
    events({event(281, 10, 1)});
    composer.setViewerType(korvane::STREAM_APS);
    frame(1);
    composer.setViewerType(korvane::STREAM_DVS);
    frame(2);
    ASSERT_EQ(images.size(), 2U);
    EXPECT_EQ(images[1].pixelColor(1000, 10), white);
    EXPECT_EQ(images[1].pixelColor(999, 10), red);
}

TEST_F(FusionComposerTest, AFrameOfAnotherSizeIsRefusedAndToldOnce)
{
    const CapturedMessages messages;
    composer.setViewerType(korvane::STREAM_APS);
    composer.onApsFrame({pixels.data(), 1920, 1080, 3});
    composer.onApsFrame({nullptr, 3840, 2160, 4});
    EXPECT_TRUE(images.empty());
    EXPECT_EQ(
        messages.warnings(),
        (QStringList{QStringLiteral("Intensity frames of 1920 x 1080 pixels cannot be shown: the camera's "
                                    "have 3840 x 2160.")}));
}

TEST_F(FusionComposerTest, APictureIsToldBeforeItsTimeInEveryView)
{
    count(100, 50, 0, 1);
    composer.setFusionCamera(camera);
    for (const auto type : {korvane::STREAM_DVS, korvane::STREAM_APS, korvane::STREAM_FUSION}) {
        log.clear();
        composer.setViewerType(type);
        frame(33333);
        EXPECT_EQ(log.lines(), (ScriptedLog::Lines{"image", "time 33333"})) << type;
    }
}

TEST_F(FusionComposerTest, LettingTheCameraGoReleasesIt)
{
    composer.setFusionCamera(camera);
    const std::weak_ptr<ScriptedFusionCamera> watched = camera;
    camera.reset();
    EXPECT_FALSE(watched.expired());
    composer.setFusionCamera(nullptr);
    EXPECT_TRUE(watched.expired());
}

TEST_F(FusionComposerTest, RandomFramesCountsAndEventsMakeThePicturesOfThePlainRules)
{
    std::mt19937 random(23);
    for (std::uint8_t& byte : pixels)
        byte = static_cast<std::uint8_t>(random());
    count(0, 0, 0, 0);
    for (std::uint16_t& one : counts->counts)
        one = static_cast<std::uint16_t>(random() % 8 == 0 ? random() % 4 : 0);
    std::vector<korvane::Event2D> batch;
    for (int i = 0; i < 20'000; ++i)
        batch.push_back(event(int(random() % 1400), int(random() % 800), int(random() % 2)));
    composer.setFusionCamera(camera);

    constexpr std::size_t row = std::size_t{1280} * 3;
    const auto aligned
        = alignedByRule({pixels.data(), std::size_t{3840} * 3, 3840, 2160}, 3840, 2160, 1280, 720, row);
    const auto painted
        = [](std::vector<std::uint8_t> bgr, const std::vector<int>& off, const std::vector<int>& on) {
              for (std::size_t i = 0; i < off.size(); ++i) {
                  if (off[i] == 0 && on[i] == 0)
                      continue;
                  bgr[3 * i] = on[i] >= off[i] ? 0 : 255;
                  bgr[3 * i + 1] = 0;
                  bgr[3 * i + 2] = on[i] >= off[i] ? 255 : 0;
              }
              return bgr;
          };
    const auto bytes = [](const QImage& image) {
        return std::vector<std::uint8_t>(image.constBits(), image.constBits() + image.sizeInBytes());
    };

    composer.setViewerType(korvane::STREAM_APS);
    frame(1);
    EXPECT_TRUE(bytes(images.back()) == aligned);

    std::vector<int> off(std::size_t{1280} * 720);
    std::vector<int> on(off.size());
    for (std::size_t i = 0; i < off.size(); ++i) {
        off[i] = counts->counts[2 * i];
        on[i] = counts->counts[2 * i + 1];
    }
    composer.setViewerType(korvane::STREAM_FUSION);
    frame(2);
    EXPECT_TRUE(bytes(images.back()) == painted(aligned, off, on));

    std::fill(off.begin(), off.end(), 0);
    std::fill(on.begin(), on.end(), 0);
    for (const korvane::Event2D& one : batch) {
        const auto place = std::size_t(one.y * 1280 + 1280 - one.x);
        // Columns beyond the sensor count in the row above, as the rule has it; rows beyond it nowhere.
        if (one.y * 1280 + 1280 - one.x < 0 || place >= off.size())
            continue;
        int& counter = (one.polarity == 1 ? on : off)[place];
        counter = std::min(counter + 1, 10);
    }
    composer.setViewerType(korvane::STREAM_DVS);
    events(batch);
    frame(3);
    EXPECT_TRUE(bytes(images.back())
                == painted(std::vector<std::uint8_t>(row * 720, std::uint8_t{255}), off, on));
}

TEST_F(FusionComposerTest, ACameraIsSetAndLetGoWhileItsFramesCome)
{
    count(100, 50, 0, 1);
    std::atomic<bool> done{false};
    std::thread setting([this, &done] {
        while (!done) {
            composer.setFusionCamera(camera);
            composer.setFusionCamera(nullptr);
        }
    });
    for (std::uint64_t i = 1; i <= 30; ++i)
        frame(i * 33333);
    done = true;
    setting.join();
    // Each frame met a camera, with counts, or none, and then made no picture.
    EXPECT_EQ(images.size(), asked.size());
    composer.setFusionCamera(camera);
    frame(31 * 33333);
    EXPECT_EQ(asked.back(), 31u * 33333u);
    EXPECT_EQ(times.back(), 31u * 33333u);
}

TEST_F(FusionComposerTest, NoEventIsLostOrShownTwiceWhileFramesComeBesideThem)
{
    composer.setViewerType(korvane::STREAM_DVS);
    constexpr int rounds = 400;
    std::atomic<bool> done{false};
    // One event a pixel at most, so that each must show in exactly one picture.
    std::thread counting([this, &done] {
        for (int i = 0; i < rounds; ++i)
            events({event(1 + i, 20, 1)});
        done = true;
    });
    std::size_t shown = 0;
    const auto look = [this, &shown] {
        frame(1);
        for (int x = 0; x < 1280; ++x)
            shown += images.back().pixelColor(x, 20) == red ? 1U : 0U;
        images.clear();
    };
    while (!done)
        look();
    counting.join();
    look();
    EXPECT_EQ(shown, std::size_t{rounds});
}
