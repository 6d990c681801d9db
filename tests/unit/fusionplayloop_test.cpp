#include "playback/fusionplayloop.h"

#include "tests/support/capturedmessages.h"
#include "tests/support/fakeclock.h"
#include "tests/support/scriptedapsreader.h"
#include "tests/support/scriptedreader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// Notes what playback tells, and keeps the pictures.
class ScriptedOutput : public FusionPlaybackOutput
{
public:
    explicit ScriptedOutput(ScriptedLog& callLog) : log(callLog) {}

    void showImage(const QImage& image) override
    {
        {
            const std::lock_guard guard(mutex);
            images.push_back(image.copy());
        }
        log.add("image");
        if (onImage)
            onImage();
    }
    void showTimeStamp(std::uint64_t time) override { log.add("time " + std::to_string(time)); }
    void showProgress(std::uint64_t cur, std::uint64_t total) override
    {
        log.add("progress " + std::to_string(cur) + ' ' + std::to_string(total));
    }
    void fileFinished() override
    {
        log.add("finished");
        if (onFinished)
            onFinished();
    }
    QImage picture(std::size_t index) const
    {
        const std::lock_guard guard(mutex);
        return images.at(index);
    }

    std::function<void()> onImage;
    std::function<void()> onFinished;

private:
    ScriptedLog& log;
    mutable std::mutex mutex;
    std::vector<QImage> images;
};

class FusionPlayLoopTest : public testing::Test
{
protected:
    using Lines = ScriptedLog::Lines;
    static constexpr std::uint64_t first = 5'000'000;

    ~FusionPlayLoopTest() override { loop.reset(); }

    /// `frames` intensity frames and `windows` whole windows of events, one event a millisecond.
    void open(std::size_t frames, std::uint64_t windows)
    {
        reader = std::make_shared<ScriptedReader>(first, last(windows));
        // As a reader opened anew stands.
        reader->seekTime(first);
        recording = {reader, std::make_shared<ScriptedApsReader>(frames, log), first, last(windows)};
        loop.emplace(picture, output, clock);
    }
    static std::uint64_t last(std::uint64_t windows) { return first + windows * 33333 - 1; }

    /// Lets so many further ticks come, the loop then waiting for the next.
    void letTick(std::size_t ticks)
    {
        for (std::size_t i = 0; i < ticks; ++i) {
            if (seen > 0)
                clock.grant(1);
            ASSERT_TRUE(clock.awaitWaits(++seen));
        }
    }
    /// The lines that playback told, without what the reader of frames was asked.
    Lines told() const
    {
        Lines lines = log.lines();
        std::erase_if(lines, [](const std::string& line) {
            return line.starts_with("frame") || line == "no frame" || line.starts_with("seek");
        });
        return lines;
    }
    static std::string progress(std::uint64_t current, std::uint64_t windows)
    {
        return "progress " + std::to_string(current) + ' ' + std::to_string(last(windows));
    }

    ScriptedLog log;
    FakeClock clock;
    FusionPicture picture;
    ScriptedOutput output{log};
    std::shared_ptr<ScriptedReader> reader;
    FusionRecording recording;
    std::optional<FusionPlayLoop> loop;
    std::size_t seen = 0;
};

} // namespace

TEST_F(FusionPlayLoopTest, ATickShowsAFrameThenItsTimeThenTheProgress)
{
    open(5, 5);
    loop->start(recording);
    letTick(2);
    loop->stop();
    EXPECT_EQ(told(),
              (Lines{"image", "time 5000000", progress(5'000'000, 5), "image", "time 5033333",
                     progress(5'033'333, 5)}));
}

