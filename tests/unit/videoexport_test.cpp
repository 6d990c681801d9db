#include "camera/recording/videoexport.h"

#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "camera/recording/videomark.h"
#include "tests/support/filesizelimit.h"
#include "tests/unit/videoexportfixture.h"

#include <QProcess>
#include <gmock/gmock.h>

#include <limits>

using korvane::Event2D;
using namespace korvane::recording;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

/// Nothing was made, and one line says why, with the path.
#define EXPECT_REFUSED(messages, path, reason)                                                               \
    do {                                                                                                     \
        ASSERT_EQ((messages).warnings().size(), 1);                                                          \
        EXPECT_THAT((messages).warnings()[0].toStdString(), HasSubstr(path));                                \
        EXPECT_THAT((messages).warnings()[0].toStdString(), HasSubstr(reason));                              \
        EXPECT_EQ(others(), QStringList());                                                                  \
    } while (false)

} // namespace

TEST_F(VideoExportTest, IsAVideoThatBrowsersPlay)
{
    record(movingBar({320, 240}, 20, 20), {320, 240});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    const DecodedVideo video = decodeVideo(target());
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.codec, "h264");
    EXPECT_EQ(video.pixelFormat, "yuv420p");
    EXPECT_EQ(video.range, "tv");
    EXPECT_EQ(video.matrix, "bt709");
    EXPECT_EQ(video.primaries, "bt709");
    EXPECT_EQ(video.transfer, "bt709");
    EXPECT_EQ(video.width, 320);
    EXPECT_EQ(video.height, 240);
    EXPECT_EQ(video.timeBaseDenominator, 1000000);
    EXPECT_THAT(boxesOf(target()), ElementsAre("ftyp", "moov", "free", "mdat"));
    EXPECT_THAT(others(), ElementsAre(QStringLiteral("video.mp4")));
}

TEST_F(VideoExportTest, IsProbedAsWhatItIsByAnotherProgram)
{
    record(movingBar({321, 240}, 20, 20), {321, 240});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    QProcess probe;
    probe.start(QStringLiteral("ffprobe"),
                {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-count_frames"),
                 QStringLiteral("-show_entries"),
                 QStringLiteral("stream=codec_name,width,height,pix_fmt,start_time,duration,nb_read_frames"),
                 QStringLiteral("-of"), QStringLiteral("csv=print_section=0"), target()});
    ASSERT_TRUE(probe.waitForFinished()) << probe.errorString().toStdString();
    EXPECT_EQ(probe.readAllStandardError().toStdString(), "");
    const std::uint64_t count = (end - start) / period + 1;
    const QString seconds = QString::number(static_cast<double>(count * period) / 1e6, 'f', 6);
    EXPECT_EQ(QString::fromLatin1(probe.readAllStandardOutput()).trimmed(),
              QStringLiteral("h264,322,240,yuv420p,0.000000,%1,%2").arg(seconds).arg(count));
}

TEST_F(VideoExportTest, ShowsWhatTheLiveViewShows)
{
    record(movingBar({640, 480}, 12, 60), {640, 480});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    expectLikeTheView(target(), start, end);
}

TEST_F(VideoExportTest, KeepsItsQualityWhereEventsAreAsDenseAsNoise)
{
    // A third of all pixels in every picture.
    record(movingBar({1280, 720}, 4, 6000), {1280, 720});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    expectLikeTheView(target(), start, end);
}

TEST_F(VideoExportTest, HasTheColoursOfTheLiveView)
{
    Events events;
    for (std::uint16_t y = 0; y < 32; ++y) {
        for (std::uint16_t x = 0; x < 32; ++x)
            events.emplace_back(x, y, std::uint8_t(x < 16 ? 1 : 0), std::uint64_t(10));
    }
    record(events, {64, 32});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    const DecodedVideo video = decodeVideo(target());
    ASSERT_EQ(video.count, 1u);
    const auto expectColour = [&](std::size_t x, int luma, int cb, int cr) {
        EXPECT_NEAR(video.pictures[0].luma[16 * 64 + x], luma, 2);
        EXPECT_NEAR(video.pictures[0].cb[8 * 32 + x / 2], cb, 2);
        EXPECT_NEAR(video.pictures[0].cr[8 * 32 + x / 2], cr, 2);
    };
    expectColour(8, 178, 124, 130); // on: 191, 188, 180
    expectColour(24, 68, 123, 130); // off: 64, 61, 51
    expectColour(48, 112, 128, 128); // background: 112, 112, 112
}

