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

/// Grey frames; drawing one takes as long as a test says.
class ScriptedFrames : public FrameSource
{
public:
    explicit ScriptedFrames(std::chrono::milliseconds time) : drawing(time) {}
    ApsFrame frameAt(std::uint64_t time) override
    {
        std::this_thread::sleep_for(drawing);
        // The first three cannot be had.
        if (drawing.count() == 0 && asked++ < 3)
            return {nullptr, 3840, 2160, time};
        return {pixels.data(), 3840, 2160, time};
    }

private:
    const std::chrono::milliseconds drawing;
    int asked = 0;
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(std::size_t{3840} * 2160 * 3, 128);
};

/// A door that writers of a file wait at.
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

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool open = true;
};

class DisturbedFile : public QBuffer
{
public:
    explicit DisturbedFile(Door& way) : door(way) {}

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
    static std::shared_ptr<TestCamera> make(std::chrono::milliseconds drawing, Door& door)
    {
        return share(new TestCamera(drawing, door));
    }

private:
    TestCamera(std::chrono::milliseconds drawing, Door& door)
        : StreamedFusionCamera({"FUSION", "Pellix", {}}, std::make_unique<ScriptedStream>(),
                               std::make_unique<ScriptedFrames>(drawing))
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
    const auto camera = TestCamera::make(std::chrono::milliseconds(0), door);
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

TEST(StreamedFusionCamera, EventsOfFramesThatCouldNotBeHadAreCountedForTheNextOne)
{
    Door door;
    const auto camera = TestCamera::make(std::chrono::milliseconds(0), door);
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
    const auto camera = TestCamera::make(std::chrono::milliseconds(80), door);
    std::atomic<int> frames = 0;
    camera->addApsFrameCallback([&frames](const ApsFrame&) { ++frames; });
    for (int i = 1; i <= 2; ++i) {
        camera->start(korvane::STREAM_FUSION);
        EXPECT_TRUE(wait([&] { return frames >= 4 * i; }));
        camera->stop(korvane::STREAM_FUSION);
    }
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("fewer than 30 intensity frames")).size(), 1);
}
