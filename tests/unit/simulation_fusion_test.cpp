#include "camera/recording/rawfilereader.h"
#include "camera/simulation/apsrenderer.h"
#include "camera/simulation/framecounts.h"
#include "camera/simulation/simulatedbackend.h"
#include "tests/unit/simulation_fusionpictures.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using korvane::ApsFrame;
using korvane::Event2D;
using korvane::EventCountFrame;
using korvane::simulation::ApsParameters;
using korvane::simulation::ApsRenderer;
using korvane::simulation::FrameCounts;
using korvane::simulation::FusionStage;
using korvane::simulation::SimulatedBackend;
using korvane::simulation::SimulatedCameraConfig;
using korvane::simulation::SimulatedFusionCamera;

using namespace korvane::simulation::testing;

TEST(ApsRenderer, ItsPicturesAreTexturedAndNoTwoAreEqual)
{
    ApsRenderer renderer(std::make_shared<const FusionStage>(stageConfig().seed));
    std::set<std::size_t> hashes;
    for (std::uint64_t k = 0; k < 12; ++k) {
        const ApsFrame frame = renderer.render(k * 33333);
        ASSERT_EQ(frame.width, 3840);
        ASSERT_EQ(frame.height, 2160);
        EXPECT_GE(lumaDeviation(frame), 40.0);
        const std::string_view bytes(reinterpret_cast<const char*>(frame.pixels),
                                     std::size_t{3840} * 2160 * 3);
        hashes.insert(std::hash<std::string_view>()(bytes));
    }
    EXPECT_EQ(hashes.size(), 12U);
}

TEST(ApsRenderer, DrawingOverAnOlderPictureEqualsDrawingAnew)
{
    const auto stage = std::make_shared<const FusionStage>(9);
    ApsRenderer used(stage);
    used.render(0);
    used.render(5'000'000);
    ApsRenderer fresh(stage);
    const ApsFrame again = used.render(11'000'000);
    const ApsFrame first = fresh.render(11'000'000);
    EXPECT_TRUE(std::equal(again.pixels, again.pixels + std::size_t{3840} * 2160 * 3, first.pixels));
}

TEST(ApsRenderer, ExposureGainAndBlackLevelAct)
{
    ApsRenderer renderer(std::make_shared<const FusionStage>(stageConfig().seed));
    const double standard = lumaMean(renderer.render(1));
    ApsParameters parameters;
    parameters.exposureUs = 2500;
    renderer.setParameters(parameters);
    const double shorter = lumaMean(renderer.render(1));
    // A quarter of the light, 2.2 being the screen's exponent.
    EXPECT_NEAR(shorter / standard, std::pow(0.25, 1 / 2.2), 0.05);
    parameters.gainDb = 12;
    renderer.setParameters(parameters);
    EXPECT_NEAR(lumaMean(renderer.render(1)), standard, 3.0);
    parameters.blackLevel = 30;
    renderer.setParameters(parameters);
    EXPECT_GT(lumaMean(renderer.render(1)), standard + 15.0);
}

TEST(ApsRenderer, TurnedUpsideDownTheFirstRowIsTheLast)
{
    ApsRenderer renderer(std::make_shared<const FusionStage>(stageConfig().seed));
    const ApsFrame upright = renderer.render(1);
    constexpr std::size_t rowBytes = std::size_t{3840} * 3;
    const std::vector<std::uint8_t> top(upright.pixels, upright.pixels + rowBytes);
    ApsParameters parameters;
    parameters.flipped = true;
    renderer.setParameters(parameters);
    const ApsFrame turned = renderer.render(1);
    EXPECT_TRUE(std::equal(top.begin(), top.end(), turned.pixels + 2159 * rowBytes));
}

