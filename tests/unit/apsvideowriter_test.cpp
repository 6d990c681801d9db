#include "tests/unit/apsvideofixture.h"

#include <gmock/gmock.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

using namespace korvane::recording;

namespace {

/// The grey that a decoded picture shows, from its luma of limited range.
int greyOfPicture(const DecodedPicture& picture)
{
    return (picture.luma[picture.luma.size() / 2] - 16) * 255 / 219;
}

/// A disk that is full after so many bytes.
class SmallDisk : public QFile
{
public:
    SmallDisk(const QString& path, qint64 room) : QFile(path), space(room) {}

protected:
    qint64 writeData(const char* data, qint64 size) override
    {
        if (pos() + size > space) {
            setErrorString(QStringLiteral("No space left on device"));
            return -1;
        }
        return QFile::writeData(data, size);
    }

private:
    const qint64 space;
};

/// A disk that answers only while its gate is open.
class SlowDisk : public QFile
{
public:
    using QFile::QFile;
    void setOpen(bool value)
    {
        {
            const std::lock_guard lock(mutex);
            gate = value;
        }
        changed.notify_all();
    }

protected:
    qint64 writeData(const char* data, qint64 size) override
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return gate; });
        return QFile::writeData(data, size);
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool gate = true;
};

} // namespace

TEST_F(ApsVideoTest, EverySlotHasExactlyOnePicture)
{
    const auto writer = newWriter(newFile());
    ASSERT_TRUE(writer);
    // Before the first event is known, and before it.
    push(*writer, first, 250);
    writer->begin(first);
    push(*writer, first - 1, 250);
    // Slot 0 gets none, slot 1 one, slot 2 two, slots 3 and 4 none, slot 5 one.
    push(*writer, first + slot, 100);
    push(*writer, first + 2 * slot, 120);
    waitFor(*writer, 3);
    push(*writer, first + 3 * slot - 1, 250);
    push(*writer, first + 5 * slot + 20000, 140);
    ASSERT_TRUE(writer->finish(first + 7 * slot + 5));
    const auto counts = writer->counts();
    EXPECT_EQ(counts.pictures, 8u);
    EXPECT_EQ(counts.repeats, 5u);
    EXPECT_EQ(counts.dropped, 0u);

    const DecodedVideo video = decodeVideo(path);
    EXPECT_EQ(video.error, QString());
    EXPECT_EQ(video.codec, "h264");
    ASSERT_EQ(video.count, 8u);
    const int expected[] = {100, 100, 120, 120, 120, 140, 140, 140};
    for (std::size_t k = 0; k < 8; ++k) {
        EXPECT_EQ(video.times[k], static_cast<std::int64_t>(k * slot));
        EXPECT_NEAR(greyOfPicture(video.pictures[k]), expected[k], 3) << k;
    }
    EXPECT_TRUE(video.metadata.find("comment") == video.metadata.end()) << "it is no exported video";
}

TEST_F(ApsVideoTest, RepeatsAreToldInTheLog)
{
    const CapturedMessages messages;
    const auto writer = newWriter(newFile());
    writer->begin(0);
    push(*writer, 0, 100);
    ASSERT_TRUE(writer->finish(3 * slot));
    const auto lines = messages.of(QtInfoMsg);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_THAT(lines[0].toStdString(), testing::HasSubstr("3 of 4 pictures repeat the one before"));
}

TEST_F(ApsVideoTest, FramesThatComeWhileTheEncoderIsBehindAreDroppedAndTheirSlotsRepeat)
{
    auto file = std::make_unique<SlowDisk>(path);
    SlowDisk& disk = *file;
    ASSERT_TRUE(disk.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered));
    const auto writer = newWriter(std::move(file));
    writer->begin(0);
    disk.setOpen(false);
    std::uint64_t k = 0;
    for (; writer->counts().dropped == 0; ++k)
        push(*writer, k * slot, greyOf(k));
    disk.setOpen(true);
    ASSERT_TRUE(writer->finish((k - 1) * slot));
    EXPECT_EQ(writer->counts().pictures, k);
    EXPECT_GE(writer->counts().repeats, writer->counts().dropped);
    const DecodedVideo video = decodeVideo(path);
    ASSERT_EQ(video.count, k);
    for (std::size_t i = 0; i < k; ++i)
        EXPECT_EQ(video.times[i], static_cast<std::int64_t>(i * slot));
}

TEST_F(ApsVideoTest, AFullDiskEndsTheVideoWithItsReasonAndHoldsNobodyUp)
{
    auto file = std::make_unique<SmallDisk>(path, 40000);
    ASSERT_TRUE(file->open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered));
    const auto writer = newWriter(std::move(file));
    writer->begin(0);
    for (std::uint64_t k = 0; !writer->failed(); ++k) {
        push(*writer, k * slot, 50, 150);
        waitFor(*writer, k + 1);
    }
    EXPECT_EQ(writer->error(), QStringLiteral("No space left on device"));
    push(*writer, 1'000'000'000, 50);
    EXPECT_FALSE(writer->finish(1'000'000'000));
}

TEST_F(ApsVideoTest, AFrameWhoseTimeLeapsByMinutesEndsTheVideoBehindWhatCameBefore)
{
    const CapturedMessages messages;
    const auto writer = newWriter(newFile());
    writer->begin(first);
    for (std::uint64_t k = 0; k < 30; ++k) {
        push(*writer, first + k * slot, greyOf(k));
        waitFor(*writer, k + 1);
    }
    push(*writer, first + (31 + ApsVideoWriter::mostRepeated) * slot, 50);
    EXPECT_TRUE(writer->failed());
    EXPECT_EQ(writer->error(), QStringLiteral("no frame could be recorded for five minutes"));
    push(*writer, first + 30 * slot, 50);
    EXPECT_FALSE(writer->finish(first + 30 * slot));
    EXPECT_EQ(writer->counts().pictures, 30u);
    EXPECT_GE(decodeVideo(path).count, 30u - 8u) << "but for the last fragment";
}

TEST_F(ApsVideoTest, BehindItsLastFrameTheVideoGoesOnForMinutesAtMost)
{
    const auto writer = newWriter(newFile());
    writer->begin(first);
    push(*writer, first, 100);
    ASSERT_TRUE(writer->finish(~std::uint64_t(0)));
    EXPECT_EQ(writer->counts().pictures, 1 + ApsVideoWriter::mostRepeated);
}

TEST_F(ApsVideoTest, AVideoWithoutAFrameHasNoPicture)
{
    const auto writer = newWriter(newFile());
    writer->begin(0);
    EXPECT_TRUE(writer->finish(10 * slot));
    EXPECT_EQ(writer->counts().pictures, 0u);
}

TEST_F(ApsVideoTest, AFrameOfAnotherSizeIsLeftOut)
{
    const auto writer = newWriter(newFile());
    writer->begin(0);
    const std::vector<std::uint8_t> pixels(12, 1);
    writer->push({pixels.data(), 2, 2, 0});
    writer->push({nullptr, width, height, 0});
    EXPECT_TRUE(writer->finish(0));
    EXPECT_EQ(writer->counts().pictures, 0u);
}

TEST_F(ApsVideoTest, AWriterThatIsDroppedFinishesItsFile)
{
    {
        const auto writer = newWriter(newFile());
        writer->begin(0);
        push(*writer, 0, 100);
        push(*writer, slot, 100);
    }
    EXPECT_EQ(decodeVideo(path).count, 2u);
}
