#pragma once

#include "camera/driver/dvsfilereader.h"
#include "camera/recording/eventpool.h"
#include "camera/recording/evtdecoder.h"
#include "camera/recording/mappedfile.h"
#include "camera/recording/rawheader.h"
#include "camera/recording/recordingindex.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <type_traits>

namespace korvane::recording {

/// Reads `.raw` recordings in EVT 2.0, 2.1 and 3.0: mapped into memory, indexed by one scan, any window
/// decoded from the nearest index entry. Any thread; the position has a lock of its own, the rest does not
/// change after loading.
class RawFileReader : public DvsFileReader
{
public:
    /// A window larger than this is cut short, with a log line: a damaged file may claim any number of events
    /// in a microsecond.
    static constexpr std::size_t maximumWindow = std::size_t(32) * 1024 * 1024;

    /// A reader for the file, if its first MiB looks like a recording; else nothing, with the reason in
    /// `error`.
    static std::unique_ptr<RawFileReader> open(const std::string& path, QString& error);

    bool loadFile() override;
    void getStartTimestamp(std::uint64_t& ts) override;
    void getEndTimestamp(std::uint64_t& ts) override;
    bool isEnd() override;
    bool seekTime(std::uint64_t ts) override;
    Events getNextEvents(std::uint64_t duration) override;
    Events getEventsAt(std::uint64_t start, std::uint64_t duration) override;
    Triggers getTriggersAt(std::uint64_t start, std::uint64_t duration) override;
    bool cutFile(std::uint64_t start, std::uint64_t end, std::string path) override;
    bool exportVideo(std::uint64_t start, std::uint64_t end, std::string path) override;

    /// Calls `sink` with the events of start <= time <= end in pieces of bounded size, in order, until it
    /// answers false. Events are valid during the call, and until the sink itself reads on the same thread.
    /// False when the recording ends before `start`, as one does whose file has shrunk. What the device could
    /// not read is left out, and told in `gap`.
    using EventSink = std::function<bool(std::span<const Event2D>)>;
    bool streamEvents(std::uint64_t start, std::uint64_t end, const EventSink& sink, bool* gap = nullptr);
    /// As getTriggersAt(), but throws where memory is short, and tells in `gap` what could not be read.
    Triggers readTriggers(std::uint64_t start, std::uint64_t duration, bool* gap = nullptr);

    /// Records that a window holds at most; to be set before reading begins.
    void setWindowLimit(std::size_t records) { windowLimit = records; }
    std::size_t mostInWindow() const { return windowLimit; }

    EvtEncoding encoding() const { return decoder.encoding(); }
    Geometry sensorGeometry() const { return geometry; }
    const RawHeader& fileHeader() const { return header; }
    const RecordingIndex& recordingIndex() const { return index; }
    /// Whether the file has been found shorter than it was when it was loaded.
    bool hasShrunk() const { return shrunk; }
    /// What has been met in the words so far, by the scan and by decoding.
    EvtCounts metCounts() const;

private:
    RawFileReader(QString path, RawHeader header, EvtEncoding encoding);

    bool load();
    /// What `read` gives: an empty pointer where it throws, memory being short, which is logged once.
    template <typename Read>
    std::invoke_result_t<Read> unlessItFails(const Read& read);
    Events readEvents(std::uint64_t start, std::uint64_t duration);
    /// The words that the file still backs.
    std::span<const std::uint8_t> body();
    /// Finds the times of the first and the last event; false when there is none.
    bool findEnds();
    std::optional<std::uint64_t> firstEventIn(const IndexEntry& from);
    std::optional<std::uint64_t> lastEventIn(std::size_t entry);
    bool isPast(std::uint64_t time) const { return !loaded || time > lastTime; }
    void meet(const EvtCounts& met);
    /// Whether words in [from, to) of the body read as zeros although the file still has them; logged once.
    bool couldNotRead(std::uint64_t from, std::uint64_t to);

    const QString filePath;
    const RawHeader header;
    const EvtDecoder decoder;
    MappedFile file;
    Geometry geometry;
    RecordingIndex index;
    std::uint64_t firstTime = 0; ///< microseconds
    std::uint64_t lastTime = 0; ///< microseconds
    std::atomic<bool> loaded{false};
    std::atomic<bool> shrunk{false};
    std::atomic<bool> unreadable{false};
    std::atomic<bool> failed{false};
    std::atomic<bool> overfull{false};
    std::atomic<bool> triggersOverfull{false};
    std::size_t windowLimit = maximumWindow;
    EventPool pool;

    std::mutex positionMutex;
    std::uint64_t position = 0; ///< microseconds; under positionMutex

    mutable std::mutex countsMutex;
    EvtCounts counts; ///< under countsMutex
};

} // namespace korvane::recording
