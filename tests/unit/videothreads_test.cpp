#include "camera/recording/videoexport.h"
#include "camera/recording/videopicturequeue.h"
#include "tests/support/filesizelimit.h"
#include "tests/unit/videoexportfixture.h"

#include <thread>

// The two threads of an export, without an event loop: these run under the thread sanitizer.

using namespace korvane::recording;

TEST(VideoPictureQueue, HandsPicturesOverInOrderAndTakesThemBack)
{
    VideoPictureQueue queue;
    for (int i = 0; i < 3; ++i)
        queue.giveBack(VideoPicture::create(2, 2));
    std::thread drawing([&queue] {
        for (int k = 0; k < 200; ++k) {
            auto picture = queue.takeToDraw();
            *picture->draw().luma = static_cast<std::uint8_t>(k);
            queue.push(std::move(picture));
        }
        queue.end();
    });
    int k = 0;
    while (auto picture = queue.takeToEncode()) {
        EXPECT_EQ(*picture->draw().luma, k++);
        queue.giveBack(std::move(picture));
    }
    drawing.join();
    EXPECT_EQ(k, 200);
}

TEST(VideoPictureQueue, AClosedQueueHoldsNobodyUp)
{
    VideoPictureQueue queue;
    std::thread drawing([&queue] { EXPECT_FALSE(queue.takeToDraw()); });
    std::thread encoding([&queue] { EXPECT_FALSE(queue.takeToEncode()); });
    queue.close();
    drawing.join();
    encoding.join();
    EXPECT_FALSE(queue.takeToEncode());
}

TEST_F(VideoExportTest, DrawsAndEncodesOnTwoThreads)
{
    record(movingBar({320, 240}, 60, 50), {320, 240});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    expectLikeTheView(target(), start, end);
}

TEST_F(VideoExportTest, ADiskThatFillsUpEndsTheDrawing)
{
    record(movingBar({320, 240}, 120, 200), {320, 240});
    const CapturedMessages messages;
    const FileSizeLimit limit(300000);
    EXPECT_FALSE(exportTo("video.mp4", start, end));
    EXPECT_EQ(others(), QStringList());
}

TEST_F(VideoExportTest, TwoExportsOfOneRecordingAtATimeGetNamesOfTheirOwn)
{
    record(movingBar({320, 240}, 20, 50), {320, 240});
    std::thread other([this] { EXPECT_TRUE(exportTo("video.mp4", start, end)); });
    EXPECT_TRUE(exportTo("video.mp4", start, end));
    other.join();
    EXPECT_EQ(others().size(), 2);
    expectLikeTheView(target(), start, end);
    expectLikeTheView(target("video-1.mp4"), start, end);
}