TEST_F(VideoExportTest, PicturesBeginEvery33333MicrosecondsFromTheRangesStart)
{
    // Blocks, so that a picture shows clearly whether it has an event.
    Events events;
    const auto block = [&events](std::uint16_t column, std::uint64_t time) {
        for (std::uint16_t y = 0; y < 16; ++y) {
            for (std::uint16_t x = 0; x < 16; ++x)
                events.emplace_back(static_cast<std::uint16_t>(16 * column + x), y, std::uint8_t(1), time);
        }
    };
    block(0, 0);
    block(1, 1000);
    block(2, 1000 + period - 1);
    block(3, 1000 + period);
    block(4, 1000 + 2 * period);
    block(5, 1000 + 2 * period + 1);
    record(events, {96, 16});
    ASSERT_TRUE(exportTo("video.mp4", start + 1000, start + 1000 + 2 * period));
    const DecodedVideo video = decodeVideo(target());
    ASSERT_THAT(video.times, ElementsAre(0, 33333, 66666));
    const auto shows = [&video](std::size_t picture, std::size_t column) {
        return video.pictures[picture].luma[8 * 96 + 16 * column + 8] > 150;
    };
    for (std::size_t column = 0; column < 6; ++column) {
        EXPECT_EQ(shows(0, column), column == 1 || column == 2) << column;
        EXPECT_EQ(shows(1, column), column == 3) << column;
        EXPECT_EQ(shows(2, column), column == 4) << column;
    }
}

TEST_F(VideoExportTest, SensorsOfOddSizesGetAColumnAndARowMore)
{
    record(movingBar({303, 241}, 3, 20), {303, 241});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    const DecodedVideo video = decodeVideo(target());
    EXPECT_EQ(video.width, 304);
    EXPECT_EQ(video.height, 242);
    expectLikeTheView(target(), start, end);
}

TEST_F(VideoExportTest, TheSmallestSensorMakesAVideo)
{
    record({{0, 0, 1, 0}, {0, 0, 0, 50000}}, {1, 1});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    const DecodedVideo video = decodeVideo(target());
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.width, 2);
    EXPECT_EQ(video.height, 2);
    EXPECT_EQ(video.count, 2u);
}

TEST_F(VideoExportTest, SensorsLargerThanTheViewAreCutToIt)
{
    record(movingBar({1600, 1000}, 3, 200), {1600, 1000});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    const DecodedVideo video = decodeVideo(target());
    EXPECT_EQ(video.width, 1280);
    EXPECT_EQ(video.height, 720);
    expectLikeTheView(target(), start, end);
}

TEST_F(VideoExportTest, ARecordingOfOneEventMakesOnePicture)
{
    record({{5, 6, 1, 1000}}, {320, 240});
    ASSERT_EQ(start, end);
    ASSERT_TRUE(exportTo("video.mp4", 0, endless));
    expectLikeTheView(target(), start, end);
}

TEST_F(VideoExportTest, ARangeOfOneMicrosecondMakesOnePicture)
{
    record(movingBar({320, 240}, 3, 20), {320, 240});
    ASSERT_TRUE(exportTo("video.mp4", start + 500, start + 500));
    expectLikeTheView(target(), start + 500, start + 500);
}

TEST_F(VideoExportTest, IdleMinutesKeepTheirLength)
{
    constexpr std::uint64_t minute = 60000000;
    record({{1, 1, 1, 0}, {2, 2, 1, 2 * minute}, {3, 3, 0, 2 * minute + 100000}}, {32, 32});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    std::vector<std::size_t> eventful;
    std::size_t k = 0;
    const DecodedVideo video = decodeVideo(target(), [&](const DecodedPicture& picture) {
        EXPECT_EQ(picture.time, static_cast<std::int64_t>(k * period));
        const auto [least, most] = std::minmax_element(picture.luma.begin(), picture.luma.end());
        if (*most - *least > 20)
            eventful.push_back(k);
        ++k;
    });
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.count, (end - start) / period + 1);
    EXPECT_THAT(eventful, ElementsAre(0u, 2 * minute / period, (2 * minute + 100000) / period));
    EXPECT_LT(QFileInfo(target()).size(), 1000000);
}

TEST_F(VideoExportTest, TheRangeIsCutToTheRecording)
{
    record(movingBar({320, 240}, 5, 20), {320, 240});
    ASSERT_TRUE(exportTo("video.mp4", 0, endless));
    expectLikeTheView(target(), start, end);
}

