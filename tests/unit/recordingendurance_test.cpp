#include "camera/recording/rawfilereader.h"
#include "camera/simulation/streameddvscamera.h"
#include "tests/support/temporaryrecordings.h"

#include <QTest>
#include <gtest/gtest.h>

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

} // namespace

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

    const auto file = TemporaryRecordings::load(path);
    ASSERT_TRUE(file);
    Tally kept;
    file->streamEvents(0, ~std::uint64_t(0), [&kept](std::span<const Event2D> events) {
        kept.add(events);
        return true;
    });
    EXPECT_EQ(kept.count, made.count);
    EXPECT_EQ(kept.sum, made.sum);
}
