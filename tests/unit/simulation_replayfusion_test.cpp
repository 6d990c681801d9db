#include "camera/simulation/replayframes.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/scriptedapsreader.h"
#include "tests/unit/simulation_replayfusion.h"

#include <algorithm>
#include <cstdint>
#include <memory>

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

TEST_F(ReplayFusionTest, ARecordingWithFramesBesideItIsAFusionCamera)
{
    writeEvents("take.one.raw");
    writeFrames("take.one.mp4");
    ReplayBackend backend(pathOf("take.one.raw"));
    EXPECT_EQ(productOf(backend), "Pellix");
    EXPECT_EQ(backend.openCamera("take.one"), nullptr);
    const auto camera = backend.openFusionCamera("take.one");
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->getDvsDesc().serial, "take.one");
    EXPECT_EQ(camera->getDvsDesc().product, "Pellix");
    EXPECT_EQ(backend.openFusionCamera("take.one"), nullptr) << "it is open already";
}

TEST_F(ReplayFusionTest, WithoutFramesItIsNot)
{
    writeEvents("take.raw");
    writeFrames("other.mp4");
    ReplayBackend backend(pathOf("take.raw"));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(backend.openFusionCamera("take"), nullptr);
    EXPECT_NE(backend.openCamera("take"), nullptr);
}

TEST_F(ReplayFusionTest, AnExportedVideoBesideItIsNoFrames)
{
    writeEvents("take.raw");
    writeExport("take.mp4");
    const CapturedMessages messages;
    ReplayBackend backend(pathOf("take.raw"));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(messages.of(QtInfoMsg).size(), 1) << "told once";
    EXPECT_TRUE(messages.warnings().isEmpty());
}

TEST_F(ReplayFusionTest, AFileThatIsNoVideoIsToldOnceAndTheEventsAreReplayed)
{
    writeEvents("take.raw");
    folder.write("take.mp4", "no video at all", {});
    const CapturedMessages messages;
    ReplayBackend backend(pathOf("take.raw"));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(messages.warnings().size(), 1);
    EXPECT_EQ(backend.openFusionCamera("take"), nullptr);
    EXPECT_NE(backend.openCamera("take"), nullptr);
}

TEST_F(ReplayFusionTest, FramesThatComeAndGoMakeAnotherCameraOfIt)
{
    writeEvents("take.raw");
    ReplayBackend backend(pathOf("take.raw"));
    ASSERT_EQ(productOf(backend), "Halvora");
    writeFrames("take.mp4");
    EXPECT_EQ(productOf(backend), "Pellix");
    EXPECT_NE(backend.openFusionCamera("take"), nullptr);
    ASSERT_TRUE(QFile::remove(pathOf("take.mp4")));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(backend.openFusionCamera("take"), nullptr);
}

TEST_F(ReplayFusionTest, EachFrameComesWithTheEventsOfItsSlotRoundAfterRound)
{
    ASSERT_NO_FATAL_FAILURE(openTake());
    take->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(watcher.awaitFrames(2 * slotCount + 1));
    take->stop(korvane::STREAM_FUSION);
    const std::lock_guard lock(watcher.mutex);
    std::uint64_t before = 0;
    for (const auto& frame : watcher.frames) {
        const std::uint64_t slot = frame.time / period;
        EXPECT_NEAR(frame.grey, greyOf(slot % slotCount), 2) << frame.time;
        ASSERT_TRUE(frame.hasCounts);
        const auto inside = std::count_if(watcher.events.begin(), watcher.events.end(),
                                          [before, end = (slot + 1) * period](const Event2D& event) {
                                              return event.x != 0 && (before == 0 || event.timestamp > before)
                                                  && event.timestamp <= end;
                                          });
        EXPECT_EQ(frame.counted, static_cast<std::uint64_t>(inside)) << frame.time;
        before = (slot + 1) * period;
    }
}

TEST_F(ReplayFusionTest, APulledCameraIsLostForGood)
{
    ASSERT_NO_FATAL_FAILURE(openTake());
    take->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(watcher.awaitFrames(1));
    offered->pull("take");
    EXPECT_FALSE(take->isConnected());
    take->stop(korvane::STREAM_FUSION);
    EXPECT_TRUE(offered->cameraDescriptions().empty());
}

TEST(ReplayFrames, GivesTheFrameOfTheSlotAndTheLastOneWhereThereIsNone)
{
    ScriptedLog log;
    auto video = std::make_unique<ScriptedApsReader>(3, log);
    ReplayFrames frames(std::move(video), 5 * period, 0);
    for (std::uint64_t k = 0; k < 12; ++k) {
        const ApsFrame frame = frames.frameAt((k + 1) * period);
        ASSERT_NE(frame.pixels, nullptr);
        EXPECT_EQ(frame.pixels[0], ScriptedApsReader::colourOf(std::min<std::size_t>(k % 5, 2))) << k;
        EXPECT_EQ(frame.timestamp, (k + 1) * period - 1);
    }
}

TEST(ReplayFrames, LeavesOutWhatASlowMachineHasNoTimeFor)
{
    ScriptedLog log;
    auto video = std::make_unique<ScriptedApsReader>(30, log);
    ReplayFrames frames(std::move(video), 30 * period, 0);
    for (const unsigned slot : {2U, 5U, 25U, 29U, 31U}) {
        const ApsFrame frame = frames.frameAt((slot + 1) * period);
        EXPECT_EQ(frame.pixels[0], ScriptedApsReader::colourOf(slot % 30)) << slot;
    }
}

TEST(ReplayFrames, WaitsForTheFirstEventAsTheStreamDoes)
{
    ScriptedLog log;
    auto video = std::make_unique<ScriptedApsReader>(4, log);
    ReplayFrames frames(std::move(video), 6 * period, period + 10);
    const std::size_t expected[] = {0, 0, 0, 1, 2, 3, 0};
    for (std::size_t k = 0; k < 7; ++k)
        EXPECT_EQ(frames.frameAt((k + 1) * period).pixels[0], ScriptedApsReader::colourOf(expected[k])) << k;
}
