#include "camera/recording/apsvideoreader.h"
#include "tests/unit/simulation_replayfusion.h"

#include <cstdint>
#include <map>

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

TEST_F(ReplayFusionTest, RecordedAgainEveryFrameKeepsItsSlot)
{
    writeEvents("take.raw");
    writeFrames("take.mp4");
    ReplayBackend backend(pathOf("take.raw"));
    const auto camera = backend.openFusionCamera("take");
    ASSERT_NE(camera, nullptr);
    Watcher watcher;
    watcher.watch(camera);
    camera->startRecording(folder.path("again.raw"), korvane::STREAM_FUSION);
    ASSERT_TRUE(camera->recorderState().writing) << camera->recorderState().error;
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(watcher.awaitFrames(slotCount));
    camera->stop(korvane::STREAM_FUSION);
    camera->stopRecording(korvane::STREAM_FUSION);

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
