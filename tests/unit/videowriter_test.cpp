#include "camera/recording/videowriter.h"

#include "camera/recording/videopicture.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/decodedvideo.h"

#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>

using namespace korvane::recording;
using korvane::kernels::YuvPlanes;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr int width = 64;
constexpr int height = 48;

/// A file on a disk that is full once the file has reached a size.
class FillingDisk : public QFile
{
public:
    FillingDisk(const QString& path, qint64 room) : QFile(path), space(room) {}
    bool wasFull = false;

protected:
    qint64 writeData(const char* data, qint64 size) override
    {
        const qint64 fits = std::min(size, space - pos());
        if (fits <= 0) {
            wasFull = true;
            setErrorString(QStringLiteral("No space left on device"));
            return -1;
        }
        return QFile::writeData(data, fits);
    }

private:
    const qint64 space;
};

class VideoWriterTest : public testing::Test
{
protected:
    static VideoWriter::Settings settingsOf(VideoLayout layout)
    {
        VideoWriter::Settings settings;
        settings.format.width = width;
        settings.format.height = height;
        settings.format.live = layout == VideoLayout::Fragments;
        settings.layout = layout;
        return settings;
    }

    std::unique_ptr<FillingDisk> newFile(qint64 room = std::numeric_limits<qint64>::max())
    {
        auto file = std::make_unique<FillingDisk>(path, room);
        EXPECT_TRUE(file->open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered));
        return file;
    }

    /// Picture k: noise that only k decides.
    void draw(int k)
    {
        std::mt19937 random(static_cast<unsigned>(k));
        const YuvPlanes planes = picture->draw();
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x)
                planes.luma[y * planes.lumaStride + x] = static_cast<std::uint8_t>(16 + random() % 220);
        }
        for (std::size_t y = 0; y < height / 2; ++y) {
            std::memset(planes.cb + y * planes.chromaStride, 128, width / 2);
            std::memset(planes.cr + y * planes.chromaStride, 128, width / 2);
        }
    }
    std::vector<std::uint8_t> lumaOfPicture(int k)
    {
        draw(k);
        const YuvPlanes planes = picture->draw();
        std::vector<std::uint8_t> luma;
        for (std::size_t y = 0; y < height; ++y)
            luma.insert(luma.end(), planes.luma + y * planes.lumaStride,
                        planes.luma + y * planes.lumaStride + width);
        return luma;
    }

    bool writePictures(VideoWriter& writer, int first, int count, QString& error)
    {
        for (int k = first; k < first + count; ++k) {
            draw(k);
            if (!writer.write(*picture, k * 33333, error))
                return false;
        }
        return true;
    }

    /// A whole video; its size in bytes.
    qint64 wholeVideo(const VideoWriter::Settings& settings, int count)
    {
        const auto file = newFile();
        QString error;
        const auto writer = VideoWriter::create(*file, settings, path, error);
        if (!writer || !writePictures(*writer, 0, count, error) || !writer->finish(error))
            ADD_FAILURE() << error.toStdString();
        return file->size();
    }

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("video.mp4"));
    const std::unique_ptr<VideoPicture> picture = VideoPicture::create(width, height);
};

} // namespace

TEST_F(VideoWriterTest, PutsTheIndexInFrontAndKeepsTimesToTheMicrosecond)
{
    wholeVideo(settingsOf(VideoLayout::IndexInFront), 50);
    EXPECT_THAT(boxesOf(path), ElementsAre("ftyp", "moov", "free", "mdat"));
    const DecodedVideo video = decodeVideo(path);
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.codec, "h264");
    EXPECT_EQ(video.pixelFormat, "yuv420p");
    EXPECT_EQ(video.range, "tv");
    EXPECT_EQ(video.matrix, "bt709");
    EXPECT_EQ(video.primaries, "bt709");
    EXPECT_EQ(video.transfer, "bt709");
    EXPECT_EQ(video.timeBaseDenominator, 1000000);
    EXPECT_EQ(video.duration, 50 * 33333);
    ASSERT_EQ(video.count, 50u);
    for (int k = 0; k < 50; ++k)
        EXPECT_EQ(video.times[static_cast<std::size_t>(k)], k * 33333);
    EXPECT_TRUE(video.pictures[0].key);
    EXPECT_TRUE(video.pictures[30].key) << "a player has to find a key picture every second";
}

TEST_F(VideoWriterTest, GivesBackWhatWasDrawn)
{
    wholeVideo(settingsOf(VideoLayout::IndexInFront), 12);
    const DecodedVideo video = decodeVideo(path);
    ASSERT_EQ(video.count, 12u);
    for (int k = 0; k < 12; ++k)
        EXPECT_GE(psnr(video.pictures[static_cast<std::size_t>(k)].luma, lumaOfPicture(k)), 35) << k;
}

TEST_F(VideoWriterTest, TakesPicturesAtUnevenTimes)
{
    const auto file = newFile();
    QString error;
    auto settings = settingsOf(VideoLayout::Fragments);
    const auto writer = VideoWriter::create(*file, settings, path, error);
    ASSERT_TRUE(writer);
    const std::vector<std::int64_t> times{0, 33333, 99999, 100000, 5000000, 5000001};
    for (const std::int64_t time : times) {
        draw(3);
        ASSERT_TRUE(writer->write(*picture, time, error));
    }
    ASSERT_TRUE(writer->finish(error));
    EXPECT_EQ(decodeVideo(path).times, times);
}

