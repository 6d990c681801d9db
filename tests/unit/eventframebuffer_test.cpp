#include "display/eventframebuffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

using korvane::Event2D;

namespace {

constexpr QRgb background = qRgb(112, 112, 112);
constexpr QRgb onColour = qRgb(191, 188, 180);
constexpr QRgb offColour = qRgb(64, 61, 51);

void add(EventFrameBuffer& buffer, const std::vector<Event2D>& events)
{
    buffer.addEvents(events.data(), events.data() + events.size());
}

int paintedPixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) != background ? 1 : 0;
    }
    return count;
}

} // namespace

TEST(EventFrameBuffer, GivesAGreyPictureWithoutEvents)
{
    EventFrameBuffer buffer;
    const QImage image = buffer.takeImage();
    EXPECT_EQ(image.size(), QSize(1280, 720));
    EXPECT_EQ(image.pixel(0, 0), background);
    EXPECT_EQ(image.pixel(1279, 719), background);
    EXPECT_EQ(paintedPixels(image), 0);
}

TEST(EventFrameBuffer, PaintsOnEventsBeigeAndOffEventsDark)
{
    EventFrameBuffer buffer;
    add(buffer, {{3, 4, 1, 0}, {1279, 0, 0, 1}, {0, 719, 1, 2}});
    const QImage image = buffer.takeImage();
    EXPECT_EQ(image.pixel(3, 4), onColour);
    EXPECT_EQ(image.pixel(1279, 0), offColour);
    EXPECT_EQ(image.pixel(0, 719), onColour);
    EXPECT_EQ(paintedPixels(image), 3);
}

TEST(EventFrameBuffer, TheLaterEventAtAPixelIsShown)
{
    EventFrameBuffer buffer;
    add(buffer, {{8, 8, 1, 0}, {8, 8, 0, 1}});
    add(buffer, {{9, 8, 0, 2}});
    add(buffer, {{9, 8, 1, 3}});
    const QImage image = buffer.takeImage();
    EXPECT_EQ(image.pixel(8, 8), offColour);
    EXPECT_EQ(image.pixel(9, 8), onColour);
}

TEST(EventFrameBuffer, PaintsNothingForAnEventOutside)
{
    EventFrameBuffer buffer;
    add(buffer, {{1280, 0, 1, 0}, {0, 720, 1, 1}, {1280, 719, 0, 2}, {65535, 65535, 0, 3}});
    EXPECT_EQ(paintedPixels(buffer.takeImage()), 0);
}

TEST(EventFrameBuffer, CollectsBatchesUntilThePictureIsTakenAndThenBeginsAnew)
{
    EventFrameBuffer buffer;
    add(buffer, {{1, 1, 1, 0}});
    add(buffer, {{2, 2, 1, 1}});
    EXPECT_EQ(paintedPixels(buffer.takeImage()), 2);
    add(buffer, {{3, 3, 0, 2}});
    const QImage second = buffer.takeImage();
    EXPECT_EQ(paintedPixels(second), 1);
    EXPECT_EQ(second.pixel(3, 3), offColour);
    EXPECT_EQ(paintedPixels(buffer.takeImage()), 0);
}

TEST(EventFrameBuffer, APictureTakenStaysAsItWas)
{
    EventFrameBuffer buffer;
    add(buffer, {{1, 1, 1, 0}});
    const QImage first = buffer.takeImage();
    for (int i = 0; i < 3; ++i) {
        add(buffer, {{20, 20, 1, 1}});
        buffer.takeImage();
    }
    EXPECT_EQ(first.pixel(1, 1), onColour);
    EXPECT_EQ(paintedPixels(first), 1);
}

TEST(EventFrameBuffer, TellsWhetherABatchCameSinceTheLastPictureAnEmptyOneIncluded)
{
    EventFrameBuffer buffer;
    EXPECT_FALSE(buffer.hasNewEvents());
    add(buffer, {{1, 1, 1, 0}});
    EXPECT_TRUE(buffer.hasNewEvents());
    EXPECT_TRUE(buffer.hasNewEvents()) << "asking changes nothing";
    buffer.takeImage();
    EXPECT_FALSE(buffer.hasNewEvents());
    buffer.addEvents(nullptr, nullptr);
    EXPECT_TRUE(buffer.hasNewEvents());
    buffer.takeImage();
    EXPECT_FALSE(buffer.hasNewEvents());
    add(buffer, {{1280, 0, 1, 0}});
    EXPECT_TRUE(buffer.hasNewEvents());
}

TEST(EventFrameBuffer, PicturesOfAnyEventsAreTheSameAsThoseSetPixelByPixel)
{
    std::mt19937 random(99);
    EventFrameBuffer buffer;
    for (int round = 0; round < 4; ++round) {
        std::vector<QRgb> expected(1280 * 720, background);
        for (int batch = 0; batch < 3; ++batch) {
            std::vector<Event2D> events;
            for (auto i = random() % 20000; i > 0; --i)
                events.emplace_back(static_cast<std::uint16_t>(random() % 1400),
                                    static_cast<std::uint16_t>(random() % 800),
                                    static_cast<std::uint8_t>(random() % 2), i);
            for (const Event2D& event : events) {
                if (event.x < 1280 && event.y < 720)
                    expected[event.y * 1280u + event.x] = event.polarity != 0 ? onColour : offColour;
            }
            add(buffer, events);
        }
        const QImage image = buffer.takeImage();
        for (int y = 0; y < 720; ++y) {
            for (int x = 0; x < 1280; ++x)
                ASSERT_EQ(image.pixel(x, y), expected[static_cast<std::size_t>(y * 1280 + x)]);
        }
    }
}

// Two sources add while pictures are taken: no event is lost and none is shown twice.
TEST(EventFrameBuffer, EveryEventIsInExactlyOnePictureWhileThreadsAddAndOneTakes)
{
    constexpr int columns = 600;
    EventFrameBuffer buffer;
    std::atomic<int> adding{2};
    const auto source = [&](std::uint16_t row) {
        for (std::uint16_t x = 0; x < columns; ++x) {
            const Event2D event(x, row, 1, x);
            buffer.addEvents(&event, &event + 1);
            std::this_thread::yield();
        }
        --adding;
    };
    std::thread first(source, std::uint16_t(10));
    std::thread second(source, std::uint16_t(700));
    int shown = 0;
    bool last = false;
    while (!last) {
        last = adding == 0;
        if (!last && !buffer.hasNewEvents())
            continue;
        const QImage image = buffer.takeImage();
        for (int x = 0; x < columns; ++x) {
            shown += image.pixel(x, 10) == onColour ? 1 : 0;
            shown += image.pixel(x, 700) == onColour ? 1 : 0;
        }
    }
    first.join();
    second.join();
    EXPECT_EQ(shown, 2 * columns);
    EXPECT_FALSE(buffer.hasNewEvents());
}