TEST_F(FusionPlayLoopTest, APictureIsTheFrameWithTheTicksEventsOverIt)
{
    open(5, 5);
    loop->start(recording);
    letTick(2);
    loop->stop();
    for (const std::size_t k : {std::size_t{0}, std::size_t{1}}) {
        const QImage image = output.picture(k);
        const int level = ScriptedApsReader::colourOf(k);
        EXPECT_EQ(image.pixelColor(640, 300), QColor(level, level, level));
        EXPECT_EQ(image.pixelColor(0, 0), QColor(255, 255, 255));
    }
    // The event at 5000 ms lies in column 5000 mod 1280 of row 7: that is 1160, mirrored 120.
    EXPECT_EQ(output.picture(0).pixelColor(120, 7), QColor(255, 0, 0));
    EXPECT_NE(output.picture(1).pixelColor(120, 7), QColor(255, 0, 0));
}

TEST_F(FusionPlayLoopTest, WithoutANewFrameEventsAddToThePictureBefore)
{
    open(1, 4);
    loop->start(recording);
    letTick(2);
    loop->stop();
    EXPECT_EQ(output.picture(1).pixelColor(120, 7), QColor(255, 0, 0));
    EXPECT_EQ(output.picture(1).pixelColor(120 - 34, 7), QColor(255, 0, 0));
    EXPECT_NE(output.picture(0).pixelColor(120 - 34, 7), QColor(255, 0, 0));
}

TEST_F(FusionPlayLoopTest, FramesLeftOverKeepTheTicksComingUntilTheyAreUsedUp)
{
    open(4, 2);
    loop->start(recording);
    letTick(4);
    EXPECT_EQ(log.count("image"), 2);
    EXPECT_FALSE(log.contains("finished"));
    clock.grant(1);
    ASSERT_TRUE(log.waitForCount("finished", 1));
    loop->stop();
    EXPECT_EQ(log.count("frame 3"), 1);
    EXPECT_EQ(told().back(), progress(first, 2));
}

TEST_F(FusionPlayLoopTest, AtTheEndItRewindsTellsOnceThatItFinishedThenTheProgressAtTheStart)
{
    open(2, 2);
    loop->start(recording);
    letTick(2);
    clock.grant(1);
    ASSERT_TRUE(log.waitForCount(progress(first, 2), 2));
    loop->stop();
    EXPECT_FALSE(loop->isPlaying());
    EXPECT_EQ(log.count("finished"), 1);
    const Lines lines = told();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2], "finished");
    EXPECT_EQ(lines.back(), progress(first, 2));
    EXPECT_EQ(log.count("seek aps 0"), 1);
    EXPECT_EQ(reader->log.count("seek " + std::to_string(first)), 2); // once when it was opened
}

TEST_F(FusionPlayLoopTest, EventsThatComeWithTheirReadersEndAreTheLast)
{
    open(1, 2);
    loop->start(recording);
    letTick(1);
    clock.grant(1);
    ASSERT_TRUE(log.waitForCount("finished", 1));
    loop->stop();
    EXPECT_EQ(reader->log.count("next 33333"), 2) << "no third tick to find that nothing comes";
    EXPECT_EQ(log.count("image"), 2);
}

TEST_F(FusionPlayLoopTest, NoBatchIsTheEndEvenOfAReaderThatDoesNotKnowIt)
{
    class Endless : public ScriptedReader
    {
    public:
        using ScriptedReader::ScriptedReader;
        bool isEnd() override { return false; }
    };
    open(1, 1);
    reader = std::make_shared<Endless>(first, last(1));
    reader->loaded = false; // gives nothing
    recording.dvsReader = reader;
    loop->start(recording);
    letTick(1);
    EXPECT_EQ(log.count("finished"), 0) << "a frame came";
    clock.grant(1);
    ASSERT_TRUE(log.waitForCount("finished", 1));
    loop->stop();
}

TEST_F(FusionPlayLoopTest, AReaderThatThrowsEndsPlaybackAndIsLetGo)
{
    const CapturedMessages messages;
    open(3, 3);
    reader->onMove = [] { throw std::runtime_error("no more memory"); };
    loop->start(recording);
    ASSERT_TRUE(log.waitForCount("finished", 1));
    EXPECT_FALSE(loop->isPlaying());
    loop->stop();
    EXPECT_EQ(told(), Lines{"finished"});
    EXPECT_EQ(reader.use_count(), 2) << "the test's own";
    EXPECT_EQ(messages.of(QtCriticalMsg),
              QStringList{QStringLiteral("Playback has ended early: no more memory")});
}

