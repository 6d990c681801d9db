#include "tests/gui/dvsplayerfixture.h"

#include <limits>

namespace {

/// With start and end points.
class DvsPlayerRangeTest : public DvsPlayerTest
{
protected:
    void openWithPoints(std::uint64_t first, std::uint64_t last, int start, int end)
    {
        open(first, last);
        timeline.setHandleMode(3);
        timeline.setLowerValue(start);
        timeline.setUpperValue(end);
    }
};

/// A recording too long for the timeline's numbers: its end is 2^33 + 12345 us, more than two hours.
class DvsPlayerLongTest : public DvsPlayerTest
{
protected:
    static constexpr std::uint64_t end = (std::uint64_t(1) << 33) + 12345;
    static constexpr int scale = 8; ///< the timeline's step, microseconds
    const QString endText = QStringLiteral("143:09:946937");
};

} // namespace

TEST_F(DvsPlayerRangeTest, PlaybackEndsAtTheEndPointAndReturnsToTheStartPoint)
{
    openWithPoints(0, 10'500'000, 200'000, 240'000);
    moveTo(200'000);
    click();
    ASSERT_TRUE(wait([this] { return pauses == 1; }));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 200000 33333", "at 230303 9698", "seek 200000"}));
    EXPECT_EQ(player->currentTime(), 200'000u);
    EXPECT_EQ(timeline.centerValue(), 200'000);
    EXPECT_EQ(label, QStringLiteral("00:00:200000/00:10:500000")) << "the label names the recording's end";
}

TEST_F(DvsPlayerRangeTest, LoopingStaysBetweenThePoints)
{
    openWithPoints(0, 10'500'000, 200'000, 240'000);
    moveTo(200'000);
    player->setLooping(true);
    click();
    ASSERT_TRUE(wait([this] { return reader->log.count("seek 200000") >= 2; }));
    for (const std::string& line : reader->log.lines())
        EXPECT_TRUE(line == "at 200000 33333" || line == "at 230303 9698" || line == "seek 200000") << line;
}

TEST_F(DvsPlayerRangeTest, APointSwitchedOffFreesTheWholeRecording)
{
    openWithPoints(0, 60'000, 10'000, 20'000);
    timeline.setHandleMode(1);
    click();
    ASSERT_TRUE(wait([this] { return pauses == 1; }));
    EXPECT_EQ(reader->log.lines(), (Lines{"at 0 33333", "at 30303 29698", "seek 0"}));
}

TEST_F(DvsPlayerRangeTest, StepsAreLimitedByThePoints)
{
    openWithPoints(0, 10'500'000, 200'000, 300'000);
    moveTo(266'667);
    {
        const CapturedMessages messages;
        player->nextClicked();
        EXPECT_TRUE(messages.debug().contains(QStringLiteral("File read end.")));
    }
    EXPECT_EQ(player->currentTime(), 266'667u);
    moveTo(266'666);
    player->nextClicked();
    EXPECT_EQ(player->currentTime(), 296'969u);
    moveTo(230'302);
    player->previousClicked();
    EXPECT_EQ(player->currentTime(), 200'000u);
    moveTo(250'000);
    player->stopClicked();
    EXPECT_EQ(player->currentTime(), 200'000u);
    EXPECT_EQ(timeline.centerValue(), 200'000);
}

TEST_F(DvsPlayerRangeTest, AnotherRecordingBeginsWithTheWholeOfItself)
{
    openWithPoints(0, 10'500'000, 5'000'000, 9'000'000);
    timeline.setCenterValue(8'000'000);
    open(1000, 2'000'000);
    EXPECT_EQ(timeline.effectiveLowerValue(), 1000);
    EXPECT_EQ(timeline.effectiveUpperValue(), 2'000'000) << "not where the playhead stood in the last one";
    EXPECT_EQ(timeline.handleMode(), 3);
}

TEST_F(DvsPlayerLongTest, TheTimelineCountsInStepsThatFitAndTheLabelIsExact)
{
    open(5000, end);
    EXPECT_EQ(timeline.minimum(), 5000u / scale);
    EXPECT_EQ(timeline.maximum(), end / scale);
    EXPECT_LE(timeline.maximum(), std::uint64_t(std::numeric_limits<int>::max()));
    EXPECT_EQ(label, QStringLiteral("00:00:005000/") + endText);
    player->nextClicked();
    EXPECT_EQ(player->currentTime(), 35'303u);
    EXPECT_EQ(timeline.centerValue(), 35'303 / scale);
    EXPECT_EQ(label, QStringLiteral("00:00:035303/") + endText);
}

TEST_F(DvsPlayerLongTest, ASeekMultipliesWhatTheTimelineSays)
{
    open(0, end);
    player->onSliderTimeTrackClick(500'000'000);
    EXPECT_EQ(player->currentTime(), 4'000'000'000u);
    EXPECT_TRUE(reader->log.contains("seek 4000000000"));
    EXPECT_EQ(label, QStringLiteral("66:40:000000/") + endText);
}

TEST_F(DvsPlayerLongTest, ItIsPlayedToItsExactEndAndReturnsToItsExactStart)
{
    open(5001, end);
    player->onSliderTimeMove(timeline.effectiveUpperValue());
    EXPECT_EQ(player->currentTime(), end);
    reader->log.clear();
    click();
    ASSERT_TRUE(wait([this] { return pauses == 1; }));
    EXPECT_EQ(reader->log.lines(), (Lines{"at " + std::to_string(end) + " 1", "seek 5001"}));
    EXPECT_EQ(player->currentTime(), 5001u);
    EXPECT_EQ(label, QStringLiteral("00:00:005001/") + endText);
}
