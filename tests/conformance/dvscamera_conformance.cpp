#include "camera/driver/dvscamera.h"
#include "tests/conformance/fixture.h"
#include "tests/conformance/tools.h"

#include <atomic>
#include <tuple>

// What the program relies on with every DVS-only camera.

namespace conformance {

namespace {

using korvane::Event2D;

class DvsCameraConformance : public CameraTest
{
protected:
    std::shared_ptr<korvane::DvsCamera> open() const
    {
        auto camera = backend->openCamera(serial);
        EXPECT_NE(camera, nullptr) << serial << " opens";
        return camera;
    }
    static bool waitForBatch(korvane::DvsCamera& camera, std::vector<Event2D>& out)
    {
        return waitFor([&] { return camera.getNextEventBatch(out); });
    }
    static bool waitForEvents(korvane::DvsCamera& camera, std::vector<Event2D>& out)
    {
        return waitFor([&] { return camera.getNextEventBatch(out) && !out.empty(); });
    }
};

class DvsCameraCable : public DvsCameraConformance
{
protected:
    ~DvsCameraCable() override { GetParam().plug(true); }
};

bool before(const Event2D& a, const Event2D& b)
{
    return std::tuple(a.timestamp, a.y, a.x, a.polarity) < std::tuple(b.timestamp, b.y, b.x, b.polarity);
}

/// Whether the recording holds all events of the batch, its time base being another.
bool holdsBatch(const std::vector<Event2D>& recorded, const std::vector<Event2D>& batch)
{
    const Event2D& first = batch.front();
    for (const Event2D& candidate : recorded) {
        if (candidate.x != first.x || candidate.y != first.y || candidate.polarity != first.polarity)
            continue;
        std::vector<Event2D> wanted = batch;
        for (Event2D& event : wanted)
            event.timestamp = event.timestamp - first.timestamp + candidate.timestamp;
        std::sort(wanted.begin(), wanted.end(), before);
        const auto earlier = [](const Event2D& event, std::uint64_t time) { return event.timestamp < time; };
        const auto from = std::lower_bound(recorded.begin(), recorded.end(), candidate.timestamp, earlier);
        const auto to = std::lower_bound(from, recorded.end(), wanted.back().timestamp + 1, earlier);
        std::vector<Event2D> found(from, to);
        std::sort(found.begin(), found.end(), before);
        if (std::includes(found.begin(), found.end(), wanted.begin(), wanted.end(), before))
            return true;
    }
    return false;
}

} // namespace

TEST_P(DvsCameraConformance, ItsBackendHasANameAndListsItOnce)
{
    EXPECT_FALSE(backend->name().empty());
    EXPECT_EQ(backend->name(), backend->name());
    const auto found = backend->cameraDescriptions();
    EXPECT_EQ(std::count_if(found.begin(), found.end(),
                            [this](const auto& camera) { return camera.serial == serial; }),
              1);
    for (const auto& description : found)
        expectReasonableDescription(description);
}

TEST_P(DvsCameraConformance, OpensByItsOwnSerialAndAsItsOwnKindOnly)
{
    EXPECT_EQ(backend->openCamera(""), nullptr);
    EXPECT_EQ(backend->openCamera("no such camera"), nullptr);
    EXPECT_EQ(backend->openFusionCamera(serial), nullptr);
    EXPECT_NE(open(), nullptr);
}

TEST_P(DvsCameraConformance, IsListedWhileItIsOpenAndOpensAgainAfterwards)
{
    auto camera = open();
    ASSERT_NE(camera, nullptr);
    EXPECT_TRUE(isListed());
    camera.reset();
    EXPECT_NE(open(), nullptr);
}

TEST_P(DvsCameraConformance, GivesNothingBeforeItsStart)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    EXPECT_TRUE(camera->isConnected());
    std::vector<Event2D> batch;
    EXPECT_FALSE(camera->getNextEventBatch(batch));
    camera->releaseStream(0);
    camera->stop();
    const auto state = camera->recorderState();
    EXPECT_FALSE(state.writing);
    EXPECT_EQ(state.error, "");
}

