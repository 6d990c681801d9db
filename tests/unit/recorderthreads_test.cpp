#include "camera/recording/recorder.h"
#include "camera/recording/recordingwriter.h"
#include "tests/support/temporaryrecordings.h"

#include <QFileInfo>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// The recorder under several threads, without an event loop: these run under the thread sanitizer.

using namespace korvane;
using namespace korvane::recording;

namespace {

/// A disk that takes nothing until it is told to.
class Disk
{
public:
    void release()
    {
        {
            const std::lock_guard lock(mutex);
            released = true;
        }
        changed.notify_all();
    }
    void waitForRelease()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return released; });
    }
    std::atomic<std::uint64_t> written{0};
    std::atomic<std::uint64_t> events{0}; ///< single ones

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool released = false; // guarded by mutex
};

class SlowFile : public OutputFile
{
public:
    explicit SlowFile(Disk& under) : disk(under) {}
    bool write(std::span<const std::uint8_t> bytes) override
    {
        disk.waitForRelease();
        // The header comes first and by itself.
        if (disk.written > 0) {
            std::uint64_t events = 0;
            for (std::size_t high = 1; high < bytes.size(); high += 2)
                events += bytes[high] >> 4 == 0x2 ? 1u : 0u;
            disk.events += events;
        }
        disk.written += bytes.size();
        return true;
    }
    bool close() override { return true; }
    void discard() override {}
    std::uint64_t size() const override { return disk.written; }
    QString errorString() const override { return {}; }

private:
    Disk& disk;
};

/// One event a microsecond, all at one pixel.
std::vector<Event2D> batch(std::uint64_t number, std::size_t size)
{
    std::vector<Event2D> events;
    for (std::size_t i = 0; i < size; ++i)
        events.emplace_back(std::uint16_t(1), std::uint16_t(0), std::uint8_t(1), number * size + i);
    return events;
}

class RecorderThreads : public testing::Test
{
protected:
    Recorder::OpenFile onDisk()
    {
        return [this](const QString&, QString&, bool&) { return std::make_unique<SlowFile>(disk); };
    }

    Disk disk;
    TemporaryRecordings recordings;
};

TEST_F(RecorderThreads, ASlowDiskHoldsTheStreamBackAndLosesNothing)
{
    constexpr std::size_t size = 256 * 1024;
    constexpr std::uint64_t batches = RecordingWriter::queueRecords / size + 4;
    const auto events = batch(0, size);
    Recorder recorder({640, 480}, {}, onDisk());
    recorder.start(recordings.path("slow.raw"));
    std::atomic<std::uint64_t> pushed{0};
    std::thread stream([&] {
        for (std::uint64_t i = 0; i < batches; ++i) {
            recorder.push(events.data(), events.data() + events.size());
            pushed = i + 1;
        }
    });
    // The stream comes as far as the queue goes, and no further.
    while (pushed * size < RecordingWriter::queueRecords)
        std::this_thread::yield();
    EXPECT_LE(pushed * size, RecordingWriter::queueRecords + 2 * size);
    EXPECT_LT(pushed, batches);
    EXPECT_TRUE(recorder.state().writing);
    disk.release();
    stream.join();
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "");
    // All of one pixel: each has a word of its own.
    EXPECT_EQ(disk.events, batches * size);
}

TEST_F(RecorderThreads, WhatWasPushedBeforeAFaultOfThePushingSideIsWritten)
{
    RecordingWriter writer(std::make_unique<SlowFile>(disk), headOfNow({640, 480}, {}),
                           QStringLiteral("slow.raw"));
    for (std::uint64_t i = 0; i < 5; ++i)
        writer.push(batch(i, 1000));
    writer.abandon(QStringLiteral("no memory"));
    EXPECT_TRUE(writer.failed());
    writer.push(batch(5, 1000));
    disk.release();
    EXPECT_FALSE(writer.finish());
    EXPECT_EQ(writer.error(), QStringLiteral("no memory"));
    EXPECT_EQ(disk.events, 5000u);
}

