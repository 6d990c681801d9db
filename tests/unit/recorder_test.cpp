#include "camera/recording/recorder.h"

#include "camera/recording/recordingpath.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/temporaryrecordings.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using korvane::Event2D;
using korvane::RecorderState;
using namespace korvane::recording;

constexpr Geometry hd{1280, 720};

/// Events of a stretch of time, one a microsecond.
std::vector<Event2D> stretch(std::uint64_t from, std::size_t count)
{
    std::vector<Event2D> events;
    for (std::size_t i = 0; i < count; ++i)
        events.emplace_back(static_cast<std::uint16_t>(i % 1280), static_cast<std::uint16_t>(i / 1280 % 720),
                            static_cast<std::uint8_t>(i % 2), from + i);
    return events;
}

void push(Recorder& recorder, const std::vector<Event2D>& events)
{
    recorder.push(events.data(), events.data() + events.size());
}

std::vector<Event2D> eventsOf(const QString& path)
{
    const auto reader = TemporaryRecordings::load(path.toLocal8Bit().toStdString());
    if (!reader)
        return {};
    std::uint64_t end = 0;
    reader->getEndTimestamp(end);
    return *reader->getEventsAt(0, end + 1);
}

/// A disk that is full after so many bytes, or holds writes back until told.
class FailingDevice : public QIODevice
{
public:
    FailingDevice(const QString& path, qint64 room) : file(path), left(room)
    {
        file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered);
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }
    void close() override
    {
        file.close();
        QIODevice::close();
    }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override
    {
        if (left <= 0) {
            setErrorString(QStringLiteral("No space left on device"));
            return -1;
        }
        const qint64 written = file.write(data, std::min(size, left));
        left -= written;
        return written;
    }

private:
    QFile file;
    qint64 left;
};

class RecorderTest : public testing::Test
{
protected:
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("rec/20260101_120000.raw"));
    std::string local = path.toLocal8Bit().toStdString();
};

} // namespace

TEST_F(RecorderTest, KeepsEveryEventAndWritesAHeaderThatReadersUnderstand)
{
    Recorder recorder(hd, "HAL-000001");
    recorder.start(local);
    EXPECT_TRUE(recorder.state().writing);
    const auto events = stretch(8192, 300000);
    for (std::size_t i = 0; i < events.size(); i += 1000)
        recorder.push(events.data() + i, events.data() + i + 1000);
    recorder.stop();
    const RecorderState state = recorder.state();
    EXPECT_FALSE(state.writing);
    EXPECT_EQ(state.error, "");
    EXPECT_EQ(state.path, local);

    auto expected = events;
    for (Event2D& event : expected)
        event.timestamp -= 8192;
    EXPECT_EQ(eventsOf(path), expected);
    const auto reader = TemporaryRecordings::load(local);
    EXPECT_EQ(reader->sensorGeometry(), hd);
    EXPECT_EQ(reader->fileHeader().serial, "HAL-000001");
    for (const char* key : {"date", "evt", "format", "geometry", "serial_number"})
        EXPECT_TRUE(reader->fileHeader().value(key)) << key;
}

TEST_F(RecorderTest, ReplacesNoFile)
{
    ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("rec"))));
    ASSERT_TRUE(evt::writeFile(path, "old", {}));
    ASSERT_TRUE(evt::writeFile(folder.filePath(QStringLiteral("rec/20260101_120000-1.mp4")), "old", {}));
    Recorder recorder(hd, {});
    recorder.start(local);
    push(recorder, stretch(0, 10));
    recorder.stop();
    const QString second = folder.filePath(QStringLiteral("rec/20260101_120000-2.raw"));
    EXPECT_EQ(recorder.state().path, second.toStdString());
    EXPECT_EQ(eventsOf(second).size(), 10u);
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), "old");
}

TEST_F(RecorderTest, AFolderThatCannotBeMadeIsToldWithPathAndReason)
{
    ASSERT_TRUE(evt::writeFile(folder.filePath(QStringLiteral("rec")), "a file in the way", {}));
    const CapturedMessages messages;
    Recorder recorder(hd, {});
    recorder.start(local);
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_EQ(recorder.state().path, local);
    EXPECT_EQ(recorder.state().error, "the folder cannot be made");
    EXPECT_EQ(messages.warnings().size(), 1);
    push(recorder, stretch(0, 10));
    recorder.stop();
}

