#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace korvane {

/// Reads the change events of one recording. Times are microseconds from the recording's first time word and
/// never step back. Safe under several threads: every operation may be called from any of them.
class DvsFileReader
{
public:
    using Events = std::shared_ptr<std::vector<Event2D>>;
    using Triggers = std::shared_ptr<std::vector<EventTriggerIn>>;

    /// A reader for the file at `path` (local 8-bit encoding), chosen by what the file contains among the
    /// readers that the registered backends offer; empty when none can read it. Nothing is loaded yet.
    static std::unique_ptr<DvsFileReader> createFileReader(std::string path);

    DvsFileReader() = default;
    virtual ~DvsFileReader() = default;
    DvsFileReader(const DvsFileReader&) = delete;
    DvsFileReader& operator=(const DvsFileReader&) = delete;

    /// Opens and scans the file; false when it cannot be read or holds no change event. Called once.
    virtual bool loadFile() = 0;
    /// Time of the first event; 0 before a successful load.
    virtual void getStartTimestamp(std::uint64_t& ts) = 0;
    /// Time of the last event; 0 before a successful load.
    virtual void getEndTimestamp(std::uint64_t& ts) = 0;
    /// Whether the read position has passed the last event.
    virtual bool isEnd() = 0;
    /// Moves the read position; false for a time outside [start, end].
    virtual bool seekTime(std::uint64_t ts) = 0;
    /// The events of the next `duration` microseconds from the read position, which advances by as much.
    /// Perhaps empty for a window inside the recording; an empty pointer after its end, after an error or a
    /// failed load.
    virtual Events getNextEvents(std::uint64_t duration) = 0;
    /// The events with start <= time < start + duration; the same rule on empty. The read position stays.
    virtual Events getEventsAt(std::uint64_t start, std::uint64_t duration) = 0;
    /// The trigger edges with start <= time < start + duration; the same rule on empty.
    virtual Triggers getTriggersAt(std::uint64_t start, std::uint64_t duration) = 0;
    /// Writes the events and triggers with start <= time <= end as a new recording at `path`, in a folder
    /// that is made where it is missing; never replaces a file.
    virtual bool cutFile(std::uint64_t start, std::uint64_t end, std::string path) = 0;
    /// Renders start <= time <= end to an `.mp4` video at `path`, which gets that ending where it lacks it,
    /// in a folder that is made where it is missing; never replaces a file.
    virtual bool exportVideo(std::uint64_t start, std::uint64_t end, std::string path) = 0;
};

} // namespace korvane
