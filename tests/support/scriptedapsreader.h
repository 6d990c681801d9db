#pragma once

#include "camera/driver/apsfilereader.h"
#include "tests/support/scriptedlog.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// A video of `count` intensity frames of 3840 x 2160 pixels, one each 33333 us; frame k is of one colour,
/// see colourOf(). Notes "load", "frame <number>", "no frame" and "seek <time>". One thread at a time.
class ScriptedApsReader : public korvane::ApsFileReader
{
public:
    static constexpr std::uint64_t spacing = 33333; ///< microseconds

    ScriptedApsReader(std::size_t frames, ScriptedLog& callLog)
        : ApsFileReader({}), count(frames), log(callLog)
    {
        width = 3840;
        height = 2160;
    }

    /// Blue, green and red of frame k.
    static std::uint8_t colourOf(std::size_t k) { return static_cast<std::uint8_t>(10 + 7 * k); }

    bool loadFile() override
    {
        log.add("load aps");
        return loads;
    }
    void getFrameIndex(std::vector<std::uint64_t>& index) override
    {
        index.clear();
        for (std::size_t k = 0; k < count; ++k)
            index.push_back(k * spacing);
        log.add("index");
    }
    bool getNextFrame(korvane::ApsFrame& frame) override
    {
        if (next >= count) {
            log.add("no frame");
            return false;
        }
        log.add("frame " + std::to_string(next));
        fill(frame, next++);
        return true;
    }
    void seekFrame(std::uint64_t ts, korvane::ApsFrame& frame) override
    {
        log.add("seek aps " + std::to_string(ts));
        next = static_cast<std::size_t>(ts / spacing);
        if (next < count)
            fill(frame, next);
    }

    /// What loadFile() answers. Set before use.
    std::atomic<bool> loads{true};

private:
    void fill(korvane::ApsFrame& frame, std::size_t k)
    {
        pixels.assign(std::size_t{3840} * 2160 * 3, colourOf(k));
        frame = {pixels.data(), width, height, k * spacing};
    }

    const std::size_t count;
    ScriptedLog& log;
    std::size_t next = 0;
    std::vector<std::uint8_t> pixels;
};
