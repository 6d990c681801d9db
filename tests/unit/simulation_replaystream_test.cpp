#include "camera/simulation/replaystream.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/plainrecording.h"
#include "tests/support/randomstreams.h"
#include "tests/support/recordprinters.h"
#include "tests/support/referencedecoder.h"

#include <QFile>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using korvane::Event2D;
using korvane::EventTriggerIn;
using korvane::simulation::ReplayStream;
using Times = std::vector<std::uint64_t>;

struct Taken
{
    std::vector<Event2D> events;
    std::vector<EventTriggerIn> triggers;

    Times eventTimes() const
    {
        Times times;
        for (const Event2D& event : events)
            times.push_back(event.timestamp);
        return times;
    }
    Times triggerTimes() const
    {
        Times times;
        for (const EventTriggerIn& trigger : triggers)
            times.push_back(trigger.timestamp);
        return times;
    }
};

class ReplayStreamTest : public testing::Test
{
protected:
    std::unique_ptr<ReplayStream> replay(const std::vector<PlainWord>& words)
    {
        path = writePlainRecording(folder, "replayed.raw", words);
        return open();
    }
    std::unique_ptr<ReplayStream> open() const
    {
        auto reader = TemporaryRecordings::load(path);
        EXPECT_NE(reader, nullptr);
        return std::make_unique<ReplayStream>(std::move(reader), QString::fromStdString(path));
    }
    /// Everything up to `until` and the rest of that step; checks each step's bounds and order on the way.
    static Taken take(ReplayStream& stream, std::uint64_t until)
    {
        Taken all;
        while (stream.time() < until) {
            const std::uint64_t from = stream.time();
            const std::uint64_t to = stream.nextTime();
            const auto step = stream.generateStep();
            EXPECT_EQ(step.until, to);
            EXPECT_EQ(stream.time(), to);
            std::uint64_t last = from;
            for (const Event2D& event : step.events) {
                EXPECT_GE(event.timestamp, last);
                EXPECT_LT(event.timestamp, to);
                last = event.timestamp;
                all.events.push_back(event);
            }
            last = from;
            for (const EventTriggerIn& trigger : step.triggers) {
                EXPECT_GE(trigger.timestamp, last);
                EXPECT_LT(trigger.timestamp, to);
                last = trigger.timestamp;
                all.triggers.push_back(trigger);
            }
        }
        return all;
    }

    TemporaryRecordings folder;
    std::string path;
};

} // namespace

TEST_F(ReplayStreamTest, FirstEventComesAtTimeZeroAndTheOthersAtTheirDistance)
{
    const auto stream = replay(eventsAt({1000, 1001, 1001, 9000, 17500, 60000}));
    EXPECT_EQ(stream->geometry(), (korvane::recording::Geometry{640, 480}));
    EXPECT_EQ(stream->roundTime(), 59001U);
    const Taken taken = take(*stream, 48000);
    EXPECT_EQ(taken.eventTimes(), (Times{0, 1, 1, 8000, 16500}));
    EXPECT_EQ(taken.events[3], (Event2D{9000 % 640, 9000 % 480, 0, 8000}));
}

TEST_F(ReplayStreamTest, AfterTheLastEventItStartsAgainAndTimeGoesOn)
{
    const CapturedMessages messages;
    const auto stream = replay(eventsAt({500, 20500, 25499}));
    ASSERT_EQ(stream->roundTime(), 25000U);
    const Taken taken = take(*stream, 100000);
    EXPECT_EQ(
        taken.eventTimes(),
        (Times{0, 20000, 24999, 25000, 45000, 49999, 50000, 70000, 74999, 75000, 95000, 99999, 100000}));
    EXPECT_EQ(taken.events[3].x, taken.events[0].x);
    EXPECT_EQ(messages.of(QtInfoMsg),
              (QStringList{QString::fromStdString(path)
                           + QStringLiteral(": has been replayed to its end; it starts again")}))
        << "told once";
}

