#include "display/framemailbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

QImage picture(int number)
{
    QImage image(1, 1, QImage::Format_RGB32);
    image.setPixel(0, 0, qRgb(number >> 16, number >> 8 & 0xFF, number & 0xFF));
    return image;
}

int numberOf(const QImage& image)
{
    return static_cast<int>(image.pixel(0, 0) & 0xFFFFFF);
}

} // namespace

TEST(FrameMailbox, IsEmptyAtFirst)
{
    FrameMailbox mailbox;
    EXPECT_TRUE(mailbox.take().isNull());
}

TEST(FrameMailbox, ANewerPictureReplacesTheOneThatWasNotFetched)
{
    FrameMailbox mailbox;
    mailbox.put(picture(1));
    mailbox.put(picture(2));
    EXPECT_EQ(numberOf(mailbox.take()), 2);
    EXPECT_TRUE(mailbox.take().isNull());
}

TEST(FrameMailbox, AsksToBeEmptiedOnceUntilItWas)
{
    FrameMailbox mailbox;
    EXPECT_TRUE(mailbox.put(picture(1)));
    EXPECT_FALSE(mailbox.put(picture(2)));
    EXPECT_FALSE(mailbox.put(picture(3)));
    mailbox.take();
    EXPECT_TRUE(mailbox.put(picture(4)));
    EXPECT_FALSE(mailbox.put(picture(5)));
}

TEST(FrameMailbox, ADroppedPictureLeavesTheRequestThatIsUnderWay)
{
    FrameMailbox mailbox;
    EXPECT_TRUE(mailbox.put(picture(1)));
    mailbox.drop();
    EXPECT_FALSE(mailbox.put(picture(2))) << "the first request has not been answered yet";
    EXPECT_EQ(numberOf(mailbox.take()), 2);
    mailbox.put(picture(3));
    mailbox.drop();
    EXPECT_TRUE(mailbox.take().isNull());
}

TEST(FrameMailbox, BetweenTwoThreadsEachRequestFindsANewerPictureAndTheLastArrives)
{
    constexpr int pictures = 3000;
    FrameMailbox mailbox;
    std::atomic<int> requests{0};
    std::atomic<int> tooMany{0};
    std::thread sender([&] {
        for (int number = 1; number <= pictures; ++number) {
            if (mailbox.put(picture(number)) && requests.fetch_add(1) != 0)
                ++tooMany;
        }
    });
    int last = 0;
    while (last < pictures && !testing::Test::HasFailure()) {
        if (requests == 0) {
            std::this_thread::yield();
            continue;
        }
        --requests;
        const QImage image = mailbox.take();
        EXPECT_FALSE(image.isNull());
        if (image.isNull())
            continue;
        EXPECT_GT(numberOf(image), last);
        last = numberOf(image);
    }
    sender.join();
    EXPECT_EQ(last, pictures);
    EXPECT_EQ(requests, 0);
    EXPECT_EQ(tooMany, 0) << "at most one request is pending";
}
