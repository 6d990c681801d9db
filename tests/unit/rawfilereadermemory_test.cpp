#include "tests/support/capturedmessages.h"
#include "tests/unit/rawfilereaderfixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

using namespace korvane;
using namespace korvane::recording;
using namespace evt;
using testing::ElementsAre;
using testing::SizeIs;

// The reader where memory is short. A program of its own: it has its own operator new.

namespace {

std::atomic<std::size_t> largestBlock{std::numeric_limits<std::size_t>::max()}; ///< bytes

/// Lets no allocation of more than so many bytes succeed while it lives.
class ShortMemory
{
public:
    explicit ShortMemory(std::size_t bytes) { largestBlock = bytes; }
    ~ShortMemory() { largestBlock = std::numeric_limits<std::size_t>::max(); }
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

} // namespace

void* operator new(std::size_t size)
{
    void* const memory = size > largestBlock ? nullptr : std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

class RawFileReaderMemory : public RawFileReaderTest
{
protected:
    /// An event and a trigger every 10 us.
    static constexpr unsigned count = 100000;

    RawFileReaderMemory()
    {
        Bytes words;
        for (unsigned i = 0; i < count; ++i) {
            append(words, high2(i * 10 / 64), 4);
            append(words, cd2(1, i * 10 % 64, i % 640, 5), 4);
            append(words, trigger2(i * 10 % 64, 1, i % 2), 4);
        }
        path = recordings.write("many.raw", TemporaryRecordings::header(EvtEncoding::Evt2), words);
    }
};

TEST_F(RawFileReaderMemory, AWindowThatMemoryHasNoRoomForIsAnEmptyPointerAndIsLoggedOnce)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    const CapturedMessages messages;
    {
        const ShortMemory memory(1 << 20);
        EXPECT_FALSE(reader->getEventsAt(0, endless));
        EXPECT_FALSE(reader->getTriggersAt(0, endless));
        EXPECT_FALSE(reader->getNextEvents(endless));
        // Others are read.
        EXPECT_THAT(*reader->getEventsAt(500000, 1000), SizeIs(100));
        EXPECT_THAT(*reader->getTriggersAt(500000, 1000), SizeIs(100));
    }
    EXPECT_EQ(messages.warnings(),
              QStringList(QString::fromStdString(path)
                          + QStringLiteral(": a window cannot be read: std::bad_alloc")));
    EXPECT_THAT(*reader->getEventsAt(0, endless), SizeIs(count));
    EXPECT_THAT(*reader->getTriggersAt(0, endless), SizeIs(count));
}

TEST_F(RawFileReaderMemory, ARecordingThatMemoryHasNoRoomForIsNotLoaded)
{
    const auto reader = open();
    const CapturedMessages messages;
    const ShortMemory memory(16 << 10);
    EXPECT_FALSE(reader->loadFile());
    EXPECT_EQ(
        messages.warnings(),
        QStringList(QString::fromStdString(path) + QStringLiteral(": cannot be loaded: std::bad_alloc")));
    expectNothing(*reader);
}

TEST_F(RawFileReaderMemory, ACutWhoseTriggersMemoryHasNoRoomForFailsInsteadOfLosingThem)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    const CapturedMessages messages;
    {
        const ShortMemory memory(1 << 20);
        EXPECT_FALSE(reader->cutFile(0, endless, recordings.path("cut.raw")));
    }
    EXPECT_FALSE(QFile::exists(QString::fromStdString(recordings.path("cut.raw"))));
    ASSERT_THAT(messages.warnings(), SizeIs(1));
    EXPECT_TRUE(messages.warnings()[0].endsWith(QStringLiteral(": std::bad_alloc")));
}

TEST_F(RawFileReaderMemory, ACutTakesLittleHoweverLongARecordingClaimsToBe)
{
    // Times that wrap round and round between two events, and from there to a trigger.
    constexpr unsigned wraps = 300;
    Bytes words = words2({high2(0), cd2(1, 5, 1, 1)});
    const auto idle = [&words] {
        for (unsigned i = 0; i < wraps; ++i) {
            for (const std::uint32_t high : {0xF000000u, 0xFFFFFFFu, 0u})
                append(words, high2(high), 4);
        }
    };
    idle();
    append(words, cd2(0, 7, 2, 2), 4);
    idle();
    append(words, trigger2(9, 3, 1), 4);
    path = recordings.write("centuries.raw", TemporaryRecordings::header(EvtEncoding::Evt2), words);
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    constexpr std::uint64_t gap = std::uint64_t(wraps) << 34; // two months, whose words take 2.5 MB
    {
        const ShortMemory memory(1 << 20);
        ASSERT_TRUE(reader->cutFile(0, endless, recordings.path("cut.raw")));
    }
    const auto cut = TemporaryRecordings::load(recordings.path("cut.raw"));
    ASSERT_TRUE(cut);
    EXPECT_THAT(*cut->getEventsAt(0, endless), ElementsAre(Event2D(1, 1, 1, 5), Event2D(2, 2, 0, gap + 7)));
    EXPECT_THAT(*cut->getTriggersAt(0, endless), ElementsAre(EventTriggerIn(3, 1, 2 * gap + 9)));
}

TEST_F(RawFileReaderMemory, AWindowIsGivenBackWithoutMemory)
{
    const auto reader = open();
    ASSERT_TRUE(reader->loadFile());
    auto first = reader->getEventsAt(0, 1000);
    auto second = reader->getEventsAt(0, 1000);
    {
        const ShortMemory memory(0);
        first.reset();
        second.reset();
    }
    EXPECT_THAT(*reader->getEventsAt(0, 1000), SizeIs(100));
}

} // namespace
