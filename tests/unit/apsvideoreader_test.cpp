#include "camera/recording/apsvideoreader.h"

#include "camera/recording/recordingbackend.h"
#include "camera/recording/videomark.h"
#include "tests/support/foreignvideo.h"
#include "tests/unit/apsvideofixture.h"

#include <QtEndian>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <map>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using korvane::ApsFrame;
using namespace korvane::recording;
using testing::HasSubstr;

namespace {

class ApsVideoReaderTest : public ApsVideoTest
{
protected:
    std::unique_ptr<ApsVideoReader> load() const
    {
        QString error;
        auto reader = ApsVideoReader::open(localPath(), error);
        EXPECT_TRUE(reader) << error.toStdString();
        return reader && reader->loadFile() ? std::move(reader) : nullptr;
    }

    static const std::uint8_t* pixelOf(const ApsFrame& frame, std::size_t x, std::size_t y)
    {
        return frame.pixels + (y * 3840 + x) * 3;
    }
    static int grey(const ApsFrame& frame) { return pixelOf(frame, 1900, 1000)[1]; }

    /// No reader is made, and one log line says so with path and reason.
    static void expectRefused(const QString& file, const char* reason)
    {
        const CapturedMessages messages;
        RecordingBackend backend;
        EXPECT_FALSE(backend.createApsFileReader(file.toLocal8Bit().toStdString()));
        ASSERT_EQ(messages.warnings().size(), 1);
        EXPECT_THAT(messages.warnings()[0].toStdString(), HasSubstr(file.toStdString()));
        EXPECT_THAT(messages.warnings()[0].toStdString(), HasSubstr(reason));
    }
};

} // namespace

TEST_F(ApsVideoReaderTest, GivesEveryFrameInOrderWithItsTime)
{
    writeVideo(40);
    const auto reader = load();
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->getWidth(), 3840);
    EXPECT_EQ(reader->getHeight(), 2160);
    std::vector<std::uint64_t> index;
    reader->getFrameIndex(index);
    ASSERT_EQ(index.size(), 40u);
    ApsFrame frame;
    for (std::size_t k = 0; k < 40; ++k) {
        ASSERT_TRUE(reader->getNextFrame(frame));
        EXPECT_EQ(index[k], k * slot);
        EXPECT_EQ(frame.timestamp, k * slot);
        EXPECT_EQ(frame.width, 3840);
        EXPECT_EQ(frame.height, 2160);
        EXPECT_NEAR(grey(frame), greyOf(k), 5) << k;
    }
    EXPECT_FALSE(reader->getNextFrame(frame));
    EXPECT_FALSE(reader->getNextFrame(frame));
}

TEST_F(ApsVideoReaderTest, PixelsArePackedBlueGreenRed)
{
    QString error;
    const auto writer = ApsVideoWriter::create(newFile(), 3840, 2160, path, error);
    ASSERT_TRUE(writer) << error.toStdString();
    std::vector<std::uint8_t> pixels(std::size_t(3840) * 2160 * 3);
    for (std::size_t y = 0; y < 2160; ++y) {
        for (std::size_t x = 0; x < 3840; ++x) {
            std::uint8_t* const pixel = pixels.data() + (y * 3840 + x) * 3;
            pixel[0] = x < 1920 ? 200 : 40;
            pixel[1] = y < 1080 ? 60 : 160;
            pixel[2] = x < 1920 ? 30 : 220;
        }
    }
    writer->begin(0);
    writer->push({pixels.data(), 3840, 2160, 0});
    ASSERT_TRUE(writer->finish(0));
    const auto reader = load();
    ASSERT_TRUE(reader);
    ApsFrame frame;
    ASSERT_TRUE(reader->getNextFrame(frame));
    for (const std::size_t y : {0u, 500u, 1500u, 2159u}) {
        for (const std::size_t x : {0u, 1000u, 3000u, 3839u}) {
            for (std::size_t channel = 0; channel < 3; ++channel)
                EXPECT_NEAR(pixelOf(frame, x, y)[channel], pixels[(y * 3840 + x) * 3 + channel], 6)
                    << x << ", " << y << ", channel " << channel;
        }
    }
}

TEST_F(ApsVideoReaderTest, SeeksToTheExactFrame)
{
    writeVideo(70);
    const auto reader = load();
    ASSERT_TRUE(reader);
    ApsFrame frame;
    for (const std::uint64_t time : {std::uint64_t(0), 31 * slot + 5, 30 * slot, 30 * slot - 1, 69 * slot,
                                     slot - 1, slot, 45 * slot + 33332, 500 * slot}) {
        const std::uint64_t k = std::min<std::uint64_t>(time / slot, 69);
        reader->seekFrame(time, frame);
        EXPECT_EQ(frame.timestamp, k * slot) << time;
        EXPECT_NEAR(grey(frame), greyOf(k), 5) << time;
        // The reader stands at that frame: it is also the next one.
        ASSERT_TRUE(reader->getNextFrame(frame));
        EXPECT_EQ(frame.timestamp, k * slot) << time;
        EXPECT_EQ(reader->getNextFrame(frame), k < 69) << time;
        if (k < 69) {
            EXPECT_EQ(frame.timestamp, (k + 1) * slot) << time;
            EXPECT_NEAR(grey(frame), greyOf(k + 1), 5) << time;
        }
    }
}