TEST_F(FusionPlayLoopTest, LetsItsReadersGoWhenItIsStoppedAndWhenItEnds)
{
    open(2, 1);
    const std::weak_ptr<korvane::ApsFileReader> frames = recording.apsReader;
    const std::weak_ptr<korvane::DvsFileReader> events = reader;
    loop->start(recording);
    letTick(1);
    loop->stop();
    EXPECT_EQ(events.use_count(), 2) << "the test's own";
    loop->start(recording);
    recording = {};
    reader.reset();
    clock.grant(10);
    ASSERT_TRUE(log.waitForCount("finished", 1));
    loop->stop();
    EXPECT_TRUE(frames.expired());
    EXPECT_TRUE(events.expired());
}

TEST_F(FusionPlayLoopTest, AnotherRecordingBeginsWithNoFrameOfTheLast)
{
    open(3, 3);
    loop->start(recording);
    letTick(2);
    loop->stop();
    recording.apsReader = std::make_shared<ScriptedApsReader>(0, log);
    log.clear();
    loop->start(recording);
    ASSERT_TRUE(log.waitForCount("time 5000000", 1)) << "the start, not the time of the other's frame";
    loop->stop();
}

TEST_F(FusionPlayLoopTest, PlayedAgainAfterTheEndItBeginsAtTheStart)
{
    open(2, 2);
    loop->start(recording);
    letTick(2);
    clock.grant(1);
    ASSERT_TRUE(log.waitForCount("finished", 1));
    loop->start(recording);
    ASSERT_TRUE(log.waitForCount("frame 0", 2));
    ASSERT_TRUE(log.waitForCount("time 5000000", 2));
    loop->stop();
}

TEST_F(FusionPlayLoopTest, StoppedAndStartedAgainItResumesWhereItWas)
{
    open(6, 6);
    loop->start(recording);
    letTick(2);
    loop->stop();
    loop->start(recording);
    ASSERT_TRUE(log.waitForCount("time " + std::to_string(first + 2 * 33333), 1));
    loop->stop();
    EXPECT_EQ(log.count("frame 0"), 1);
    EXPECT_EQ(log.count("frame 2"), 1);
}

TEST_F(FusionPlayLoopTest, WithTheReplayFlagItGoesOnFromTheBeginning)
{
    open(2, 2);
    loop->setReplay(true);
    loop->start(recording);
    letTick(5);
    loop->stop();
    EXPECT_EQ(log.count("frame 0"), 2);
    EXPECT_FALSE(log.contains("finished"));
}

TEST_F(FusionPlayLoopTest, AnEmptyPointerFromTheReaderMakesNoPictureAndCountsTowardsTheEnd)
{
    open(1, 3);
    reader->seekTime(last(3));
    reader->getNextEvents(33333); // now behind the end: nothing comes any more
    loop->start(recording);
    letTick(1);
    clock.grant(1);
    ASSERT_TRUE(log.waitForCount("finished", 1));
    loop->stop();
    EXPECT_FALSE(log.contains("image"));
}

TEST_F(FusionPlayLoopTest, AQuietStretchIsNotTheEnd)
{
    open(1, 3);
    // A recording without events between its first and its last.
    recording.dvsReader = std::make_shared<ScriptedReader>(first, first);
    struct Quiet : ScriptedReader
    {
        using ScriptedReader::ScriptedReader;
        Events getNextEvents(std::uint64_t) override
        {
            return std::make_shared<std::vector<korvane::Event2D>>();
        }
        bool isEnd() override { return false; }
    };
    recording.dvsReader = std::make_shared<Quiet>(first, last(3));
    loop->start(recording);
    letTick(3);
    loop->stop();
    EXPECT_EQ(log.count("image"), 3);
    EXPECT_FALSE(log.contains("finished"));
}

