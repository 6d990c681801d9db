#include "camera/driver/dvsfilereader.h"
#include "tests/conformance/fixture.h"

// What the program relies on with every recording that a backend reads.

namespace conformance {

namespace {

using korvane::DvsFileReader;
using korvane::Event2D;

class RecordingConformance : public testing::TestWithParam<RecordingSource>
{
protected:
    void SetUp() override
    {
        path = GetParam().make(QFile::encodeName(folder.path()).toStdString());
        ASSERT_FALSE(path.empty()) << "there is a recording";
        reader = backend->createDvsFileReader(path);
        ASSERT_NE(reader, nullptr);
    }
    /// Loads, and tells the times.
    void load()
    {
        ASSERT_TRUE(reader->loadFile());
        reader->getStartTimestamp(start);
        reader->getEndTimestamp(end);
        ASSERT_LE(start, end);
    }
    std::string target(const char* name) const
    {
        return QFile::encodeName(folder.filePath(QLatin1String(name))).toStdString();
    }
    std::vector<Event2D> all() const
    {
        const auto events = reader->getEventsAt(start, end - start + 1);
        return events ? *events : std::vector<Event2D>();
    }
    /// A fiftieth of the recording.
    std::uint64_t step() const { return (end - start) / 50 + 1; }

    QTemporaryDir folder;
    const BackendUnderTest backend{GetParam().backend()};
    std::string path;
    std::unique_ptr<DvsFileReader> reader;
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};

} // namespace

TEST_P(RecordingConformance, NothingIsThereBeforeItIsLoaded)
{
    std::uint64_t time = 1;
    reader->getStartTimestamp(time);
    EXPECT_EQ(time, 0U);
    reader->getEndTimestamp(time);
    EXPECT_EQ(time, 0U);
    EXPECT_EQ(reader->getEventsAt(0, 1000), nullptr);
    EXPECT_EQ(reader->getNextEvents(1000), nullptr);
    EXPECT_FALSE(reader->seekTime(1));
}

TEST_P(RecordingConformance, WindowsMakeUpTheWhole)
{
    ASSERT_NO_FATAL_FAILURE(load());
    const auto whole = all();
    ASSERT_FALSE(whole.empty());
    EXPECT_TRUE(isInTimeOrder(whole));
    EXPECT_EQ(whole.front().timestamp, start);
    EXPECT_EQ(whole.back().timestamp, end);
    std::vector<Event2D> pieces;
    for (std::uint64_t time = start; time <= end; time += step()) {
        const auto events = reader->getEventsAt(time, step());
        ASSERT_NE(events, nullptr) << "a window inside is a vector, perhaps an empty one";
        EXPECT_NE(reader->getTriggersAt(time, step()), nullptr);
        pieces.insert(pieces.end(), events->begin(), events->end());
    }
    EXPECT_TRUE(pieces == whole);
}

TEST_P(RecordingConformance, ReadOnItComesToItsEnd)
{
    ASSERT_NO_FATAL_FAILURE(load());
    ASSERT_TRUE(reader->seekTime(start));
    std::vector<Event2D> pieces;
    int reads = 0;
    while (!reader->isEnd() && ++reads < 1000) {
        const auto events = reader->getNextEvents(step());
        ASSERT_NE(events, nullptr);
        pieces.insert(pieces.end(), events->begin(), events->end());
    }
    EXPECT_TRUE(reader->isEnd());
    EXPECT_EQ(reader->getNextEvents(step()), nullptr) << "an empty pointer is the end";
    EXPECT_TRUE(pieces == all());
}

TEST_P(RecordingConformance, SeeksInsideAndRefusesOutside)
{
    ASSERT_NO_FATAL_FAILURE(load());
    const std::uint64_t middle = start + (end - start) / 2;
    ASSERT_TRUE(reader->seekTime(middle));
    EXPECT_FALSE(reader->seekTime(end + 1));
    EXPECT_FALSE(reader->seekTime(std::uint64_t(0) - 33333));
    if (start > 0) {
        EXPECT_FALSE(reader->seekTime(start - 1));
    }
    const auto events = reader->getNextEvents(step());
    const auto expected = reader->getEventsAt(middle, step());
    ASSERT_NE(events, nullptr);
    ASSERT_NE(expected, nullptr);
    EXPECT_TRUE(*events == *expected) << "a refused seek changes nothing";
    EXPECT_TRUE(reader->seekTime(end));
    EXPECT_TRUE(reader->seekTime(start));
}

TEST_P(RecordingConformance, AWindowBehindTheEndIsNone)
{
    ASSERT_NO_FATAL_FAILURE(load());
    EXPECT_EQ(reader->getEventsAt(end + 1, step()), nullptr);
    EXPECT_EQ(reader->getTriggersAt(end + 1, step()), nullptr);
    EXPECT_NE(reader->getEventsAt(end, step()), nullptr);
}

TEST_P(RecordingConformance, SeveralThreadsRead)
{
    ASSERT_NO_FATAL_FAILURE(load());
    const auto whole = all();
    std::vector<std::vector<Event2D>> found(3);
    std::vector<std::thread> threads;
    for (auto& events : found) {
        threads.emplace_back([this, &events] {
            for (std::uint64_t time = start; time <= end; time += step()) {
                reader->seekTime(time);
                reader->getNextEvents(step());
                if (const auto window = reader->getEventsAt(time, step()))
                    events.insert(events.end(), window->begin(), window->end());
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (const auto& events : found)
        EXPECT_TRUE(events == whole);
}

TEST_P(RecordingConformance, ACutHoldsItsRangeAndReplacesNothing)
{
    ASSERT_NO_FATAL_FAILURE(load());
    const std::uint64_t from = start + (end - start) / 4;
    const std::uint64_t to = start + (end - start) / 2;
    const auto wanted = reader->getEventsAt(from, to - from + 1);
    ASSERT_NE(wanted, nullptr);
    QFile file(QFile::decodeName(target("taken.raw").c_str()));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.write("precious");
    file.flush();
    reader->cutFile(from, to, target("taken.raw"));
    file.seek(0);
    EXPECT_EQ(file.readAll(), QByteArray("precious"));
    // Answering false is allowed; leaving something else than the range is not.
    const bool made = reader->cutFile(from, to, target("cut.raw"));
    EXPECT_EQ(QFile::exists(QFile::decodeName(target("cut.raw").c_str())), made);
    const auto cut = eventsOf(target("cut.raw"));
    ASSERT_EQ(cut.size(), made ? wanted->size() : 0U);
    for (std::size_t i = 0; i < cut.size(); ++i) {
        Event2D event = cut[i];
        event.timestamp += wanted->front().timestamp - cut.front().timestamp;
        ASSERT_EQ(event, (*wanted)[i]);
    }
}

TEST_P(RecordingConformance, WhatIsNoRecordingIsLeftToOthers)
{
    QFile text(QFile::decodeName(target("text.raw").c_str()));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("Dear diary, today I have seen no event at all.\n");
    text.close();
    EXPECT_EQ(backend->createDvsFileReader(target("text.raw")), nullptr);
    EXPECT_EQ(backend->createDvsFileReader(target("missing.raw")), nullptr);
    EXPECT_EQ(backend->createDvsFileReader(QFile::encodeName(folder.path()).toStdString()), nullptr);
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RecordingConformance);
INSTANTIATE_TEST_SUITE_P(Recording, RecordingConformance, testing::ValuesIn(recordingSources()),
                         [](const auto& source) { return source.param.name; });

} // namespace conformance
