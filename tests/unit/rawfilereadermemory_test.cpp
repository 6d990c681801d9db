#include "tests/support/capturedmessages.h"
#include "tests/unit/rawfilereaderfixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

using namespace korvane::recording;
using namespace evt;
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