TEST_F(VideoExportTest, ABackwardsRangeIsRefused)
{
    record(movingBar({320, 240}, 5, 20), {320, 240});
    const CapturedMessages messages;
    EXPECT_FALSE(exportTo("video.mp4", start + 2000, start + 1000));
    EXPECT_REFUSED(messages, "video.mp4", "the range ends before it begins");
}

TEST_F(VideoExportTest, ARangeBeyondTheRecordingIsRefused)
{
    record({{5, 6, 1, 5000}, {5, 6, 1, 90000}}, {320, 240});
    for (const auto& [from, to] : {std::pair{end + 1, end + 100000}, {end + 1, endless}}) {
        const CapturedMessages messages;
        EXPECT_FALSE(exportTo("video.mp4", from, to));
        EXPECT_REFUSED(messages, "video.mp4", "the range lies outside the recording");
    }
    if (start > 0) {
        const CapturedMessages messages;
        EXPECT_FALSE(exportTo("video.mp4", 0, start - 1));
        EXPECT_REFUSED(messages, "video.mp4", "the range lies outside the recording");
    }
}

TEST_F(VideoExportTest, OfAReaderThatIsNotLoadedFails)
{
    record({{5, 6, 1, 5000}}, {320, 240});
    QString error;
    reader = RawFileReader::open(source, error);
    const CapturedMessages messages;
    EXPECT_FALSE(exportTo("video.mp4", 0, endless));
    EXPECT_REFUSED(messages, "video.mp4", "no recording is loaded");
}

TEST_F(VideoExportTest, ARecordingWhoseFileShrankIsRefused)
{
    record(movingBar({320, 240}, 5, 20), {320, 240});
    QFile file(QString::fromStdString(source));
    ASSERT_TRUE(file.resize(file.size() / 2));
    const CapturedMessages messages;
    EXPECT_FALSE(exportTo("video.mp4", start, end));
    EXPECT_EQ(others(), QStringList());
    EXPECT_THAT(messages.warnings().last().toStdString(), HasSubstr("file has shrunk"));
}

TEST_F(VideoExportTest, NeverReplacesAFileNorTakesARecordingsName)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    ASSERT_TRUE(exportTo("video.mp4", start, start));
    // A name belongs to whoever has its .raw, too.
    ASSERT_TRUE(exportTo("source.mp4", start, start));
    EXPECT_THAT(others(),
                ElementsAre(QStringLiteral("source-1.mp4"), QStringLiteral("video-1.mp4"),
                            QStringLiteral("video.mp4")));
    EXPECT_EQ(decodeVideo(target()).count, (end - start) / period + 1);
    EXPECT_EQ(decodeVideo(target("video-1.mp4")).count, 1u);
}

TEST_F(VideoExportTest, AMissingFolderIsMade)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    ASSERT_TRUE(exportTo("some/folder/video.mp4", start, end));
    EXPECT_EQ(decodeVideo(target("some/folder/video.mp4")).error, QString());
}

TEST_F(VideoExportTest, AFolderThatCannotBeMadeIsRefused)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    const CapturedMessages messages;
    EXPECT_FALSE(exportTo("source.raw/video.mp4", start, end));
    EXPECT_REFUSED(messages, "source.raw/video.mp4", "the folder cannot be made");
}

TEST_F(VideoExportTest, AFolderThatCannotBeWrittenIsRefused)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    const CapturedMessages messages;
    EXPECT_FALSE(reader->exportVideo(start, end, "/proc/video.mp4"));
    EXPECT_REFUSED(messages, "/proc/video.mp4", ": cannot be exported from ");
    EXPECT_FALSE(messages.warnings()[0].endsWith(QStringLiteral(": ")));
}

TEST_F(VideoExportTest, ASlashInTheNameIsAFolder)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    ASSERT_TRUE(exportTo("a/b.mp4", start, end));
    EXPECT_THAT(others(), ElementsAre(QStringLiteral("a")));
    EXPECT_TRUE(QFileInfo::exists(target("a/b.mp4")));
}

TEST_F(VideoExportTest, APathThatNamesNoFileIsRefused)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    for (const char* const name : {"folder/", "folder/.", "folder/.."}) {
        const CapturedMessages messages;
        EXPECT_FALSE(exportTo(name, start, end));
        EXPECT_REFUSED(messages, name, "it names no file");
    }
}