TEST_F(FusionPlayLoopTest, ATickWaitsForTheRestOfItsTimeOnly)
{
    open(4, 4);
    output.onImage = [this] { clock.advance(std::chrono::microseconds(12345)); };
    loop->start(recording);
    letTick(2);
    loop->stop();
    for (const std::int64_t wait : clock.waits())
        EXPECT_EQ(wait, 33333 - 12345);
}

TEST_F(FusionPlayLoopTest, ATickThatTookAllItsTimeIsFollowedByTheNextAtOnce)
{
    open(4, 4);
    int ticks = 0;
    output.onImage = [this, &ticks] { clock.advance(std::chrono::microseconds(++ticks < 3 ? 33333 : 0)); };
    loop->start(recording);
    ASSERT_TRUE(clock.awaitWaits(1));
    loop->stop();
    EXPECT_EQ(log.count("image"), 3);
    EXPECT_EQ(clock.waits(), std::vector<std::int64_t>{33333});
}

TEST_F(FusionPlayLoopTest, AStopRightAfterTheStartIsNotLost)
{
    open(50, 50);
    for (int i = 0; i < 50; ++i) {
        loop->start(recording);
        loop->stop();
        EXPECT_FALSE(loop->isPlaying());
    }
}

TEST_F(FusionPlayLoopTest, StartingWhileItRunsEndsTheRunningLoopFirst)
{
    open(50, 50);
    loop->start(recording);
    letTick(1);
    loop->start(recording);
    ASSERT_TRUE(log.waitForCount("frame 1", 1));
    loop->stop();
    EXPECT_EQ(log.count("frame 0"), 1);
}

// The thread sanitizer takes a join that the system refuses for one that was done.
#ifndef __SANITIZE_THREAD__
TEST_F(FusionPlayLoopTest, JoiningFromThePlayThreadIsAnError)
{
    open(1, 1);
    reader->seekTime(last(1));
    reader->getNextEvents(33333);
    output.onFinished = [this] {
        try {
            loop->stop();
            log.add("joined itself");
        } catch (const std::system_error& error) {
            log.add(error.code() == std::errc::resource_deadlock_would_occur ? "refused" : "another error");
        }
    };
    loop->start(recording);
    letTick(1); // it runs and start() has returned
    clock.grant(1);
    // The thread is joined from here only after it has tried to join itself.
    ASSERT_TRUE(log.waitForCount("refused", 1));
    loop->stop();
}
#endif

TEST_F(FusionPlayLoopTest, DestructionEndsAndJoins)
{
    open(50, 50);
    loop->start(recording);
    letTick(1);
    loop.reset();
    EXPECT_EQ(log.count("frame 0"), 1);
}

TEST(FusionPictureTest, PicturesHandedOutStayAsTheyAre)
{
    FusionPicture picture;
    picture.fill(QColor(1, 2, 3));
    std::vector<QImage> shown;
    const korvane::Event2D event(640, 100, 1, 0);
    for (int i = 0; i < 6; ++i) {
        shown.push_back(picture.image());
        picture.paintEvents(&event, &event + 1);
    }
    EXPECT_EQ(shown[0].pixelColor(640, 100), QColor(1, 2, 3));
    for (std::size_t i = 1; i < shown.size(); ++i)
        EXPECT_EQ(shown[i].pixelColor(640, 100), QColor(255, 0, 0));
}

TEST(FusionPictureTest, MemoryThatNobodyHoldsIsUsedAgain)
{
    FusionPicture picture;
    QImage shown = picture.image();
    std::vector<const uchar*> seen;
    const korvane::Event2D event(640, 100, 1, 0);
    for (int i = 0; i < 40; ++i) {
        picture.paintEvents(&event, &event + 1);
        shown = picture.image();
        seen.push_back(shown.constBits());
    }
    std::sort(seen.begin(), seen.end());
    seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
    EXPECT_LE(seen.size(), 4U);
}
