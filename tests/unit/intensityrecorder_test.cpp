#include "camera/recording/intensityrecorder.h"

#include "camera/recording/apsvideoreader.h"
#include "tests/support/capturedmessages.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

using korvane::ApsFrame;
using korvane::Event2D;
using korvane::recording::ApsVideoReader;
using korvane::recording::IntensityRecorder;

namespace {

constexpr int width = 64;
constexpr int height = 36;

class IntensityRecorderTest : public testing::Test
{
protected:
    std::string rawPath() const { return folder.filePath(QStringLiteral("take.raw")).toStdString(); }
    QString videoPath() const { return folder.filePath(QStringLiteral("take.mp4")); }
    static void note(IntensityRecorder& recorder, std::uint64_t time)
    {
        const Event2D event(1, 1, 1, time);
        recorder.noteEvents({&event, 1});
    }
    void push(IntensityRecorder& recorder, std::uint64_t time)
    {
        recorder.push({pixels.data(), width, height, time});
    }
    std::size_t pictures() const
    {
        QString error;
        const auto reader = ApsVideoReader::open(videoPath().toStdString(), error);
        if (!reader || !reader->loadFile())
            return 0;
        std::vector<std::uint64_t> index;
        reader->getFrameIndex(index);
        return index.size();
    }

    QTemporaryDir folder;
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(std::size_t{width} * height * 3, 90);
};

/// A disk that takes so many bytes.
class SmallDisk : public QBuffer
{
public:
    explicit SmallDisk(qint64 size) : room(size) { open(QIODevice::ReadWrite); }

protected:
    qint64 writeData(const char* data, qint64 length) override
    {
        if (pos() + length > room) {
            setErrorString(QStringLiteral("No space left on device"));
            return -1;
        }
        return QBuffer::writeData(data, length);
    }

private:
    const qint64 room;
};

} // namespace

TEST_F(IntensityRecorderTest, TheVideoCoversTheEventsThatWereNotedInSlots)
{
    IntensityRecorder recorder(width, height);
    recorder.start(rawPath());
    EXPECT_TRUE(recorder.state().writing);
    push(recorder, 900'000); // before the first event
    note(recorder, 1'000'000);
    push(recorder, 1'010'000);
    note(recorder, 1'000'000 + 4 * 33333 + 5);
    recorder.stop();
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_TRUE(recorder.state().error.empty());
    EXPECT_EQ(pictures(), 5U);
}

TEST_F(IntensityRecorderTest, WithoutAnEventTheVideoIsRemoved)
{
    IntensityRecorder recorder(width, height);
    recorder.start(rawPath());
    push(recorder, 10);
    recorder.stop();
    EXPECT_FALSE(QFile::exists(videoPath()));
    EXPECT_TRUE(recorder.state().error.empty());
}

TEST_F(IntensityRecorderTest, WithoutAFrameTheVideoIsRemovedAndTheEventsAreARecordingOfTheirOwn)
{
    const CapturedMessages messages;
    IntensityRecorder recorder(width, height);
    recorder.start(rawPath());
    note(recorder, 10);
    recorder.stop();
    EXPECT_FALSE(QFile::exists(videoPath()));
    EXPECT_TRUE(recorder.state().error.empty());
}

TEST_F(IntensityRecorderTest, AVideoThatCannotBeMadeIsToldAndReplacesNothing)
{
    QFile taken(videoPath());
    ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    taken.write("mine");
    taken.close();
    const CapturedMessages messages;
    IntensityRecorder recorder(width, height);
    recorder.start(rawPath());
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_FALSE(recorder.state().error.empty());
    EXPECT_EQ(recorder.state().path, videoPath().toStdString());
    EXPECT_EQ(messages.warnings().size(), 1);
    note(recorder, 1);
    push(recorder, 2);
    recorder.stop();
    EXPECT_EQ(taken.size(), 4);
}

TEST_F(IntensityRecorderTest, WithoutAnEncoderItSaysSoAndLeavesNoFile)
{
    const CapturedMessages messages;
    IntensityRecorder recorder(width, height);
    recorder.setEncoders({{}, false});
    recorder.start(rawPath());
    EXPECT_FALSE(recorder.state().writing);
    EXPECT_EQ(recorder.state().path, videoPath().toStdString());
    EXPECT_EQ(recorder.state().error, "this machine's FFmpeg has no encoder for H.264 or MPEG-4");
    EXPECT_EQ(messages.warnings().size(), 1);
    EXPECT_FALSE(QFile::exists(videoPath()));
    note(recorder, 1);
    push(recorder, 2);
    recorder.stop();
    EXPECT_FALSE(QFile::exists(videoPath()));
}

TEST_F(IntensityRecorderTest, WithoutH264TheVideoIsMadeWithAnotherEncoder)
{
    const CapturedMessages messages;
    IntensityRecorder recorder(width, height);
    recorder.setEncoders({{"libx264", "mpeg4"}, false});
    recorder.start(rawPath());
    recorder.stop();
    EXPECT_TRUE(messages.warnings().isEmpty());
    recorder.setEncoders({{"no_such_encoder", "mpeg4"}, false});
    recorder.start(rawPath());
    EXPECT_TRUE(recorder.state().writing);
    EXPECT_EQ(messages.warnings().size(), 1) << "which one it is stands in the log";
    note(recorder, 0);
    push(recorder, 0);
    note(recorder, 2 * 33333);
    recorder.stop();
    EXPECT_TRUE(recorder.state().error.empty());
    EXPECT_EQ(pictures(), 3U);
}

TEST_F(IntensityRecorderTest, AFullDiskEndsItAndIsTold)
{
    const CapturedMessages messages;
    IntensityRecorder recorder(width, height,
                               [](const QString&, QString&) { return std::make_unique<SmallDisk>(3000); });
    recorder.start(rawPath());
    note(recorder, 1'000'000);
    std::uint64_t time = 1'000'000;
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (recorder.state().error.empty() && std::chrono::steady_clock::now() < patience) {
        for (std::uint8_t& value : pixels)
            value = static_cast<std::uint8_t>(value * 5 + 3);
        push(recorder, time += 33333);
        note(recorder, time);
        std::this_thread::yield();
    }
    EXPECT_FALSE(recorder.state().error.empty());
    EXPECT_FALSE(recorder.state().writing);
    recorder.stop();
    EXPECT_NE(recorder.state().error.find("No space left"), std::string::npos) << recorder.state().error;
}

TEST_F(IntensityRecorderTest, StoppingWhileFramesComeLosesNoneOfTheSlots)
{
    IntensityRecorder recorder(width, height);
    recorder.start(rawPath());
    note(recorder, 0);
    note(recorder, 40 * 33333);
    push(recorder, 0);
    std::thread frames([this, &recorder] {
        for (std::uint64_t k = 1; k <= 40; ++k)
            push(recorder, k * 33333);
    });
    recorder.stop();
    frames.join();
    EXPECT_EQ(pictures(), 41U);
}