TEST_P(DvsCameraConformance, BatchesAreSpansOfTheBatchTimeInTimeOrder)
{
    constexpr std::uint64_t span = 10000;
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    ASSERT_EQ(camera->start(), 0);
    camera->setBatchTime(span);
    // One that was under way may have the length of before.
    std::vector<Event2D> batch;
    ASSERT_TRUE(waitForBatch(*camera, batch));
    ASSERT_TRUE(waitForEvents(*camera, batch));
    std::uint64_t last = batch.back().timestamp;
    for (int i = 0; i < 10; ++i) {
        // What the vector held is replaced.
        batch.assign(3, Event2D(65535, 65535, 7, 0));
        ASSERT_TRUE(waitForBatch(*camera, batch));
        if (batch.empty())
            continue;
        EXPECT_TRUE(isInTimeOrder(batch));
        EXPECT_GE(batch.front().timestamp, last) << "times never step back from batch to batch";
        EXPECT_LT(batch.back().timestamp - batch.front().timestamp, span);
        for (const Event2D& event : batch) {
            ASSERT_LE(event.polarity, 1);
            ASSERT_LT(event.x, 65535);
            ASSERT_LT(event.y, 65535);
        }
        last = batch.back().timestamp;
    }
    camera->stop();
}

TEST_P(DvsCameraConformance, ABatchTimeOfZeroIsIgnored)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->setBatchTime(10000);
    camera->setBatchTime(0);
    ASSERT_EQ(camera->start(), 0);
    std::vector<Event2D> batch;
    EXPECT_TRUE(waitForEvents(*camera, batch));
    camera->stop();
}

TEST_P(DvsCameraConformance, AskingForABatchNeverWaits)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    ASSERT_EQ(camera->start(), 0);
    // Who waited for the next batch would wait for two seconds each time.
    camera->setBatchTime(2000000);
    std::vector<Event2D> batch;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 10; ++i)
        camera->getNextEventBatch(batch);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    camera->stop();
}

TEST_P(DvsCameraConformance, StopsAndStartsAsOftenAsTheUserLikes)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->setBatchTime(5000);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(camera->start(), 0);
        std::vector<Event2D> batch;
        ASSERT_TRUE(waitForEvents(*camera, batch)) << "after start " << i;
        camera->releaseStream(0);
        camera->stop();
        // The newest span may still be there, and no more.
        camera->getNextEventBatch(batch);
        EXPECT_FALSE(camera->getNextEventBatch(batch));
    }
    camera->stop();
    EXPECT_TRUE(camera->isConnected());
}

TEST_P(DvsCameraConformance, StopsWhileAnotherThreadReads)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    std::atomic<bool> done{false};
    std::thread reader([&] {
        std::vector<Event2D> batch;
        while (!done) {
            camera->getNextEventBatch(batch);
            camera->isConnected();
            std::this_thread::yield();
        }
    });
    for (unsigned i = 1; i <= 5; ++i) {
        EXPECT_EQ(camera->start(), 0);
        camera->setBatchTime(1000 * i);
        camera->stop();
    }
    done = true;
    reader.join();
}

TEST_P(DvsCameraConformance, DroppedWhileItStreamsItEnds)
{
    auto camera = open();
    ASSERT_NE(camera, nullptr);
    ASSERT_EQ(camera->start(), 0);
    std::vector<Event2D> batch;
    ASSERT_TRUE(waitForBatch(*camera, batch));
    camera.reset();
    EXPECT_NE(open(), nullptr) << "it was let go";
}

TEST_P(DvsCameraConformance, RecordsWhatIsSeen)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->setBatchTime(10000);
    ASSERT_EQ(camera->start(), 0);
    std::vector<Event2D> batch;
    ASSERT_TRUE(waitForEvents(*camera, batch));
    camera->startRecording(target("seen.raw"));
    auto state = camera->recorderState();
    EXPECT_TRUE(state.writing) << state.error;
    EXPECT_EQ(state.path, target("seen.raw"));
    // The first ones may have begun before the recording, the last ones may not have reached it.
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(waitForEvents(*camera, batch));
    std::vector<Event2D> later;
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(waitForEvents(*camera, later));
    camera->stopRecording();
    state = camera->recorderState();
    EXPECT_FALSE(state.writing);
    EXPECT_EQ(state.error, "");
    camera->stop();
    const auto recorded = eventsOf(target("seen.raw"));
    ASSERT_FALSE(recorded.empty());
    EXPECT_TRUE(isInTimeOrder(recorded));
    EXPECT_TRUE(holdsBatch(recorded, batch));
}

