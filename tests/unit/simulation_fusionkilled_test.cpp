#include "camera/recording/apsvideoreader.h"
#include "camera/recording/rawfilereader.h"
#include "camera/simulation/simulatedcameraconfig.h"
#include "camera/simulation/simulatedfusioncamera.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include <csignal>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using korvane::recording::ApsVideoReader;
using korvane::recording::RawFileReader;
using korvane::simulation::SimulatedFusionCamera;

TEST(SimulatedFusionCamera, KilledWhileItRecordsBothFilesPlayUpToTheLastSecond)
{
    const QTemporaryDir folder;
    const std::string raw = folder.filePath(QStringLiteral("take.raw")).toStdString();
    // How far the child's sensor has come, where both see it; microseconds.
    auto* const reached = static_cast<std::atomic<std::uint64_t>*>(
        mmap(nullptr, sizeof(std::atomic<std::uint64_t>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
             -1, 0));
    ASSERT_NE(reached, MAP_FAILED);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Nothing of the test's own may run in the child: it records until it is killed.
        const auto cameras = korvane::simulation::standardCameras();
        const auto config = std::find_if(cameras.begin(), cameras.end(),
                                         [](const auto& camera) { return camera.product == "Pellix"; });
        const auto camera = SimulatedFusionCamera::make(*config);
        camera->addApsFrameCallback(
            [reached](const korvane::ApsFrame& frame) { *reached = frame.timestamp; });
        camera->startRecording(raw, korvane::STREAM_FUSION);
        camera->start(korvane::STREAM_FUSION);
        for (;;)
            pause();
    }
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (*reached < 4'000'000 && std::chrono::steady_clock::now() < patience)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::uint64_t recorded = *reached;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    munmap(reached, sizeof *reached);
    ASSERT_GE(recorded, 4'000'000U);

    QString error;
    const auto events = RawFileReader::open(raw, error);
    ASSERT_TRUE(events && events->loadFile()) << error.toStdString();
    std::uint64_t end = 0;
    events->getEndTimestamp(end);
    EXPECT_GE(end + 1'000'000, recorded);
    const auto frames
        = ApsVideoReader::open(folder.filePath(QStringLiteral("take.mp4")).toStdString(), error);
    ASSERT_TRUE(frames && frames->loadFile()) << error.toStdString();
    std::vector<std::uint64_t> index;
    frames->getFrameIndex(index);
    ASSERT_FALSE(index.empty());
    EXPECT_GE(index.back() + 1'000'000, recorded);
    korvane::ApsFrame frame;
    std::size_t played = 0;
    while (frames->getNextFrame(frame))
        ++played;
    EXPECT_EQ(played, index.size());
}