TEST(FrameCounts, AFrameHasTheEventsAfterTheOneBeforeUpToItsOwnTime)
{
    FrameCounts counts;
    const std::vector<Event2D> events{
        {100, 5, 1, 33333}, {100, 5, 1, 33334}, {100, 5, 0, 66666}, {7, 5, 1, 66667}};
    counts.count(events);
    counts.closeFrame(33333);
    counts.closeFrame(66666);
    std::shared_ptr<EventCountFrame> frame;
    const std::size_t pixel = 5 * width + (width - 100);
    ASSERT_TRUE(counts.get(frame, 33333));
    EXPECT_EQ(frame->counts[2 * pixel + 1], 1);
    EXPECT_EQ(frame->counts[2 * pixel], 0);
    ASSERT_TRUE(counts.get(frame, 66666));
    EXPECT_EQ(frame->counts[2 * pixel + 1], 1);
    EXPECT_EQ(frame->counts[2 * pixel], 1);
    EXPECT_EQ(frame->counts[2 * (5 * width + (width - 7)) + 1], 0);
}

TEST(FrameCounts, AnOlderFrameAskedOutOfOrderIsStillThereAndAnUnknownOneIsNot)
{
    FrameCounts counts;
    for (std::uint64_t k = 1; k <= 20; ++k) {
        counts.count(std::vector<Event2D>{{std::uint16_t(k), 1, 1, k * 33333}});
        counts.closeFrame(k * 33333);
    }
    std::shared_ptr<EventCountFrame> frame;
    ASSERT_TRUE(counts.get(frame, 20 * 33333));
    ASSERT_TRUE(counts.get(frame, 15 * 33333));
    EXPECT_EQ(frame->counts[2 * (width + (width - 15)) + 1], 1);
    EXPECT_FALSE(counts.get(frame, 12 * 33333));
    EXPECT_FALSE(counts.get(frame, 20 * 33333 + 1));
    // A frame's own time may lie anywhere in its slot.
    ASSERT_TRUE(counts.get(frame, 15 * 33333 + 1));
    EXPECT_EQ(frame->counts[2 * (width + (width - 16)) + 1], 1);
    ASSERT_TRUE(counts.get(frame, 16 * 33333 - 1));
    EXPECT_EQ(frame->counts[2 * (width + (width - 16)) + 1], 1);
}

TEST(FrameCounts, TheEventsOfAFrameLeftOutBelongToTheNext)
{
    FrameCounts counts;
    counts.count(std::vector<Event2D>{{9, 1, 1, 10}, {9, 1, 1, 40000}, {9, 1, 0, 70000}});
    counts.closeFrame(99999);
    std::shared_ptr<EventCountFrame> frame;
    ASSERT_TRUE(counts.get(frame, 99999));
    EXPECT_EQ(frame->counts[2 * (width + (width - 9)) + 1], 2);
    EXPECT_EQ(frame->counts[2 * (width + (width - 9))], 1);
}

TEST(FrameCounts, TheEventsOfAFrameThatWasNotMadeBelongToTheNextAndWhatWasHandedOutStays)
{
    FrameCounts counts;
    counts.reopenLast(); // nothing to reopen
    counts.count(std::vector<Event2D>{{9, 1, 1, 10}, {9, 1, 1, 40000}});
    counts.closeFrame(33333);
    std::shared_ptr<EventCountFrame> early;
    ASSERT_TRUE(counts.get(early, 33333));
    counts.reopenLast();
    std::shared_ptr<EventCountFrame> frame;
    EXPECT_FALSE(counts.get(frame, 33333));
    counts.closeFrame(66666);
    ASSERT_TRUE(counts.get(frame, 66666));
    EXPECT_EQ(frame->counts[2 * (width + (width - 9)) + 1], 2);
    EXPECT_EQ(early->counts[2 * (width + (width - 9)) + 1], 1);
}

TEST(FrameCounts, ColumnZeroAndWhatLiesOutsideCountNowhere)
{
    FrameCounts counts;
    counts.count(std::vector<Event2D>{{0, 3, 1, 5}, {1280, 3, 1, 6}, {5, 720, 1, 7}});
    counts.closeFrame(33333);
    std::shared_ptr<EventCountFrame> frame;
    ASSERT_TRUE(counts.get(frame, 33333));
    EXPECT_TRUE(
        std::all_of(frame->counts.begin(), frame->counts.end(), [](int count) { return count == 0; }));
}