TEST_F(RecorderThreads, WhatIsKeptForReuseIsBounded)
{
    RecordingWriter writer(std::make_unique<SlowFile>(disk), headOfNow({640, 480}, {}),
                           QStringLiteral("slow.raw"));
    constexpr std::size_t size = 100 * 1024;
    const auto events = batch(0, size);
    for (int i = 0; i < 12; ++i)
        writer.push(events);
    disk.release();
    EXPECT_TRUE(writer.finish());
    EXPECT_EQ(disk.events, 12 * size);
    EXPECT_GE(writer.roomKept(), size);
    EXPECT_LE(writer.roomKept(), RecordingWriter::mostSpare);
}

TEST_F(RecorderThreads, StoppingSetsAStreamFreeThatWaitsForTheDisk)
{
    constexpr std::size_t size = 256 * 1024;
    const auto events = batch(0, size);
    Recorder recorder({640, 480}, {}, onDisk());
    recorder.start(recordings.path("slow.raw"));
    std::atomic<std::uint64_t> pushed{0};
    std::atomic<bool> ending{false};
    std::thread stream([&] {
        while (!ending) {
            recorder.push(events.data(), events.data() + events.size());
            ++pushed;
        }
    });
    while (pushed * size < RecordingWriter::queueRecords)
        std::this_thread::yield();
    std::thread stopping([&] { recorder.stop(); });
    // Long before the disk goes on: pushing does nothing now.
    const std::uint64_t before = pushed;
    while (pushed < before + 10)
        std::this_thread::yield();
    disk.release();
    stopping.join();
    ending = true;
    stream.join();
    EXPECT_EQ(recorder.state().error, "");
}

TEST_F(RecorderThreads, RecordingsComeAndGoWhileTheStreamRunsAndItsStateIsAsked)
{
    Recorder recorder({640, 480}, "TST-000001");
    std::atomic<bool> ending{false};
    std::thread stream([&] {
        for (std::uint64_t i = 0; !ending; ++i) {
            const auto events = batch(i, 100);
            const std::vector<EventTriggerIn> triggers{{1, 1, events.front().timestamp}};
            recorder.push(events, triggers);
        }
    });
    std::atomic<int> wrong{0};
    std::thread watcher([&] {
        while (!ending)
            wrong += recorder.state().error.empty() ? 0 : 1;
    });
    const std::string path = recordings.path("again.raw");
    std::vector<std::string> paths;
    for (int i = 0; i < 3; ++i) {
        recorder.start(path);
        paths.push_back(recorder.state().path);
        // Until more than a header stands in the file.
        while (QFileInfo(QString::fromStdString(paths.back())).size() < 4096)
            std::this_thread::yield();
        recorder.stop();
    }
    ending = true;
    stream.join();
    watcher.join();
    EXPECT_EQ(wrong, 0);
    for (const std::string& each : paths) {
        const auto file = TemporaryRecordings::load(each);
        ASSERT_TRUE(file);
        std::uint64_t last = 0;
        file->getEndTimestamp(last);
        std::uint64_t first = 0;
        file->getStartTimestamp(first);
        EXPECT_EQ(file->getEventsAt(first, last - first + 1)->size(), last - first + 1) << "no gap";
    }
}

TEST_F(RecorderThreads, ACutRunsBesideThePlayingOfItsSource)
{
    Recorder recorder({640, 480}, {});
    const std::string path = recordings.path("source.raw");
    recorder.start(path);
    const auto events = batch(0, 50000);
    recorder.push(events, {});
    recorder.stop();
    const auto source = TemporaryRecordings::load(path);
    ASSERT_TRUE(source);
    std::atomic<bool> ending{false};
    std::thread player([&] {
        while (!ending)
            EXPECT_EQ(source->getEventsAt(100, 1000)->size(), 1000u);
    });
    EXPECT_TRUE(source->cutFile(1000, 40000, recordings.path("cut.raw")));
    ending = true;
    player.join();
    const auto cut = TemporaryRecordings::load(recordings.path("cut.raw"));
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->getEventsAt(0, 100000)->size(), 39001u);
}

} // namespace
