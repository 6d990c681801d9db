#pragma once

#include "camera/driver/dvsfilereader.h"
#include "tests/support/scriptedlog.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// A recording made up on the fly: one ON event each millisecond from its first time on, and one at its last
/// time; the event at t lies in column (t / 1000) mod 1280 of row 7. Notes what it is asked:
/// "load", "at <start> <duration>", "next <duration>", "seek <time>", "seek <time> refused",
/// "cut <start> <end> <path>", "export <start> <end> <path>".
class ScriptedReader : public korvane::DvsFileReader
{
public:
    static constexpr std::uint64_t spacing = 1000; ///< microseconds
    static constexpr std::uint16_t row = 7;

    /// Times in microseconds.
    ScriptedReader(std::uint64_t first, std::uint64_t last) : firstTime(first), lastTime(last) {}

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

    ScriptedLog log;
    /// Called by getEventsAt on the asking thread; an answer replaces the recording's. Set before use.
    std::function<std::optional<Events>(std::uint64_t start, std::uint64_t duration)> onRead;
    /// Called by seekTime and getNextEvents on the asking thread when they are done. Set before use.
    std::function<void()> onMove;
    /// Called by loadFile, which answers what it does. Set before use.
    std::function<bool()> onLoad;
    /// Called by cutFile and exportVideo, which answer what it does, else false. Set before use.
    std::function<bool()> onSave;
    /// Whether the recording is loaded: as after a successful loadFile().
    std::atomic<bool> loaded{true};

private:
    Events window(std::uint64_t start, std::uint64_t duration) const;

    const std::uint64_t firstTime;
    const std::uint64_t lastTime;
    std::mutex mutex;
    std::uint64_t position = 0; ///< microseconds; under mutex
};
