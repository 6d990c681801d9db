#pragma once

#include "camera/recording/rawfilereader.h"
#include "tests/support/randomstreams.h"
#include "tests/support/recordprinters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

/// Whether what a reader gives in windows is what the whole recording holds.
namespace windows {

/// Those of `records`, sorted by time, with start <= time < start + duration.
template <typename Record>
std::vector<Record> between(const std::vector<Record>& records, std::uint64_t start, std::uint64_t duration)
{
    const auto before = [](std::uint64_t limit) {
        return [limit](const Record& record) { return record.timestamp < limit; };
    };
    const std::uint64_t end = duration > std::numeric_limits<std::uint64_t>::max() - start
        ? std::numeric_limits<std::uint64_t>::max()
        : start + duration;
    return {std::partition_point(records.begin(), records.end(), before(start)),
            std::partition_point(records.begin(), records.end(), before(end))};
}

/// Compares `count` windows of random start and length, the windows one after the other from the start, and
/// the behaviour at both ends. `reader` is loaded; `events` and `triggers` are all of the recording's.
inline void expectToMatch(korvane::recording::RawFileReader& reader,
                          const std::vector<korvane::Event2D>& events,
                          const std::vector<korvane::EventTriggerIn>& triggers, RandomStreams& random,
                          unsigned count)
{
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    reader.getStartTimestamp(first);
    reader.getEndTimestamp(last);
    ASSERT_FALSE(events.empty());
    ASSERT_EQ(first, events.front().timestamp);
    ASSERT_EQ(last, events.back().timestamp);

    for (unsigned i = 0; i < count; ++i) {
        // Half of the windows begin at an event; lengths of all magnitudes.
        const std::uint64_t start
            = random.oneIn(2) ? random.below(last + 1) : events[random.below(events.size())].timestamp;
        const std::uint64_t duration = random.below((last >> random.below(30)) + 2);
        const auto found = reader.getEventsAt(start, duration);
        ASSERT_TRUE(found);
        ASSERT_EQ(*found, between(events, start, duration)) << start << " + " << duration;
        const auto edges = reader.getTriggersAt(start, duration);
        ASSERT_TRUE(edges);
        ASSERT_EQ(*edges, between(triggers, start, duration)) << start << " + " << duration;
    }

    ASSERT_TRUE(reader.seekTime(first));
    std::size_t at = 0;
    const std::uint64_t step = (last - first) / 50 + 1;
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(reader.isEnd(), first + static_cast<std::uint64_t>(i) * step > last);
        const auto found = reader.getNextEvents(step);
        ASSERT_EQ(found == nullptr, first + static_cast<std::uint64_t>(i) * step > last);
        if (!found)
            continue;
        ASSERT_LE(at + found->size(), events.size());
        ASSERT_TRUE(std::equal(found->begin(), found->end(), events.begin() + std::ptrdiff_t(at)));
        at += found->size();
    }
    ASSERT_EQ(at, events.size());
    ASSERT_TRUE(reader.isEnd());
    ASSERT_FALSE(reader.getNextEvents(step));
    ASSERT_FALSE(reader.getEventsAt(last + 1, 1));
    ASSERT_FALSE(reader.seekTime(last + 1));
    ASSERT_TRUE(reader.seekTime(last));
    ASSERT_EQ(*reader.getNextEvents(1), between(events, last, 1));
}

} // namespace windows