TEST_P(DvsCameraConformance, ARecordingAskedForBeforeTheStartBeginsWithIt)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->startRecording(target("new/folder/early.raw"));
    ASSERT_EQ(camera->start(), 0);
    std::vector<Event2D> batch;
    ASSERT_TRUE(waitForEvents(*camera, batch));
    ASSERT_TRUE(waitForEvents(*camera, batch));
    camera->stop();
    camera->stopRecording();
    EXPECT_FALSE(eventsOf(target("new/folder/early.raw")).empty()) << "a missing folder is made";
}

TEST_P(DvsCameraConformance, ARecordingReplacesNoFile)
{
    QFile file(decoded(target("taken.raw")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.write("precious");
    file.flush();
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->startRecording(target("taken.raw"));
    EXPECT_EQ(camera->recorderState().path, target("taken-1.raw"));
    ASSERT_EQ(camera->start(), 0);
    std::vector<Event2D> batch;
    ASSERT_TRUE(waitForEvents(*camera, batch));
    camera->stop();
    camera->stopRecording();
    file.seek(0);
    EXPECT_EQ(file.readAll(), QByteArray("precious"));
    EXPECT_FALSE(eventsOf(target("taken-1.raw")).empty());
}

TEST_P(DvsCameraConformance, ARecordingThatCannotBeMadeSaysWhyAndTheViewGoesOn)
{
    QFile file(decoded(target("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    ASSERT_EQ(camera->start(), 0);
    camera->startRecording(target("file/in/a/file.raw"));
    ASSERT_TRUE(waitFor([&camera] { return !camera->recorderState().writing; }));
    EXPECT_NE(camera->recorderState().error, "");
    std::vector<Event2D> batch;
    EXPECT_TRUE(waitForEvents(*camera, batch));
    camera->stopRecording();
    camera->stop();
}

TEST_P(DvsCameraConformance, DroppedWhileItRecordsItLeavesAWholeFile)
{
    auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->startRecording(target("dropped.raw"));
    ASSERT_EQ(camera->start(), 0);
    std::vector<Event2D> batch;
    ASSERT_TRUE(waitForEvents(*camera, batch));
    ASSERT_TRUE(waitForEvents(*camera, batch));
    camera.reset();
    EXPECT_FALSE(eventsOf(target("dropped.raw")).empty());
}

TEST_P(DvsCameraConformance, ItsToolsAnswerAndRefuse)
{
    const auto camera = open();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->getTool(korvane::ToolType::Aps), nullptr) << "it has no intensity sensor";
    ASSERT_EQ(camera->start(), 0);
    for (const auto type : allTools) {
        SCOPED_TRACE("tool " + std::to_string(static_cast<int>(type)));
        if (const auto tool = camera->getTool(type))
            checkTool(*tool, type);
    }
    camera->stop();
}

TEST_P(DvsCameraCable, PulledItIsGoneForGoodAndWhatCameIsInTheFile)
{
    auto camera = open();
    ASSERT_NE(camera, nullptr);
    camera->setBatchTime(5000);
    ASSERT_EQ(camera->start(), 0);
    camera->startRecording(target("pulled.raw"));
    std::vector<Event2D> batch;
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(waitForEvents(*camera, batch));
    GetParam().plug(false);
    ASSERT_TRUE(waitFor([&camera] { return !camera->isConnected(); }));
    EXPECT_FALSE(camera->getNextEventBatch(batch));
    EXPECT_TRUE(waitFor([this] { return !isListed(); }));
    EXPECT_NE(camera->start(), 0);
    camera->stopRecording();
    camera->stop();
    EXPECT_FALSE(eventsOf(target("pulled.raw")).empty());

    GetParam().plug(true);
    ASSERT_TRUE(waitFor([this] { return isListed(); }));
    EXPECT_FALSE(camera->isConnected()) << "once gone, gone for ever";
    EXPECT_NE(camera->start(), 0);
    camera.reset();
    camera = open();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->start(), 0);
    EXPECT_TRUE(waitForEvents(*camera, batch));
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DvsCameraConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DvsCameraCable);
INSTANTIATE_TEST_SUITE_P(Camera, DvsCameraConformance, testing::ValuesIn(dvsCameraSources()),
                         [](const auto& source) { return source.param.name; });
INSTANTIATE_TEST_SUITE_P(Camera, DvsCameraCable, testing::ValuesIn(withReachableCable(dvsCameraSources())),
                         [](const auto& source) { return source.param.name; });

} // namespace conformance
