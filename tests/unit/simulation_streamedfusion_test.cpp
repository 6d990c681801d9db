#include "camera/recording/rawfilereader.h"
#include "camera/simulation/streamedfusioncamera.h"
#include "tests/support/capturedmessages.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace korvane::simulation;
using korvane::ApsFrame;
using korvane::Event2D;

/// One event every 16 ms.
class ScriptedStream : public EventStream
{
public:
    korvane::recording::Geometry geometry() const override { return {1280, 720}; }
    std::uint64_t time() const override { return now; }
    std::uint64_t nextTime() const override { return now + length; }
    StreamStep generateStep() override
    {
        event = {1, 2, 1, now};
        now += length;
        return {{&event, 1}, {}, now};
    }

private:
    static constexpr std::uint64_t length = 16'000; ///< microseconds
    std::uint64_t now = 0;
    Event2D event;
};

/// Draws a frame, on the frame thread; false when it cannot be had.
using Draw = std::function<bool()>;

/// Grey frames.
class ScriptedFrames : public FrameSource
{
public:
    explicit ScriptedFrames(Draw drawing) : draw(std::move(drawing)) {}
    ApsFrame frameAt(std::uint64_t time) override
    {
        return {!draw || draw() ? pixels.data() : nullptr, 3840, 2160, time};
    }

private:
    const Draw draw;
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(std::size_t{3840} * 2160 * 3, 128);
};

/// A door that writers of a file wait at. Open at first.
class Door
{
public:
    void set(bool opened)
    {
        {
            const std::lock_guard lock(mutex);
            open = opened;
        }
        changed.notify_all();
    }
    void pass()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return open; });
    }

    std::atomic<int> files{0}; ///< that are being written behind it

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool open = true;
};

class DisturbedFile : public QBuffer
{
public:
    explicit DisturbedFile(Door& way) : door(way) { ++door.files; }
    ~DisturbedFile() override { --door.files; }
    DisturbedFile(const DisturbedFile&) = delete;
    DisturbedFile& operator=(const DisturbedFile&) = delete;

protected:
    qint64 writeData(const char* data, qint64 size) override
    {
        door.pass();
        return QBuffer::writeData(data, size);
    }

private:
    Door& door;
};

class TestCamera : public StreamedFusionCamera
{
public:
    /// Its videos are written through `door`.
    static std::shared_ptr<TestCamera> make(Door& door, Draw draw = {})
    {
        return share(new TestCamera(door, std::move(draw)));
    }

private:
    TestCamera(Door& door, Draw draw)
        : StreamedFusionCamera({"FUSION", "Pellix", {}}, std::make_unique<ScriptedStream>(),
                               std::make_unique<ScriptedFrames>(std::move(draw)))
    {
        frameRecorder().setOpenDevice([&door](const QString&, QString&) -> std::unique_ptr<QIODevice> {
            auto file = std::make_unique<DisturbedFile>(door);
            return file->open(QIODevice::ReadWrite) ? std::move(file) : nullptr;
        });
    }
};

