#include "camera/recording/apsvideoreader.h"
#include "camera/recording/rawfilereader.h"
#include "display/kernels/fusionpainter.h"
#include "tests/unit/simulation_fusionpictures.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>
#include <vector>

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

TEST(SimulatedFusionCamera, InWhatItRecordedTheEventsLieOnTheEdgesAsPlaybackShowsThem)
{
    constexpr std::uint64_t tick = 33333; // of a playback, microseconds
    const QTemporaryDir folder;
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    camera->start(STREAM_FUSION);
    camera->startRecording(folder.filePath(QStringLiteral("take.raw")).toStdString(), STREAM_FUSION);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (camera->recordedFrames().pictures < 45 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    camera->stopRecording(STREAM_FUSION);
    camera->stop(STREAM_FUSION);

    QString error;
    const auto events
        = recording::RawFileReader::open(folder.filePath(QStringLiteral("take.raw")).toStdString(), error);
    const auto frames
        = recording::ApsVideoReader::open(folder.filePath(QStringLiteral("take.mp4")).toStdString(), error);
    ASSERT_TRUE(events && events->loadFile() && frames && frames->loadFile()) << error.toStdString();
    std::uint64_t start = 0;
    events->getStartTimestamp(start);
    ASSERT_TRUE(events->seekTime(start));
    ApsFrame frame;
    std::vector<std::uint8_t> before;
    std::size_t judged = 0;
    std::size_t onEdges = 0;
    std::size_t mirrored = 0;
    while (frames->getNextFrame(frame)) {
        const auto batch = events->getNextEvents(tick);
        ASSERT_TRUE(batch);
        // A slot that a slow machine had no frame for repeats the one before: its events have moved on.
        std::vector<std::uint8_t> pixels(frame.pixels, frame.pixels + std::size_t{3840} * 2160 * 3);
        if (std::exchange(before, std::move(pixels)) == before || batch->size() < 1000)
            continue;
        EventCountFrame counts;
        counts.counts.resize(std::size_t{width} * height * 2);
        kernels::countEvents(batch->data(), batch->data() + batch->size(), counts.counts, width);
        const Shares shares = edgeShares(frame, counts);
        ++judged;
        onEdges += shares.onEdges >= 0.8 ? 1U : 0U;
        mirrored += shares.mirrored >= 0.3 ? 1U : 0U;
    }
    EXPECT_GE(judged, 20U);
    EXPECT_EQ(onEdges, judged);
    EXPECT_EQ(mirrored, 0U);
}