TEST_F(ReplayStreamTest, SeveralRoundsMeetInOneStep)
{
    const auto stream = replay(eventsAt({0, 15999}));
    ASSERT_EQ(stream->roundTime(), ReplayStream::stepUs);
    EXPECT_EQ(take(*stream, 32000).eventTimes(), (Times{0, 15999, 16000, 31999}));

    const auto odd = replay(eventsAt({0, 16000}));
    EXPECT_EQ(take(*odd, 48000).eventTimes(), (Times{0, 16000, 16001, 32001, 32002}));
}

TEST_F(ReplayStreamTest, ASingleEventComesOncePerStep)
{
    const auto stream = replay(eventsAt({123456}));
    EXPECT_EQ(take(*stream, 48000).eventTimes(), (Times{0, 16000, 32000}));
}

TEST_F(ReplayStreamTest, TriggersComeWithTheEventsAndLengthenTheRound)
{
    const auto stream = replay({{50, true}, {100, false}, {3100, true}, {3100, false}, {40100, true}});
    EXPECT_EQ(stream->roundTime(), 40051U) << "from the first trigger to the last one";
    EXPECT_EQ(stream->lead(), 50U);
    const Taken taken = take(*stream, 96000);
    EXPECT_EQ(taken.eventTimes(), (Times{50, 3050, 40101, 43101, 80152, 83152}));
    EXPECT_EQ(taken.triggerTimes(), (Times{0, 3050, 40050, 40051, 43101, 80101, 80102, 83152}));
    EXPECT_EQ(taken.triggers[0].polarity, 0);
}

TEST_F(ReplayStreamTest, TriggersLongBeforeTheFirstEventAreLeftOut)
{
    const auto stream = replay({{5, true}, {100, true}, {1000005, true}, {1000100, false}, {1020100, false}});
    EXPECT_EQ(stream->lead(), 1000000U);
    const Taken taken = take(*stream, 1020000);
    EXPECT_EQ(taken.triggerTimes(), (Times{0, 999905, 1020001}));
    EXPECT_EQ(taken.eventTimes(), (Times{1000000, 1020000}));
}

TEST_F(ReplayStreamTest, ARoundCanBeMadeLongerAndAMultipleOfATime)
{
    writePlainRecording(folder, "round.raw", eventsAt({0, 50000}));
    const auto open = [this](ReplayStream::Round round) {
        return ReplayStream(TemporaryRecordings::load(folder.path("round.raw")), QString(), round);
    };
    EXPECT_EQ(open({0, 33333}).roundTime(), 66666U);
    EXPECT_EQ(open({70000, 33333}).roundTime(), 99999U);
    ReplayStream longer = open({70000, 1});
    EXPECT_EQ(take(longer, 144000).eventTimes(), (Times{0, 50000, 70000, 120000, 140000}));
}

TEST_F(ReplayStreamTest, IdleStretchesArePassedOver)
{
    constexpr std::uint64_t hour = 3600ULL * 1000000;
    const auto stream = replay({{0, false}, {hour, false}, {hour + hour / 2, true}, {2 * hour, false}});
    const Taken taken = take(*stream, 2 * hour + 1);
    EXPECT_EQ(taken.eventTimes(), (Times{0, hour, 2 * hour, 2 * hour + 1}));
    EXPECT_EQ(taken.triggerTimes(), (Times{hour + hour / 2}));
    EXPECT_GT(stream->time() / ReplayStream::stepUs, 400000U) << "steps";
    EXPECT_LT(stream->reads(), 20000U);
}

