#include "camera/recording/rawfilereader.h"
#include "tests/support/randomstreams.h"
#include "tests/support/temporaryrecordings.h"
#include "tests/support/windows.h"

#include <QFile>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>
#include <vector>

// The reader under several threads, without an event loop: these run under the thread sanitizer.

using namespace korvane;
using namespace korvane::recording;

namespace {

constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

class ReaderThreads : public testing::Test
{
protected:
    ReaderThreads()
    {
        RandomStreams streams(3);
        evt::Bytes bytes = streams.camera(EvtEncoding::Evt3, {640, 480}, 60000);
        path = recordings.write("shared.raw", TemporaryRecordings::header(EvtEncoding::Evt3), bytes);
        reader = TemporaryRecordings::load(path);
        if (!reader)
            throw std::runtime_error("cannot load the recording");
        events = *reader->getEventsAt(0, endless);
        triggers = *reader->getTriggersAt(0, endless);
        reader->getStartTimestamp(first);
        reader->getEndTimestamp(last);
    }

    template <typename Work>
    static void onThreads(int count, Work work)
    {
        std::vector<std::thread> threads;
        for (int i = 0; i < count; ++i)
            threads.emplace_back(work, i);
        for (auto& thread : threads)
            thread.join();
    }

    TemporaryRecordings recordings;
    std::string path;
    std::unique_ptr<RawFileReader> reader;
    std::vector<Event2D> events;
    std::vector<EventTriggerIn> triggers;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
};

TEST_F(ReaderThreads, WindowsReadAndPositionsSoughtAtTheSameTimeDoNotDisturbEachOther)
{
    std::atomic<int> wrong{0};
    onThreads(4, [&](int thread) {
        RandomStreams random(static_cast<std::uint64_t>(thread));
        for (int i = 0; i < 60; ++i) {
            const std::uint64_t start = random.below(last + 1);
            const std::uint64_t duration = random.below(last / 20 + 2);
            const auto found = reader->getEventsAt(start, duration);
            if (!found || *found != windows::between(events, start, duration))
                ++wrong;
            const auto edges = reader->getTriggersAt(start, duration);
            if (!edges || *edges != windows::between(triggers, start, duration))
                ++wrong;
            if (!reader->seekTime(first + random.below(last - first + 1)) || reader->seekTime(last + 1))
                ++wrong;
            // Wherever another thread has put the position meanwhile: the window is one of the recording.
            const auto next = reader->getNextEvents(1000);
            if (next && !next->empty()
                && *next
                    != windows::between(events, next->front().timestamp,
                                        next->back().timestamp - next->front().timestamp + 1))
                ++wrong;
            reader->isEnd();
            std::uint64_t time = 0;
            reader->getStartTimestamp(time);
            wrong += time == first ? 0 : 1;
            reader->getEndTimestamp(time);
            wrong += time == last ? 0 : 1;
            reader->metCounts();
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST_F(ReaderThreads, EveryWindowIsHandedOutOnce)
{
    std::atomic<std::size_t> total{0};
    const std::uint64_t step = (last - first) / 500 + 1;
    onThreads(4, [&](int) {
        while (const auto next = reader->getNextEvents(step))
            total += next->size();
    });
    EXPECT_EQ(total, events.size());
    EXPECT_TRUE(reader->isEnd());
}

TEST_F(ReaderThreads, EventsMayBeDroppedOnAnotherThread)
{
    std::vector<DvsFileReader::Events> shared(400);
    std::atomic<std::size_t> made{0};
    std::atomic<int> wrong{0};
    onThreads(2, [&](int thread) {
        for (std::size_t i = 0; i < shared.size(); ++i) {
            if (thread == 0) {
                shared[i] = reader->getEventsAt(first, 50 + i);
                made = i + 1;
            } else {
                while (made <= i)
                    std::this_thread::yield();
                if (*shared[i] != windows::between(events, first, 50 + i))
                    ++wrong;
                shared[i].reset();
            }
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST_F(ReaderThreads, AReaderMayBeAskedWhileItLoads)
{
    QString error;
    const auto fresh = RawFileReader::open(path, error);
    ASSERT_TRUE(fresh);
    std::atomic<bool> done{false};
    onThreads(3, [&](int thread) {
        if (thread == 0) {
            EXPECT_TRUE(fresh->loadFile());
            done = true;
            return;
        }
        // Nothing before it is loaded, everything afterwards, nothing in between.
        while (!done && fresh->isEnd()) {
            std::uint64_t time = 0;
            fresh->getEndTimestamp(time);
            EXPECT_TRUE(time == 0 || time == last);
            const auto found = fresh->getEventsAt(0, endless);
            if (found) {
                EXPECT_EQ(found->size(), events.size());
            }
        }
        EXPECT_TRUE(fresh->seekTime(last));
        EXPECT_EQ(fresh->getEventsAt(0, endless)->size(), events.size());
    });
}

TEST_F(ReaderThreads, AFileThatShrinksUnderReadingThreadsOnlyEndsEarlier)
{
    // Lost bytes read as zeros, which are events in this encoding: none of them may be handed out.
    RandomStreams streams(8);
    const evt::Bytes bytes = streams.camera(EvtEncoding::Evt2, {640, 480}, 100000);
    const auto shrinking
        = recordings.write("shrinking.raw", TemporaryRecordings::header(EvtEncoding::Evt2), bytes);
    const auto under = TemporaryRecordings::load(shrinking);
    ASSERT_TRUE(under);
    const auto whole = *under->getEventsAt(0, endless);
    under->getEndTimestamp(last);

    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    std::atomic<int> started{0};
    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    const auto isStartOf = [](const auto& found, const auto& expected) {
        return found.size() <= expected.size() && std::equal(found.begin(), found.end(), expected.begin());
    };
    onThreads(4, [&](int thread) {
        if (thread == 0) {
            while (started < 3)
                std::this_thread::yield();
            for (qint64 tenths = 9; tenths >= 0; --tenths) {
                const qint64 size = qint64(bytes.size()) / 10 * tenths;
                if (!QFile::resize(QString::fromStdString(shrinking), size))
                    ++wrong;
                under->getEventsAt(last / 2, last / 10);
            }
            done = true;
            return;
        }
        RandomStreams random(static_cast<std::uint64_t>(thread));
        for (int round = 0; round == 0 || !done; ++round) {
            started += round == 0 ? 1 : 0;
            const std::uint64_t start = random.below(last + 1);
            const std::uint64_t duration = random.below(last / 5 + 2);
            const auto found = under->getEventsAt(start, duration);
            if (found && !isStartOf(*found, windows::between(whole, start, duration)))
                ++wrong;
            under->getTriggersAt(start, 1000);
        }
    });
    qInstallMessageHandler(nullptr);
    EXPECT_EQ(wrong, 0);
    const auto nothing = under->getEventsAt(0, endless);
    EXPECT_TRUE(!nothing || nothing->empty());
}

} // namespace
