#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/eventstream.h"

#include <cstdint>
#include <span>
#include <vector>

/// How many events there were, and which in which order, wherever their times begin.
struct Tally
{
    std::uint64_t count = 0;
    std::uint64_t sum = 0;

    void add(std::span<const korvane::Event2D> events)
    {
        if (count == 0 && !events.empty())
            first = events.front().timestamp;
        std::uint64_t running = sum;
        for (const korvane::Event2D& event : events) {
            const std::uint64_t pixel
                = event.x | (unsigned(event.y) << 11) | (unsigned(event.polarity) << 22);
            running = (running ^ ((event.timestamp - first) << 23) ^ pixel) * 0x9E3779B97F4A7C15ull;
        }
        sum = running;
        count += events.size();
    }
    friend bool operator==(const Tally& a, const Tally& b) { return a.count == b.count && a.sum == b.sum; }

private:
    std::uint64_t first = 0;
};

/// Twenty events a microsecond, some of them neighbours. The same step again and again, later each time: what
/// the machine has to do is to record it, not to make it.
class DenseStream : public korvane::simulation::EventStream
{
public:
    static constexpr std::uint64_t stepUs = 2000;

    explicit DenseStream(Tally& made) : tally(made)
    {
        for (std::uint64_t t = 0; t < stepUs; ++t) {
            const auto row = static_cast<std::uint16_t>(t * 7 % 720);
            const auto column = static_cast<std::uint16_t>(t * 37 % 640);
            for (std::uint16_t i = 0; i < 14; ++i)
                step.emplace_back(static_cast<std::uint16_t>(column + i), row, std::uint8_t(t & 1), t);
            for (std::uint16_t i = 0; i < 6; ++i)
                step.emplace_back(static_cast<std::uint16_t>(column + 100 * i),
                                  static_cast<std::uint16_t>(719 - row), std::uint8_t(i & 1), t);
        }
    }
    korvane::recording::Geometry geometry() const override { return {1280, 720}; }
    std::uint64_t time() const override { return now; }
    std::uint64_t nextTime() const override { return now + stepUs; }
    korvane::simulation::StreamStep generateStep() override
    {
        if (now > 0) {
            for (korvane::Event2D& event : step)
                event.timestamp += stepUs;
        }
        now += stepUs;
        tally.add(step);
        return {step, {}, now};
    }

private:
    Tally& tally;
    std::vector<korvane::Event2D> step;
    std::uint64_t now = 0;
};