TEST(FrameCounts, EventsThatWaitLongForAFrameAreAllCountedForIt)
{
    FrameCounts counts;
    for (std::uint64_t k = 1; k <= 100; ++k)
        counts.count(std::vector<Event2D>{{9, 1, 1, k * 33333}});
    counts.closeFrame(100 * 33333);
    std::shared_ptr<EventCountFrame> frame;
    ASSERT_TRUE(counts.get(frame, 100 * 33333));
    EXPECT_EQ(frame->counts[2 * (width + (width - 9)) + 1], 100);
}

TEST(SimulatedFusionCamera, IsListedAndOpenedAsAFusionCameraOnly)
{
    SimulatedBackend backend;
    const std::string serial = stageConfig().serial;
    EXPECT_LE(serial.size(), 10U);
    EXPECT_EQ(backend.openCamera(serial), nullptr);
    EXPECT_EQ(backend.openFusionCamera("HAL-000001"), nullptr);
    const auto camera = backend.openFusionCamera(serial);
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->getDvsDesc().serial, serial);
    EXPECT_EQ(camera->getDvsDesc().product, "Pellix");
    EXPECT_EQ(backend.openFusionCamera(serial), nullptr) << "it is open already";
}

TEST(SimulatedFusionCamera, ItsEventsLieOnTheEdgesOfItsFramesAndMirroredTheyDoNot)
{
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    Receiver receiver(camera);
    std::mutex mutex;
    std::vector<Shares> shares;
    receiver.onFrame = [&](const ApsFrame& frame) {
        std::shared_ptr<EventCountFrame> counts;
        if (frame.timestamp % (10 * 33333) != 0 || !camera->getEventFrameAt(counts, frame.timestamp))
            return;
        const std::lock_guard lock(mutex);
        shares.push_back(edgeShares(frame, *counts));
    };
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(receiver.awaitFrames(25));
    camera->stop(korvane::STREAM_FUSION);
    const std::lock_guard lock(mutex);
    ASSERT_FALSE(shares.empty());
    for (const Shares& share : shares) {
        EXPECT_GT(share.events, 10'000U);
        EXPECT_GE(share.onEdges, 0.8);
        EXPECT_LT(share.mirrored, 0.3);
    }
}

TEST(SimulatedFusionCamera, AllEventsUpToAFramesTimeAreCountedWhenItComes)
{
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    Receiver receiver(camera);
    std::mutex mutex;
    std::map<std::uint64_t, std::uint64_t> counted;
    receiver.onFrame = [&](const ApsFrame& frame) {
        std::shared_ptr<EventCountFrame> counts;
        ASSERT_TRUE(camera->getEventFrameAt(counts, frame.timestamp));
        std::uint64_t sum = 0;
        for (const std::uint16_t count : counts->counts)
            sum += count;
        const std::lock_guard lock(mutex);
        counted[frame.timestamp] = sum;
    };
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(receiver.awaitFrames(6));
    camera->stop(korvane::STREAM_FUSION);
    const std::vector<Event2D> events = receiver.allEvents();
    std::uint64_t before = 0;
    const std::lock_guard lock(mutex);
    for (const auto& [time, sum] : counted) {
        const auto inside = std::count_if(
            events.begin(), events.end(), [before, frame = time](const Event2D& event) {
                return event.x != 0 && (before == 0 || event.timestamp > before) && event.timestamp <= frame;
            });
        EXPECT_EQ(static_cast<std::uint64_t>(inside), sum) << "frame at " << time;
        before = time;
    }
}

TEST(SimulatedFusionCamera, StoppedAndStartedAgainItsTimesGoOn)
{
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    Receiver receiver(camera);
    for (std::size_t round = 1; round <= 3; ++round) {
        camera->start(korvane::STREAM_FUSION);
        ASSERT_TRUE(receiver.awaitFrames(3 * round));
        camera->stop(korvane::STREAM_FUSION);
    }
    const auto times = receiver.frameTimes();
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    EXPECT_EQ(std::adjacent_find(times.begin(), times.end()), times.end());
    const auto events = receiver.allEvents();
    EXPECT_TRUE(std::is_sorted(events.begin(), events.end(),
                               [](const Event2D& a, const Event2D& b) { return a.timestamp < b.timestamp; }));
}

TEST(SimulatedFusionCamera, WithoutAnEncoderItRecordsItsEventsAlone)
{
    const QTemporaryDir folder;
    SimulatedCameraConfig config = stageConfig();
    config.failVideo = true;
    const auto camera = SimulatedFusionCamera::make(config);
    Receiver receiver(camera);
    const std::string path = folder.filePath(QStringLiteral("take.raw")).toStdString();
    camera->startRecording(path, korvane::STREAM_FUSION);
    const korvane::RecorderState state = camera->recorderState();
    EXPECT_TRUE(state.writing) << "the events";
    EXPECT_EQ(state.path, folder.filePath(QStringLiteral("take.mp4")).toStdString());
    EXPECT_FALSE(state.error.empty());
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(receiver.awaitFrames(3)) << "they are still seen";
    camera->stop(korvane::STREAM_FUSION);
    camera->stopRecording(korvane::STREAM_FUSION);
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("take.mp4"))));
    QString error;
    const auto reader = korvane::recording::RawFileReader::open(path, error);
    ASSERT_TRUE(reader && reader->loadFile()) << error.toStdString();
    std::size_t recorded = 0;
    while (const auto events = reader->getNextEvents(1'000'000))
        recorded += events->size();
    EXPECT_EQ(recorded, receiver.allEvents().size());
}

