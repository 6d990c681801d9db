#pragma once

#include "camera/recording/rawfilereader.h"
#include "tests/support/evtwriter.h"
#include "tests/support/recordprinters.h"
#include "tests/support/temporaryrecordings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

inline constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

/// Events at 100, 100, 200, 1000 and 5000 us, triggers at 50, 150, 1000 and 6000 us, time base 77 * 64 us.
class RawFileReaderTest : public testing::Test
{
protected:
    RawFileReaderTest()
    {
        const auto at = [this](unsigned time) {
            evt::append(body, evt::high2(77 + time / 64), 4);
            return time % 64;
        };
        evt::append(body, evt::trigger2(at(50), 1, 1), 4);
        evt::append(body, evt::cd2(1, at(100), 1, 10), 4);
        evt::append(body, evt::cd2(0, at(100), 2, 10), 4);
        evt::append(body, evt::trigger2(at(150), 1, 0), 4);
        evt::append(body, evt::cd2(1, at(200), 3, 10), 4);
        evt::append(body, evt::cd2(1, at(1000), 4, 10), 4);
        evt::append(body, evt::trigger2(at(1000), 2, 1), 4);
        evt::append(body, evt::cd2(0, at(5000), 5, 10), 4);
        evt::append(body, evt::trigger2(at(6000), 2, 0), 4);
        path = recordings.write("some.raw",
                                TemporaryRecordings::header(korvane::recording::EvtEncoding::Evt2), body);
    }

    std::unique_ptr<korvane::recording::RawFileReader> open() const
    {
        QString error;
        auto reader = korvane::recording::RawFileReader::open(path, error);
        EXPECT_TRUE(reader) << error.toStdString();
        return reader;
    }

    static std::uint64_t startOf(korvane::recording::RawFileReader& reader)
    {
        std::uint64_t time = 4711;
        reader.getStartTimestamp(time);
        return time;
    }

    static std::uint64_t endOf(korvane::recording::RawFileReader& reader)
    {
        std::uint64_t time = 4711;
        reader.getEndTimestamp(time);
        return time;
    }

    static std::vector<unsigned> columns(const korvane::DvsFileReader::Events& events)
    {
        std::vector<unsigned> found;
        for (const korvane::Event2D& event : *events)
            found.push_back(event.x);
        return found;
    }

    static void expectNothing(korvane::recording::RawFileReader& reader)
    {
        EXPECT_EQ(startOf(reader), 0u);
        EXPECT_EQ(endOf(reader), 0u);
        EXPECT_TRUE(reader.isEnd());
        EXPECT_FALSE(reader.seekTime(0));
        EXPECT_FALSE(reader.seekTime(100));
        EXPECT_FALSE(reader.getNextEvents(1000));
        EXPECT_FALSE(reader.getEventsAt(0, 1000));
        EXPECT_FALSE(reader.getEventsAt(0, 0));
        EXPECT_FALSE(reader.getTriggersAt(0, 1000));
        reader.streamEvents(0, endless, [](auto) {
            ADD_FAILURE() << "no event is expected";
            return true;
        });
    }

    TemporaryRecordings recordings;
    evt::Bytes body;
    std::string path;
};
