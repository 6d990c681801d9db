#include "camera/recording/rawfilereader.h"
#include "tests/fuzz/memoryfile.h"
#include "tests/fuzz/require.h"
#include "tests/support/randomstreams.h"
#include "tests/support/referencedecoder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>

using namespace korvane;
using namespace korvane::recording;

namespace {

template <typename Record>
bool holds(const std::vector<Record>& window, const std::vector<Record>& all, std::uint64_t start,
           std::uint64_t duration)
{
    std::vector<Record> expected;
    std::copy_if(all.begin(), all.end(), std::back_inserter(expected), [=](const Record& record) {
        return record.timestamp >= start && record.timestamp - start < duration;
    });
    return window == expected;
}

void tryWindows(RawFileReader& reader, const reference::Decoded& whole, RandomStreams& random)
{
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    reader.getStartTimestamp(first);
    reader.getEndTimestamp(last);
    require(first == whole.events.front().timestamp, "the first event's time is the start");
    require(last == whole.events.back().timestamp, "the last event's time is the end");
    for (int i = 0; i < 6; ++i) {
        const std::uint64_t start
            = i % 2 == 0 ? random.below(last + 1) : whole.events[random.below(whole.events.size())].timestamp;
        const std::uint64_t duration = random.below((last >> random.below(40)) + 2);
        const auto events = reader.getEventsAt(start, duration);
        require(events && holds(*events, whole.events, start, duration), "a window holds its events");
        const auto triggers = reader.getTriggersAt(start, duration);
        require(triggers && holds(*triggers, whole.triggers, start, duration), "a window holds its triggers");
        require(reader.seekTime(std::clamp(start, first, last)), "times inside can be sought");
        require(!reader.isEnd() && reader.getNextEvents(duration), "there is something behind a time inside");
    }
    require(!reader.seekTime(last + 1) && !reader.getEventsAt(last + 1, 1), "nothing is behind the end");
}

/// A part of it, made a recording of its own.
void tryCut(RawFileReader& reader, const reference::Decoded& whole, RandomStreams& random)
{
    // Idle time takes words too.
    constexpr std::uint64_t longest = 3'600'000'000; // microseconds
    const std::uint64_t start = whole.events[random.below(whole.events.size())].timestamp;
    const std::uint64_t end = start + random.below(longest);
    const QTemporaryDir folder;
    const std::string path = QFile::encodeName(folder.filePath(QStringLiteral("cut.raw"))).toStdString();
    require(reader.cutFile(start, end, path), "a range that begins with an event can be cut");
    QString error;
    const auto cut = RawFileReader::open(path, error);
    require(cut && cut->loadFile(), "what was cut is a recording");
    std::uint64_t last = 0;
    cut->getEndTimestamp(last);
    auto events = *cut->getEventsAt(0, last + 1);
    const std::uint64_t shift = start - events.front().timestamp;
    for (Event2D& event : events)
        event.timestamp += shift;
    require(holds(events, whole.events, start, end - start + 1), "a cut holds the events of its range");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return 0;
}

// Input: a whole file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemoryFile file;
    file.write(data, size);
    QString error;
    const auto reader = RawFileReader::open(file.path(), error);
    require((reader != nullptr) == error.isEmpty(), "there is a reader or a reason");
    if (!reader)
        return 0;
    const bool loaded = reader->loadFile();
    const auto whole = reference::decode(reader->encoding(),
                                         std::span(data, size).subspan(reader->fileHeader().bodyOffset),
                                         reader->sensorGeometry());
    require(loaded == !whole.events.empty(), "a file with events is loaded, and no other");
    if (loaded) {
        RandomStreams random(size + data[size / 2]);
        tryWindows(*reader, whole, random);
        if (random.below(8) == 0)
            tryCut(*reader, whole, random);
    }
    return 0;
}