TEST_F(RecorderTest, AFileWithoutAnEventIsRemovedAndLogged)
{
    Recorder recorder(hd, {});
    recorder.start(local);
    ASSERT_TRUE(QTest::qWaitFor([this] { return QFile::exists(path); }));
    const CapturedMessages messages;
    recorder.stop();
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(messages.of(QtInfoMsg).size(), 1);
}

TEST_F(RecorderTest, OnAFullDiskItStopsTellsWhyAndKeepsWhatItHas)
{
    static constexpr qint64 room = 400 * 1024 + 1;
    Recorder recorder(hd, {}, [](const QString& file, QString&) -> std::unique_ptr<QIODevice> {
        return std::make_unique<FailingDevice>(file, room);
    });
    recorder.start(local);
    const auto events = stretch(0, 400000);
    for (std::size_t i = 0; i < events.size(); i += 1000)
        recorder.push(events.data() + i, events.data() + i + 1000);
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return !recorder.state().error.empty(); }));
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_EQ(recorder.state().error, "No space left on device");
    recorder.stop();
    EXPECT_EQ(recorder.state().error, "No space left on device");

    const auto kept = eventsOf(path);
    ASSERT_GT(kept.size(), 50000u);
    EXPECT_TRUE(std::equal(kept.begin(), kept.end(), events.begin()));
}

TEST_F(RecorderTest, WhatWasPushedIsOnDiskWithinASecond)
{
    Recorder recorder(hd, {});
    recorder.start(local);
    push(recorder, stretch(0, 5000));
    ASSERT_TRUE(QTest::qWaitFor([this] { return eventsOf(path).size() == 5000; }, 5000))
        << "while it still records";
    push(recorder, stretch(5000, 5000));
    ASSERT_TRUE(QTest::qWaitFor([this] { return eventsOf(path).size() == 10000; }, 5000));
    recorder.stop();
}

TEST_F(RecorderTest, AProcessThatIsKilledLeavesAFileThatOpens)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Nothing of the test's own may run in the child: it records until it is killed.
        Recorder recorder(hd, {});
        recorder.start(local);
        for (std::uint64_t time = 0;; time += 1000) {
            push(recorder, stretch(time, 1000));
            usleep(1000);
        }
    }
    ASSERT_TRUE(QTest::qWaitFor([this] { return eventsOf(path).size() > 100000; }, 20000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const auto kept = eventsOf(path);
    ASSERT_GT(kept.size(), 100000u);
    EXPECT_EQ(kept.back().timestamp % 1000, (kept.size() - 1) % 1000) << "no gap";
    EXPECT_EQ(kept.back().timestamp, kept.size() - 1);
}

TEST_F(RecorderTest, StoppingWhileAnotherThreadPushesLosesNothingPushedBefore)
{
    Recorder recorder(hd, {});
    recorder.start(local);
    std::atomic<bool> ending{false};
    std::thread stream([&] {
        for (std::uint64_t time = 0; !ending; time += 1000)
            push(recorder, stretch(time, 1000));
    });
    ASSERT_TRUE(QTest::qWaitFor([this] { return QFileInfo(path).size() > 100000; }));
    recorder.stop();
    ending = true;
    stream.join();
    const auto kept = eventsOf(path);
    EXPECT_EQ(kept.size() % 1000, 0u) << "whole batches";
    EXPECT_EQ(kept.back().timestamp, kept.size() - 1);
}

TEST_F(RecorderTest, FreePathsCountOn)
{
    ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("rec"))));
    EXPECT_EQ(freeRecordingPath(path), path);
    for (const char* name : {"rec/20260101_120000.mp4", "rec/20260101_120000-1.raw"})
        ASSERT_TRUE(evt::writeFile(folder.filePath(QLatin1String(name)), "x", {}));
    EXPECT_EQ(freeRecordingPath(path), folder.filePath(QStringLiteral("rec/20260101_120000-2.raw")));
}
