#include "camera/driver/apsfilereader.h"
#include "camera/driver/fusioncamera.h"
#include "tests/conformance/fixture.h"
#include "tests/conformance/tools.h"

#include <mutex>

// What the program relies on with every fusion camera.

namespace conformance {

namespace {

using korvane::ApsFrame;
using korvane::Event2D;
using korvane::STREAM_FUSION;

/// What a camera has sent, and whether it broke a rule. The camera's threads call; any thread asks.
struct Received
{
    std::mutex mutex;
    std::uint64_t events = 0;
    std::uint64_t frames = 0;
    std::uint64_t lastEvent = 0;
    std::uint64_t lastFrame = 0;
    std::uint64_t framesWithCounts = 0;
    bool eventsInOrder = true;
    bool framesInOrder = true;
    bool framesWhole = true;
    bool countsWhole = true;
    bool unknownFrameHasCounts = false;
    bool stopped = false;
    bool calledAfterStop = false;

    std::uint64_t eventsNow()
    {
        const std::lock_guard lock(mutex);
        return events;
    }
    std::uint64_t framesNow()
    {
        const std::lock_guard lock(mutex);
        return frames;
    }
    void setStopped(bool value)
    {
        const std::lock_guard lock(mutex);
        stopped = value;
    }
};

constexpr std::size_t pixels = std::size_t(1280) * 720;

class FusionCameraConformance : public CameraTest
{
protected:
    std::shared_ptr<korvane::FusionCamera> open()
    {
        auto camera = backend->openFusionCamera(serial);
        EXPECT_NE(camera, nullptr) << serial << " opens";
        if (!camera)
            return camera;
        camera->addApsFrameCallback([to = received, weak = std::weak_ptr(camera)](const ApsFrame& frame) {
            take(*to, frame, weak.lock());
        });
        camera->addEventsStreamHandleCallback([to = received](const Event2D* begin, const Event2D* end) {
            const std::lock_guard lock(to->mutex);
            to->calledAfterStop |= to->stopped;
            if (begin == end)
                return;
            to->eventsInOrder &= isInTimeOrder(begin, end) && begin->timestamp >= to->lastEvent;
            to->lastEvent = (end - 1)->timestamp;
            to->events += static_cast<std::uint64_t>(end - begin);
        });
        return camera;
    }
    bool waitForBoth(std::uint64_t moreFrames)
    {
        const std::uint64_t frames = received->framesNow() + moreFrames;
        const std::uint64_t events = received->eventsNow();
        return waitFor([this, frames, events] {
            return received->framesNow() >= frames && received->eventsNow() > events;
        });
    }
    void stop(korvane::FusionCamera& camera)
    {
        camera.stop(STREAM_FUSION);
        received->setStopped(true);
    }

    std::shared_ptr<Received> received = std::make_shared<Received>();

private:
    static void take(Received& to, const ApsFrame& frame,
                     const std::shared_ptr<korvane::FusionCamera>& camera)
    {
        // Asked as the viewer asks: from within the callback, without a lock.
        std::shared_ptr<korvane::EventCountFrame> counts;
        const bool has = camera && camera->getEventFrameAt(counts, frame.timestamp);
        std::shared_ptr<korvane::EventCountFrame> none;
        const bool unknown = camera && camera->getEventFrameAt(none, frame.timestamp + 1);
        const std::lock_guard lock(to.mutex);
        to.calledAfterStop |= to.stopped;
        to.framesInOrder &= to.frames == 0 || frame.timestamp > to.lastFrame;
        to.framesWhole &= frame.pixels && frame.width > 0 && frame.height > 0;
        to.framesWithCounts += has ? 1 : 0;
        to.countsWhole &= !has || (counts && counts->counts.size() == 2 * pixels);
        to.unknownFrameHasCounts |= unknown;
        to.lastFrame = frame.timestamp;
        ++to.frames;
    }
};

class FusionCameraCable : public FusionCameraConformance
{
protected:
    ~FusionCameraCable() override { GetParam().plug(true); }
};

} // namespace

TEST_P(FusionCameraConformance, IsListedAndOpensAsAFusionCameraOnly)
{
    EXPECT_TRUE(isListed());
    for (const auto& description : backend->cameraDescriptions())
        expectReasonableDescription(description);
    EXPECT_EQ(backend->openCamera(serial), nullptr);
    EXPECT_EQ(backend->openFusionCamera(""), nullptr);
    EXPECT_EQ(backend->openFusionCamera("no such camera"), nullptr);
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->getDvsDesc().serial, serial);
    EXPECT_TRUE(camera->isConnected());
    EXPECT_FALSE(camera->recorderState().writing);
}