TEST_F(VideoWriterTest, AVideoOfFragmentsPlaysUpToTheLastHalfSecondWhenItIsNotFinished)
{
    const auto file = newFile();
    QString error;
    const auto writer = VideoWriter::create(*file, settingsOf(VideoLayout::Fragments), path, error);
    ASSERT_TRUE(writer);
    for (int seconds = 1; seconds <= 4; ++seconds) {
        ASSERT_TRUE(writePictures(*writer, (seconds - 1) * 30, 30, error));
        // Nothing was closed or finished: what another reader finds is what a killed process leaves.
        const DecodedVideo video = decodeVideo(path);
        EXPECT_EQ(video.error, QString());
        EXPECT_GE(video.count + 16, static_cast<std::size_t>(seconds) * 30);
        for (std::size_t k = 0; k < video.count; ++k)
            EXPECT_EQ(video.times[k], static_cast<std::int64_t>(k) * 33333);
    }
}

TEST_F(VideoWriterTest, FinishedFragmentsHoldEveryPicture)
{
    wholeVideo(settingsOf(VideoLayout::Fragments), 40);
    EXPECT_EQ(boxesOf(path)[1], "moov");
    const DecodedVideo video = decodeVideo(path);
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.count, 40u);
}

TEST_F(VideoWriterTest, AFullDiskIsSeenWhileWriting)
{
    const qint64 whole = wholeVideo(settingsOf(VideoLayout::IndexInFront), 400);
    ASSERT_GT(whole, 600000) << "the video has to be larger than what is held back in memory";
    for (const VideoLayout layout : {VideoLayout::IndexInFront, VideoLayout::Fragments}) {
        const auto file = newFile(whole / 2);
        QString error;
        const auto writer = VideoWriter::create(*file, settingsOf(layout), path, error);
        ASSERT_TRUE(writer);
        EXPECT_FALSE(writePictures(*writer, 0, 400, error));
        EXPECT_EQ(error, QStringLiteral("No space left on device"));
    }
}

TEST_F(VideoWriterTest, AFullDiskIsSeenAtTheStart)
{
    const auto file = newFile(10);
    QString error;
    EXPECT_FALSE(VideoWriter::create(*file, settingsOf(VideoLayout::IndexInFront), path, error));
    EXPECT_EQ(error, QStringLiteral("No space left on device"));
}

TEST_F(VideoWriterTest, AFullDiskIsSeenWhileTheIndexMovesToTheFront)
{
    const auto settings = settingsOf(VideoLayout::IndexInFront);
    const qint64 whole = wholeVideo(settings, 400);
    // The pictures have room, the index has not.
    const auto file = newFile(whole - 1);
    QString error;
    const auto writer = VideoWriter::create(*file, settings, path, error);
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writePictures(*writer, 0, 400, error)) << error.toStdString();
    ASSERT_FALSE(file->wasFull);
    EXPECT_FALSE(writer->finish(error));
    EXPECT_TRUE(file->wasFull);
    EXPECT_EQ(error, QStringLiteral("No space left on device"));
}

TEST_F(VideoWriterTest, AMissingEncoderGivesWayToAnotherForH264)
{
    auto settings = settingsOf(VideoLayout::IndexInFront);
    settings.format.encoders = {"no_such_encoder"};
    const CapturedMessages messages;
    wholeVideo(settings, 5);
    EXPECT_EQ(decodeVideo(path).codec, "h264");
    ASSERT_EQ(messages.warnings().size(), 1);
    EXPECT_THAT(messages.warnings()[0].toStdString(), HasSubstr(path.toStdString()));
    EXPECT_THAT(messages.warnings()[0].toStdString(), HasSubstr("lacks the encoder no_such_encoder"));
}

TEST_F(VideoWriterTest, WithoutH264TheVideoIsMpeg4WithTheSameTimesAndQuality)
{
    auto settings = settingsOf(VideoLayout::IndexInFront);
    settings.format.encoders = {"no_such_encoder", "mpeg4"};
    const CapturedMessages messages;
    wholeVideo(settings, 40);
    EXPECT_EQ(messages.warnings().size(), 1);
    const DecodedVideo video = decodeVideo(path);
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.codec, "mpeg4");
    ASSERT_EQ(video.count, 40u);
    for (int k = 0; k < 40; ++k) {
        const auto at = static_cast<std::size_t>(k);
        EXPECT_EQ(video.times[at], k * 33333);
        EXPECT_GE(psnr(video.pictures[at].luma, lumaOfPicture(k)), 35) << k;
    }
}

TEST_F(VideoWriterTest, AnEncoderThatDoesNotStartGivesWayToTheNext)
{
    // MPEG-4 Visual ends at 8191 pixels.
    auto settings = settingsOf(VideoLayout::IndexInFront);
    settings.format.width = 8200;
    settings.format.height = 16;
    settings.format.encoders = {"mpeg4"};
    const CapturedMessages messages;
    const auto file = newFile();
    QString error;
    const auto writer = VideoWriter::create(*file, settings, path, error);
    ASSERT_TRUE(writer) << error.toStdString();
    EXPECT_NE(writer->encoderName(), "mpeg4");
    EXPECT_EQ(messages.warnings().size(), 1);
}

TEST_F(VideoWriterTest, RefusesSizesThatNoVideoHas)
{
    for (const auto& [wide, high] :
         {std::pair{63, 48}, {64, 47}, {0, 48}, {64, 0}, {-2, 2}, {1 << 20, 1 << 20}}) {
        auto settings = settingsOf(VideoLayout::IndexInFront);
        settings.format.width = wide;
        settings.format.height = high;
        const auto file = newFile();
        QString error;
        EXPECT_FALSE(VideoWriter::create(*file, settings, path, error)) << wide << " x " << high;
        EXPECT_FALSE(error.isEmpty());
    }
}