TEST_F(ApsVideoReaderTest, StartsAgainAfterItsEnd)
{
    writeVideo(5);
    const auto reader = load();
    ASSERT_TRUE(reader);
    ApsFrame frame;
    for (int round = 0; round < 3; ++round) {
        for (std::size_t k = 0; k < 5; ++k) {
            ASSERT_TRUE(reader->getNextFrame(frame));
            EXPECT_EQ(frame.timestamp, k * slot);
        }
        EXPECT_FALSE(reader->getNextFrame(frame));
        reader->seekFrame(0, frame);
        EXPECT_EQ(frame.timestamp, 0u);
    }
}

TEST_F(ApsVideoReaderTest, AFrameStaysValidUntilTheNextCall)
{
    writeVideo(12);
    const auto reader = load();
    ASSERT_TRUE(reader);
    ApsFrame frame;
    for (std::size_t k = 0; k < 12; ++k) {
        ASSERT_TRUE(reader->getNextFrame(frame));
        // Whatever is decoded meanwhile, the pixels stay.
        const std::vector<std::uint8_t> row(pixelOf(frame, 0, 2159), pixelOf(frame, 0, 2159) + 3840 * 3);
        for (int look = 0; look < 50; ++look) {
            std::this_thread::yield();
            ASSERT_TRUE(std::equal(row.begin(), row.end(), pixelOf(frame, 0, 2159)));
        }
        EXPECT_NEAR(grey(frame), greyOf(k), 5);
    }
}

TEST_F(ApsVideoReaderTest, ReadsVideosOfOtherSizesRatesAndOrdersOfPictures)
{
    ASSERT_TRUE(writeForeignVideo(path, 320, 180, 40, [](int k) { return 40 + 4 * k; }));
    const auto reader = load();
    ASSERT_TRUE(reader);
    std::vector<std::uint64_t> index;
    reader->getFrameIndex(index);
    ASSERT_EQ(index.size(), 40u);
    ApsFrame frame;
    for (std::uint64_t k = 0; k < 40; ++k) {
        ASSERT_TRUE(reader->getNextFrame(frame));
        EXPECT_EQ(frame.timestamp, k * 40000);
        EXPECT_NEAR(grey(frame), (40 + 4 * static_cast<int>(k) - 16) * 255 / 219, 4) << k;
    }
    EXPECT_FALSE(reader->getNextFrame(frame));
    for (const std::uint64_t k : {17u, 3u, 39u, 24u}) {
        reader->seekFrame(k * 40000 + 100, frame);
        EXPECT_EQ(frame.timestamp, k * 40000);
        EXPECT_NEAR(grey(frame), (40 + 4 * static_cast<int>(k) - 16) * 255 / 219, 4) << k;
    }
}

TEST_F(ApsVideoReaderTest, ADamagedFrameIsARepeatInItsPlace)
{
    writeVideo(60, 60);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    // Within the pictures of a fragment; its index stays whole.
    const qint64 box = file.readAll().indexOf("mdat", file.size() / 2);
    ASSERT_GT(box, 0);
    ASSERT_TRUE(file.seek(box + 4000));
    ASSERT_EQ(file.write(QByteArray(3000, '\x55')), 3000);
    file.close();
    const CapturedMessages messages;
    const auto reader = load();
    ASSERT_TRUE(reader);
    ApsFrame frame;
    std::vector<std::uint8_t> before;
    std::vector<std::size_t> repeats;
    std::map<std::size_t, std::vector<std::uint8_t>> rows;
    const auto row = [&frame] { return std::vector<std::uint8_t>(frame.pixels, frame.pixels + 3840 * 3); };
    for (std::size_t k = 0; k < 60; ++k) {
        ASSERT_TRUE(reader->getNextFrame(frame)) << k;
        EXPECT_EQ(frame.timestamp, k * slot);
        rows[k] = row();
        if (rows[k] == before)
            repeats.push_back(k);
        before = rows[k];
    }
    EXPECT_FALSE(reader->getNextFrame(frame));
    ASSERT_FALSE(repeats.empty());
    // Sought, it shows the same.
    reader->seekFrame(repeats.front() * slot, frame);
    EXPECT_EQ(frame.timestamp, repeats.front() * slot);
    EXPECT_TRUE(row() == rows[repeats.front()]);
    ASSERT_TRUE(reader->getNextFrame(frame));
    EXPECT_TRUE(row() == rows[repeats.front() + 1]);
    ASSERT_EQ(messages.warnings().size(), 1);
    EXPECT_THAT(messages.warnings()[0].toStdString(), HasSubstr("is damaged"));
}

