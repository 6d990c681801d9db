#include "camera/recording/apsvideoreader.h"
#include "tests/unit/simulation_replayfusion.h"

#include <cstdint>
#include <map>

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

TEST_F(ReplayFusionTest, RecordedAgainEveryFrameKeepsItsSlot)
{
    ASSERT_NO_FATAL_FAILURE(openTake());
    take->startRecording(folder.path("again.raw"), korvane::STREAM_FUSION);
    ASSERT_TRUE(take->recorderState().writing) << take->recorderState().error;
    take->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(watcher.awaitFrames(slotCount));
    take->stop(korvane::STREAM_FUSION);
    take->stopRecording(korvane::STREAM_FUSION);

    QString error;
    const auto video = korvane::recording::ApsVideoReader::open(folder.path("again.mp4"), error);
    ASSERT_TRUE(video && video->loadFile()) << error.toStdString();
    std::map<std::uint64_t, int> shown; // of the frames that a slow machine has left out none is asked for
    {
        const std::lock_guard lock(watcher.mutex);
        for (const auto& frame : watcher.frames)
            shown[frame.time / period] = frame.grey;
    }
    ApsFrame frame;
    for (const auto& [slot, grey] : shown) {
        video->seekFrame(slot * period, frame);
        ASSERT_NE(frame.pixels, nullptr);
        EXPECT_EQ(frame.timestamp, slot * period);
        EXPECT_NEAR(frame.pixels[0], grey, 3) << slot;
    }
}