TEST_F(VideoExportTest, ANameTooLongIsRefusedWithTheSystemsReason)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    const CapturedMessages messages;
    EXPECT_FALSE(reader->exportVideo(start, end, recordings.path(std::string(300, 'n') + ".mp4")));
    EXPECT_REFUSED(messages, "nnn.mp4", "too long");
}

TEST_F(VideoExportTest, AChineseNameIsKept)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    ASSERT_TRUE(exportTo("\xE5\xAF\xBC\xE5\x87\xBA \xE8\xA7\x86\xE9\xA2\x91.mp4", start, end));
    EXPECT_THAT(others(), ElementsAre(QStringLiteral(u"\u5BFC\u51FA \u89C6\u9891.mp4")));
    EXPECT_EQ(decodeVideo(target("\xE5\xAF\xBC\xE5\x87\xBA \xE8\xA7\x86\xE9\xA2\x91.mp4")).error, QString());
}

TEST_F(VideoExportTest, ANameWithoutTheEndingGetsIt)
{
    record(movingBar({320, 240}, 2, 20), {320, 240});
    ASSERT_TRUE(exportTo("plain", start, end));
    ASSERT_TRUE(exportTo("picture.avi", start, end));
    ASSERT_TRUE(exportTo("LOUD.MP4", start, end));
    EXPECT_THAT(others(),
                testing::UnorderedElementsAre(QStringLiteral("plain.mp4"), QStringLiteral("picture.avi.mp4"),
                                              QStringLiteral("LOUD.MP4")));
}

TEST_F(VideoExportTest, AFullDiskLeavesNothing)
{
    record(movingBar({640, 480}, 20, 500), {640, 480});
    ASSERT_TRUE(exportTo("whole.mp4", start, end));
    const auto whole = static_cast<unsigned long>(QFileInfo(target("whole.mp4")).size());
    ASSERT_TRUE(QFile::remove(target("whole.mp4")));
    // At the start, in the middle, and while the index moves to the front.
    for (const unsigned long room : {10ul, whole / 2, whole - 1}) {
        const CapturedMessages messages;
        bool exported = true;
        {
            const FileSizeLimit limit(room);
            exported = exportTo("new/folder/video.mp4", start, end);
        }
        EXPECT_FALSE(exported) << room << " of " << whole;
        EXPECT_REFUSED(messages, "new/folder/video.mp4", "too large");
    }
}

TEST_F(VideoExportTest, AMissingEncoderGivesWayToAnother)
{
    record(movingBar({640, 480}, 5, 60), {640, 480});
    for (const auto& [encoder, codec] : {std::pair{"no_such_encoder", "h264"}, {"mpeg4", "mpeg4"}}) {
        const CapturedMessages messages;
        QString error;
        const QString path = target(codec) + QStringLiteral(".mp4");
        ASSERT_TRUE(exportVideo(*reader, start, end, path, error, {"no_such_encoder", encoder}))
            << error.toStdString();
        ASSERT_EQ(messages.warnings().size(), 1);
        EXPECT_THAT(messages.warnings()[0].toStdString(), HasSubstr(path.toStdString()));
        EXPECT_THAT(messages.warnings()[0].toStdString(), HasSubstr("lacks the encoder no_such_encoder"));
        EXPECT_EQ(decodeVideo(path).codec, codec);
        expectLikeTheView(path, start, end);
    }
}

TEST_F(VideoExportTest, BearsAMarkThatTellsItFromIntensityFrames)
{
    const auto backend = std::make_shared<RecordingBackend>();
    korvane::registerBackend(backend);
    record(movingBar({320, 240}, 2, 20), {320, 240});
    ASSERT_TRUE(exportTo("video.mp4", start, end));
    EXPECT_TRUE(korvane::isExportedVideo(recordings.path("video.mp4")));
    EXPECT_EQ(decodeVideo(target()).metadata["comment"], exportedVideoMark);

    // Nothing else bears it: recordings, folders, files that are not there, broken videos.
    EXPECT_FALSE(korvane::isExportedVideo(source));
    EXPECT_FALSE(korvane::isExportedVideo(recordings.path("")));
    EXPECT_FALSE(korvane::isExportedVideo(recordings.path("nothing.mp4")));
    QFile file(target());
    ASSERT_TRUE(file.resize(40));
    EXPECT_FALSE(korvane::isExportedVideo(recordings.path("video.mp4")));
    korvane::unregisterBackend(backend);
    EXPECT_FALSE(korvane::isExportedVideo(recordings.path("video.mp4")));
}
