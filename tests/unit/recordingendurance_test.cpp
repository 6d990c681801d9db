#include "camera/recording/newfile.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/recorder.h"
#include "camera/simulation/streameddvscamera.h"
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

/// How many events there were, and which in which order.
struct Tally
{
    std::uint64_t count = 0;
    std::uint64_t sum = 0;

    void add(std::span<const Event2D> events)
    {
        std::uint64_t running = sum;
        for (const Event2D& event : events) {
            const std::uint64_t pixel
                = event.x | (unsigned(event.y) << 11) | (unsigned(event.polarity) << 22);
            running = (running ^ (event.timestamp << 23) ^ pixel) * 0x9E3779B97F4A7C15ull;
        }
        sum = running;
        count += events.size();
    }
    friend bool operator==(const Tally&, const Tally&) = default;
};

/// Twenty events a microsecond, some of them neighbours. The same step again and again, later each time: what
/// the machine has to do is to record it, not to make it.
class DenseStream : public EventStream
{
public:
    static constexpr std::uint64_t stepUs = 2000;

    explicit DenseStream(Tally& made) : tally(made)
    {
        for (std::uint64_t t = 0; t < stepUs; ++t) {
            const auto row = static_cast<std::uint16_t>(t * 7 % 720);
            const auto column = static_cast<std::uint16_t>(t * 37 % 640);
            for (std::uint16_t i = 0; i < 14; ++i)
                step.emplace_back(static_cast<std::uint16_t>(column + i), row, std::uint8_t(t & 1), t);
            for (std::uint16_t i = 0; i < 6; ++i)
                step.emplace_back(static_cast<std::uint16_t>(column + 100 * i),
                                  static_cast<std::uint16_t>(719 - row), std::uint8_t(i & 1), t);
        }
    }
    korvane::recording::Geometry geometry() const override { return {1280, 720}; }
    std::uint64_t time() const override { return now; }
    std::uint64_t nextTime() const override { return now + stepUs; }
    StreamStep generateStep() override
    {
        if (now > 0) {
            for (Event2D& event : step)
                event.timestamp += stepUs;
        }
        now += stepUs;
        tally.add(step);
        return {step, {}, now};
    }

private:
    Tally& tally;
    std::vector<Event2D> step;
    std::uint64_t now = 0;
};

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
