#include "camera/recording/newfile.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/recorder.h"
#include "camera/simulation/streameddvscamera.h"
#include "tests/support/densestream.h"
#include "tests/support/temporaryrecordings.h"

#include <QTest>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using korvane::Event2D;
using namespace korvane::simulation;

/// A reader of the live picture that is asleep most of the time.
class SleepyReader
{
public:
    explicit SleepyReader(korvane::DvsCamera& from) : camera(from), thread([this] { run(); }) {}
    ~SleepyReader()
    {
        {
            const std::lock_guard lock(mutex);
            ending = true;
        }
        wake.notify_all();
        thread.join();
    }
    SleepyReader(const SleepyReader&) = delete;
    SleepyReader& operator=(const SleepyReader&) = delete;

private:
    void run()
    {
        std::vector<Event2D> batch;
        std::unique_lock lock(mutex);
        while (!wake.wait_for(lock, std::chrono::seconds(3), [this] { return ending; }))
            camera.getNextEventBatch(batch);
    }

    korvane::DvsCamera& camera;
    std::mutex mutex;
    std::condition_variable wake;
    bool ending = false; // guarded by mutex
    std::thread thread; // last: uses all of the above
};

/// A new file on a disk that takes so many bytes a second and no more.
class SlowDiskFile : public korvane::recording::NewFile
{
public:
    static constexpr double bytesPerSecond = 12e6;

    bool write(std::span<const std::uint8_t> bytes) override
    {
        free = std::max(free, std::chrono::steady_clock::now())
            + std::chrono::nanoseconds(
                   static_cast<std::int64_t>(1e9 / bytesPerSecond * double(bytes.size())));
        std::this_thread::sleep_until(free);
        return NewFile::write(bytes);
    }

private:
    std::chrono::steady_clock::time_point free;
};

/// All events of a recording.
Tally tallyOf(const std::string& path)
{
    Tally kept;
    if (const auto file = TemporaryRecordings::load(path)) {
        file->streamEvents(0, ~std::uint64_t(0), [&kept](std::span<const Event2D> events) {
            kept.add(events);
            return true;
        });
    }
    return kept;
}

} // namespace

TEST(RecordingEndurance, ADiskTooSlowForTwentyMillionEventsASecondHoldsTheStreamBackAndLosesNothing)
{
    using korvane::recording::Recorder;
    constexpr std::uint64_t length = 600'000; // microseconds
    const TemporaryRecordings recordings;
    const std::string path = recordings.path("slow.raw");
    Tally made;
    DenseStream stream(made);
    Recorder recorder({1280, 720}, "TST-000001", [](const QString& name, QString& error, bool& taken) {
        auto file = std::make_unique<SlowDiskFile>();
        if (file->open(name))
            return file;
        error = file->errorString();
        taken = file->isTaken();
        return std::unique_ptr<SlowDiskFile>();
    });
    recorder.start(path);
    const auto begin = std::chrono::steady_clock::now();
    while (stream.time() < length) {
        const StreamStep step = stream.generateStep();
        recorder.push(step.events, step.triggers);
        ASSERT_TRUE(recorder.state().writing);
        std::this_thread::sleep_until(begin + std::chrono::microseconds(stream.time()));
    }
    EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::microseconds(length * 6 / 5))
        << "the stream waited for the disk";
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "");
    EXPECT_EQ(made.count, 20 * length);
    EXPECT_EQ(tallyOf(path), made);
}

TEST(RecordingEndurance, TwentySecondsAtTwentyMillionEventsASecondLoseNothingWhileTheReaderSleeps)
{
    constexpr std::uint64_t length = 20'000'000; // microseconds
    const TemporaryRecordings recordings;
    const std::string path = recordings.path("long.raw");
    Tally made;
    StreamedDvsCamera camera("TST-000001", std::make_unique<DenseStream>(made));
    camera.setBatchTime(33333);
    camera.startRecording(path);
    ASSERT_EQ(camera.start(), 0);
    {
        const SleepyReader reader(camera);
        ASSERT_TRUE(QTest::qWaitFor([&camera] { return camera.sensorTime() >= length; }, 80'000));
    }
    camera.stop();
    EXPECT_TRUE(camera.recorderState().writing);
    camera.stopRecording();
    ASSERT_EQ(camera.recorderState().error, "");
    ASSERT_GE(made.count, 20 * length);

    EXPECT_EQ(tallyOf(path), made);
}
