#pragma once

#include "tests/support/evtwriter.h"

#include <QString>

#include <cstdint>

/// A recording made by hand: a bar of ON events that moves one column a millisecond, in EVT 3.0 at 1280 x
/// 720. Every millisecond has 90 events, on every eighth row; the first is at 0 us, the last at the last
/// millisecond.
inline bool writeMovingBar(const QString& path, unsigned milliseconds)
{
    evt::Bytes body;
    const auto put = [&body](std::uint16_t word) { evt::append(body, word, 2); };
    unsigned high = ~0u;
    for (unsigned ms = 0; ms < milliseconds; ++ms) {
        const std::uint64_t time = std::uint64_t(ms) * 1000;
        const auto nextHigh = static_cast<unsigned>(time >> 12);
        if (nextHigh != high)
            put(evt::high3(nextHigh & 0xFFF));
        high = nextHigh;
        put(evt::low3(static_cast<unsigned>(time & 0xFFF)));
        for (unsigned y = 0; y < 720; y += 8) {
            put(evt::row3(y));
            put(evt::x3(1, ms % 1280));
        }
    }
    return evt::writeFile(path, "% format EVT3;height=720;width=1280\n% end\n", body);
}