TEST(SimulatedFusionCamera, PulledItIsLostForGood)
{
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    Receiver receiver(camera);
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(receiver.awaitFrames(1));
    camera->pull();
    EXPECT_FALSE(camera->isConnected());
    camera->stop(korvane::STREAM_FUSION);
    const std::size_t frames = receiver.frameTimes().size();
    camera->start(korvane::STREAM_FUSION);
    camera->stop(korvane::STREAM_FUSION);
    EXPECT_EQ(receiver.frameTimes().size(), frames);
}

TEST(SimulatedFusionCamera, SurvivesThatItsLastPointerIsDroppedByItsOwnCallback)
{
    // The camera's threads may outlive a round by a moment: what they use is theirs as well.
    struct Holder
    {
        std::mutex mutex;
        std::condition_variable changed;
        std::shared_ptr<SimulatedFusionCamera> last;
        bool alone = false;
        bool dropped = false;

        void drop()
        {
            std::shared_ptr<SimulatedFusionCamera> going;
            {
                const std::lock_guard lock(mutex);
                if (!alone || dropped)
                    return;
                going.swap(last);
            }
            going.reset();
            const std::lock_guard lock(mutex);
            dropped = true;
            changed.notify_all();
        }
    };
    for (const bool byFrame : {true, false}) {
        const auto holder = std::make_shared<Holder>();
        auto camera = SimulatedFusionCamera::make(stageConfig());
        const std::weak_ptr<SimulatedFusionCamera> watched = camera;
        if (byFrame)
            camera->addApsFrameCallback([holder](const ApsFrame&) { holder->drop(); });
        else
            camera->addEventsStreamHandleCallback(
                [holder](const Event2D*, const Event2D*) { holder->drop(); });
        camera->start(korvane::STREAM_FUSION);
        std::unique_lock lock(holder->mutex);
        holder->last = std::move(camera);
        holder->alone = true;
        ASSERT_TRUE(
            holder->changed.wait_for(lock, std::chrono::seconds(30), [&] { return holder->dropped; }));
        EXPECT_TRUE(watched.expired());
    }
}

TEST(SimulatedFusionCamera, ExposureActsWhileItRuns)
{
    const auto camera = SimulatedFusionCamera::make(stageConfig());
    Receiver receiver(camera);
    std::atomic<int> first{-1};
    std::atomic<bool> darker{false};
    receiver.onFrame = [&](const ApsFrame& frame) {
        const int mean = static_cast<int>(lumaMean(frame));
        if (first < 0) {
            first = mean;
            ApsParameters parameters;
            parameters.exposureUs = 1000;
            camera->setApsParameters(parameters);
        } else if (mean < first / 2) {
            darker = true;
        }
    };
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(receiver.awaitFrames(4));
    camera->stop(korvane::STREAM_FUSION);
    EXPECT_TRUE(darker);
}
