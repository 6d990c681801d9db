#pragma once

#include "playback/dvsplayloop.h"
#include "tests/support/scriptedlog.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

/// The window of a play loop, without a window. Notes "events <number>", "picture", "position <time> <seek>"
/// and "end <session>". Any thread.
class ScriptedView : public PlaybackView
{
public:
    std::uint64_t rangeStart() const override
    {
        if (onRangeStart)
            onRangeStart();
        return start;
    }
    std::uint64_t rangeEnd() const override { return end; }
    bool isLooping() const override { return looping; }

    void addEvents(const korvane::Event2D* begin, const korvane::Event2D* finish) override
    {
        note("events " + std::to_string(finish - begin));
    }
    void postPicture() override { note("picture"); }
    void postPosition(std::uint64_t position, std::uint64_t seek) override
    {
        note("position " + std::to_string(position) + ' ' + std::to_string(seek));
    }
    void postEnd(std::uint64_t session) override { note("end " + std::to_string(session)); }

    ScriptedLog log;
    std::atomic<std::uint64_t> start{0}; ///< microseconds
    std::atomic<std::uint64_t> end{0}; ///< microseconds
    std::atomic<bool> looping{false};
    /// Called by rangeStart() on the playing thread. Set before use.
    std::function<void()> onRangeStart;
    /// Called with each line before it is noted, on the playing thread. Set before use.
    std::function<void(const std::string& line)> onNote;

private:
    void note(const std::string& line)
    {
        if (onNote)
            onNote(line);
        log.add(line);
    }
};