TEST_F(ApsVideoReaderTest, PlaysWhatAKilledProcessLeft)
{
    const auto writer = newWriter(newFile());
    writer->begin(0);
    for (std::size_t k = 0; k < 60; ++k) {
        push(*writer, k * slot, greyOf(k));
        waitFor(*writer, k + 1);
    }
    // Nothing has been finished yet.
    const auto reader = load();
    ASSERT_TRUE(reader);
    ApsFrame frame;
    std::size_t count = 0;
    for (; reader->getNextFrame(frame); ++count)
        EXPECT_EQ(frame.timestamp, count * slot);
    EXPECT_GE(count, 60u - 16u);
    reader->seekFrame(20 * slot, frame);
    EXPECT_NEAR(grey(frame), greyOf(20), 5);
}

TEST_F(ApsVideoReaderTest, RefusesWhatIsNoVideo)
{
    expectRefused(path, "there is no such file");
    expectRefused(folder.path(), "it is not a file");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    expectRefused(path, "it is not an .mp4 file");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(100000, 'x'));
    file.close();
    expectRefused(path, "it is not an .mp4 file");
}

TEST_F(ApsVideoReaderTest, APipeIsNoVideoAndNobodyWaitsForIt)
{
    const QByteArray pipe = QFile::encodeName(path);
    ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
    auto marked = std::async(std::launch::async, [this] { return isMarkedVideo(path); });
    const bool answered = marked.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    EXPECT_TRUE(answered);
    if (!answered)
        close(open(pipe.constData(), O_WRONLY | O_CLOEXEC));
    EXPECT_FALSE(marked.get());
    expectRefused(path, "it is not a file");
}

TEST_F(ApsVideoReaderTest, RefusesAFileWithoutAVideoStream)
{
    ASSERT_TRUE(writeSoundOnly(path));
    expectRefused(path, "it holds no video stream");
}

TEST_F(ApsVideoReaderTest, AContainerThatListsMorePicturesThanItHasBytesIsRefusedAtOnce)
{
    // Nine million pictures of a byte each in one chunk: walking through them would take minutes.
    ASSERT_TRUE(writeForeignVideo(path, 320, 180, 9, [](int k) { return 40 + k; }));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    QByteArray content = file.readAll();
    const auto put = [&content](const char* table, qsizetype offset, std::initializer_list<quint32> numbers) {
        qsizetype at = content.indexOf(table) + offset;
        for (const quint32 number : numbers) {
            qToBigEndian(number, content.data() + at);
            at += 4;
        }
    };
    ASSERT_TRUE(content.contains("stsz") && content.contains("stsc") && content.contains("stts"));
    put("stsz", 8, {1, 9000000});
    put("stsc", 12, {1, 9000000, 1});
    put("stts", 12, {9000000});
    file.seek(0);
    file.write(content);
    file.close();
    const CapturedMessages messages;
    QString error;
    const auto reader = ApsVideoReader::open(localPath(), error);
    ASSERT_TRUE(reader) << error.toStdString();
    EXPECT_FALSE(reader->loadFile());
    EXPECT_EQ(
        messages.warnings(),
        QStringList(path + QStringLiteral(": cannot be loaded: it lists more pictures than it has bytes")));
}

TEST_F(ApsVideoReaderTest, AVideoWithoutAPictureCannotBeLoaded)
{
    {
        const auto writer = newWriter(newFile());
        EXPECT_TRUE(writer->finish(0));
    }
    QString error;
    const auto reader = ApsVideoReader::open(localPath(), error);
    ASSERT_TRUE(reader) << error.toStdString();
    const CapturedMessages messages;
    EXPECT_FALSE(reader->loadFile());
    EXPECT_EQ(messages.warnings().size(), 1);
    ApsFrame frame;
    EXPECT_FALSE(reader->getNextFrame(frame));
    reader->seekFrame(0, frame);
    EXPECT_EQ(frame.pixels, nullptr);
    std::vector<std::uint64_t> index{1};
    reader->getFrameIndex(index);
    EXPECT_TRUE(index.empty());
}

TEST_F(ApsVideoReaderTest, EndsWhileItDecodesAhead)
{
    writeVideo(40);
    for (int i = 0; i < 5; ++i) {
        const auto reader = load();
        ASSERT_TRUE(reader);
        ApsFrame frame;
        for (int k = 0; k < i; ++k)
            EXPECT_TRUE(reader->getNextFrame(frame));
    }
}