TEST_F(ReplayStreamTest, EveryEventAndTriggerOfAnyRecordingComesOncePerRound)
{
    using korvane::recording::EvtEncoding;
    for (const EvtEncoding encoding : {EvtEncoding::Evt2, EvtEncoding::Evt21, EvtEncoding::Evt3}) {
        for (std::uint64_t seed = 1; seed <= 4; ++seed) {
            RandomStreams random(seed);
            const korvane::recording::Geometry geometry{640, 480};
            const evt::Bytes words = random.camera(encoding, geometry, 4000);
            path = folder.write("random.raw", TemporaryRecordings::header(encoding), words);
            const auto wanted = reference::decode(encoding, words, geometry);
            ASSERT_FALSE(wanted.events.empty());
            std::uint64_t first = wanted.events.front().timestamp;
            const auto lead = std::find_if(wanted.triggers.begin(), wanted.triggers.end(),
                                           [event = first](const EventTriggerIn& trigger) {
                                               return trigger.timestamp + ReplayStream::longestLead >= event;
                                           });
            if (lead != wanted.triggers.end())
                first = std::min(first, lead->timestamp);
            // Recordings of hours with a random event here and there: their first minutes do.
            constexpr std::uint64_t most = 120ULL * 1000000;
            const auto stream = open();
            const std::uint64_t end = std::min(stream->roundTime(), most);
            const Taken taken = take(*stream, end);

            std::vector<Event2D> events;
            for (Event2D event : wanted.events) {
                event.timestamp -= first;
                if (event.timestamp < end)
                    events.push_back(event);
            }
            std::vector<EventTriggerIn> triggers;
            for (EventTriggerIn trigger : wanted.triggers) {
                if (trigger.timestamp < first || trigger.timestamp - first >= end)
                    continue;
                trigger.timestamp -= first;
                triggers.push_back(trigger);
            }
            ASSERT_GE(taken.events.size(), events.size());
            EXPECT_TRUE(std::equal(events.begin(), events.end(), taken.events.begin())) << seed;
            ASSERT_GE(taken.triggers.size(), triggers.size());
            EXPECT_TRUE(std::equal(triggers.begin(), triggers.end(), taken.triggers.begin())) << seed;
        }
    }
}

TEST_F(ReplayStreamTest, AFileThatShrinksStartsAgainWhereItNowEnds)
{
    const CapturedMessages messages;
    const auto stream = replay(steadyEvents(0, 400000, 10));
    take(*stream, 32000);
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), QFile(QString::fromStdString(path)).size() / 4));
    const Taken taken = take(*stream, 1000000);
    std::size_t starts = 0;
    for (const Event2D& event : taken.events)
        starts += event.x == 0 && event.y == 0 ? 1 : 0; // time 0, and every 1920 us
    EXPECT_GT(taken.events.size(), 50000U) << "a hundred milliseconds again and again";
    EXPECT_GT(starts, 400U);
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("has shrunk")).size(), 1);
}

TEST_F(ReplayStreamTest, AFileThatShrinksToNothingFallsSilent)
{
    const CapturedMessages messages;
    const auto stream = replay(steadyEvents(0, 400000, 10));
    take(*stream, 32000);
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path), 0));
    EXPECT_TRUE(take(*stream, 3000000).events.empty());
}

TEST_F(ReplayStreamTest, MemoryIsBoundedWhateverAFileClaims)
{
    // Ten million events in one microsecond.
    std::vector<std::uint16_t> words{evt::high3(0), evt::low3(5)};
    for (int row = 0; row < 16000; ++row) {
        words.insert(words.end(), {evt::row3(static_cast<unsigned>(row % 480)), evt::base3(1, 0)});
        words.insert(words.end(), 53, evt::vector12(0xfff));
    }
    words.insert(words.end(), {evt::low3(9), evt::row3(1), evt::x3(0, 7)});
    path = folder.write("dense.raw", TemporaryRecordings::header(korvane::recording::EvtEncoding::Evt3),
                        evt::words3(words));
    const CapturedMessages messages;
    const auto stream = open();
    const auto step = stream->generateStep();
    EXPECT_LE(step.events.size(), ReplayStream::mostEvents);
    EXPECT_GT(step.events.size(), ReplayStream::mostEvents / 2);
    stream->generateStep();
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("the rest is left out")).size(), 1) << "told once";
}