TEST_P(FusionCameraConformance, EventsAndFramesComeInTimeOrderUntilTheStop)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    for (int i = 0; i < 2; ++i) {
        received->setStopped(false);
        camera->start(STREAM_FUSION);
        ASSERT_TRUE(waitForBoth(3)) << "after start " << i;
        stop(*camera);
    }
    const std::lock_guard lock(received->mutex);
    EXPECT_TRUE(received->eventsInOrder);
    EXPECT_TRUE(received->framesInOrder);
    EXPECT_TRUE(received->framesWhole);
    EXPECT_FALSE(received->calledAfterStop);
}

TEST_P(FusionCameraConformance, TheEventsOfAFrameAreCountedWhenItComes)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->start(STREAM_FUSION);
    ASSERT_TRUE(waitForBoth(4));
    stop(*camera);
    const std::lock_guard lock(received->mutex);
    EXPECT_GT(received->framesWithCounts, 0U);
    EXPECT_TRUE(received->countsWhole) << "two counters a pixel";
    EXPECT_FALSE(received->unknownFrameHasCounts);
}

TEST_P(FusionCameraConformance, DroppedWhileItStreamsItLetsGoOfItsCallbacks)
{
    auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->start(STREAM_FUSION);
    ASSERT_TRUE(waitForBoth(1));
    const std::weak_ptr<Received> callbacks = received;
    camera.reset();
    received.reset();
    EXPECT_TRUE(waitFor([&callbacks] { return callbacks.expired(); }));
    received = std::make_shared<Received>();
    EXPECT_TRUE(waitFor([this] { return backend->openFusionCamera(serial) != nullptr; }));
}

TEST_P(FusionCameraConformance, RecordsEventsAndFramesSideBySide)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->startRecording(target("both.raw"), STREAM_FUSION);
    EXPECT_TRUE(camera->recorderState().writing) << camera->recorderState().error;
    EXPECT_EQ(camera->recorderState().path, target("both.raw"));
    camera->start(STREAM_FUSION);
    ASSERT_TRUE(waitForBoth(4));
    camera->stopRecording(STREAM_FUSION);
    stop(*camera);
    EXPECT_FALSE(camera->recorderState().writing);
    EXPECT_EQ(camera->recorderState().error, "");

    const auto events = eventsOf(target("both.raw"));
    ASSERT_FALSE(events.empty());
    EXPECT_TRUE(isInTimeOrder(events));
    const auto frames = korvane::ApsFileReader::createFileReader(target("both.mp4"));
    ASSERT_NE(frames, nullptr);
    ASSERT_TRUE(frames->loadFile());
    EXPECT_GT(frames->getWidth(), 0);
    EXPECT_GT(frames->getHeight(), 0);
    ApsFrame frame;
    ASSERT_TRUE(frames->getNextFrame(frame));
    EXPECT_EQ(frame.width, frames->getWidth());
    EXPECT_EQ(frame.height, frames->getHeight());
    EXPECT_FALSE(korvane::isExportedVideo(target("both.mp4")));
}

TEST_P(FusionCameraConformance, ARecordingThatCannotBeMadeSaysWhyAndTheViewGoesOn)
{
    QFile file(decoded(target("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->start(STREAM_FUSION);
    camera->startRecording(target("file/in/a/file.raw"), STREAM_FUSION);
    ASSERT_TRUE(waitFor([&camera] { return !camera->recorderState().writing; }));
    EXPECT_NE(camera->recorderState().error, "");
    EXPECT_TRUE(waitForBoth(1));
    camera->stopRecording(STREAM_FUSION);
    stop(*camera);
}

TEST_P(FusionCameraConformance, ItsToolsAnswerAndRefuse)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    for (const auto type : allTools) {
        SCOPED_TRACE("tool " + std::to_string(static_cast<int>(type)));
        if (const auto tool = camera->getTool(type))
            checkTool(*tool, type);
    }
}

TEST_P(FusionCameraCable, PulledItIsGoneForGoodAndWhatCameIsInTheFile)
{
    auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->startRecording(target("pulled.raw"), STREAM_FUSION);
    camera->start(STREAM_FUSION);
    ASSERT_TRUE(waitForBoth(2));
    GetParam().plug(false);
    ASSERT_TRUE(waitFor([&camera] { return !camera->isConnected(); }));
    EXPECT_TRUE(waitFor([this] { return !isListed(); }));
    camera->stopRecording(STREAM_FUSION);
    stop(*camera);
    EXPECT_FALSE(eventsOf(target("pulled.raw")).empty());
    GetParam().plug(true);
    ASSERT_TRUE(waitFor([this] { return isListed(); }));
    EXPECT_FALSE(camera->isConnected()) << "once gone, gone for ever";
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FusionCameraConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FusionCameraCable);
INSTANTIATE_TEST_SUITE_P(Camera, FusionCameraConformance, testing::ValuesIn(fusionCameraSources()),
                         [](const auto& source) { return source.param.name; });
INSTANTIATE_TEST_SUITE_P(Camera, FusionCameraCable,
                         testing::ValuesIn(withReachableCable(fusionCameraSources())),
                         [](const auto& source) { return source.param.name; });

} // namespace conformance