bool wait(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(40);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace

TEST(StreamedFusionCamera, EventsComeWhileAVideoIsCompletedOnASlowDisk)
{
    const QTemporaryDir folder;
    Door door;
    std::atomic<int> batches = 0;
    const auto camera = TestCamera::make(door);
    camera->addEventsStreamHandleCallback([&batches](const Event2D*, const Event2D*) { ++batches; });
    camera->start(korvane::STREAM_FUSION);
    camera->startRecording(folder.filePath(QStringLiteral("take.raw")).toStdString(), korvane::STREAM_FUSION);
    ASSERT_TRUE(wait([&] { return camera->recordedFrames().pictures > 0; }));
    door.set(false);
    std::atomic<bool> stopped = false;
    std::thread stopping([&] {
        camera->stopRecording(korvane::STREAM_FUSION);
        stopped = true;
    });
    // More than can have been under way before the stop began.
    const int before = batches;
    EXPECT_TRUE(wait([&] { return batches > before + 20; }));
    EXPECT_FALSE(stopped) << "the video waits for its disk";
    door.set(true);
    stopping.join();
    EXPECT_FALSE(camera->recorderState().writing);
    EXPECT_EQ(camera->recorderState().error, "");
    camera->stop(korvane::STREAM_FUSION);
}

TEST(StreamedFusionCamera, ARecordingThatCannotBeginEndsTheOneBeforeWithItsVideo)
{
    const QTemporaryDir folder;
    const CapturedMessages messages;
    Door door;
    const auto camera = TestCamera::make(door);
    camera->start(korvane::STREAM_FUSION);
    camera->startRecording(folder.filePath(QStringLiteral("take.raw")).toStdString(), korvane::STREAM_FUSION);
    ASSERT_TRUE(wait([&] { return camera->recordedFrames().pictures > 0; }));
    EXPECT_EQ(door.files, 1);
    camera->startRecording(folder.path().toStdString() + '/', korvane::STREAM_FUSION);
    EXPECT_FALSE(camera->recorderState().writing);
    EXPECT_EQ(camera->recorderState().error, "the file has no name");
    EXPECT_EQ(door.files, 0);
    camera->stop(korvane::STREAM_FUSION);
}

TEST(StreamedFusionCamera, AFrameThatComesAfterARecordingsLastEventIsNotInItsVideo)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("take.raw")).toStdString();
    constexpr int late = 20; // of some the encoder of a busy machine has none
    std::atomic<int> frames = 0;
    CapturedMessages messages;
    messages.onLine = [&](const QString& line) {
        // That the next recording has no file is told when the events of this one are over, its video not.
        if (line.contains(QStringLiteral("the file has no name"))) {
            EXPECT_TRUE(wait([&frames, before = frames.load()] { return frames > before + late; }));
        }
    };
    Door door;
    const auto camera = TestCamera::make(door);
    camera->addApsFrameCallback([&frames](const ApsFrame&) { ++frames; });
    camera->start(korvane::STREAM_FUSION);
    camera->startRecording(path, korvane::STREAM_FUSION);
    ASSERT_TRUE(wait([&] { return camera->recordedFrames().pictures > 2; }));
    camera->startRecording(folder.path().toStdString() + '/', korvane::STREAM_FUSION);
    camera->stop(korvane::STREAM_FUSION);

    QString error;
    const auto events = korvane::recording::RawFileReader::open(path, error);
    ASSERT_TRUE(events && events->loadFile()) << error.toStdString();
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    events->getStartTimestamp(first);
    events->getEndTimestamp(last);
    const std::uint64_t covered = (last - first) / StreamedFusionCamera::framePeriod + 1;
    EXPECT_GE(camera->recordedFrames().pictures, covered);
    // The last step of the stream may bring a frame that is later than the step's only event.
    EXPECT_LE(camera->recordedFrames().pictures, covered + 1);
}

TEST(StreamedFusionCamera, EventsOfFramesThatCouldNotBeHadAreCountedForTheNextOne)
{
    Door door;
    const auto camera = TestCamera::make(door, [asked = 0]() mutable { return ++asked > 3; });
    std::atomic<int> counted = -1; // the events of the first frame
    camera->addApsFrameCallback([&](const ApsFrame& frame) {
        std::shared_ptr<korvane::EventCountFrame> counts;
        if (counted >= 0 || !camera->getEventFrameAt(counts, frame.timestamp))
            return;
        counted = std::accumulate(counts->counts.begin(), counts->counts.end(), 0);
    });
    camera->start(korvane::STREAM_FUSION);
    EXPECT_TRUE(wait([&] { return counted >= 0; }));
    camera->stop(korvane::STREAM_FUSION);
    EXPECT_GE(counted, 8) << "an event each 16 ms for four frames and more";
}

TEST(StreamedFusionCamera, SaysOnceThatItMakesFewerFramesHoweverOftenItIsStarted)
{
    Door door;
    const CapturedMessages messages;
    const auto camera = TestCamera::make(door, [] {
        std::this_thread::sleep_for(std::chrono::milliseconds(80));
        return true;
    });
    std::atomic<int> frames = 0;
    camera->addApsFrameCallback([&frames](const ApsFrame&) { ++frames; });
    for (int i = 1; i <= 2; ++i) {
        camera->start(korvane::STREAM_FUSION);
        EXPECT_TRUE(wait([&] { return frames >= 4 * i; }));
        camera->stop(korvane::STREAM_FUSION);
    }
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("fewer than 30 intensity frames")).size(), 1);
}
