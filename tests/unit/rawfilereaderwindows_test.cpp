#include "camera/recording/rawfilereader.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/randomstreams.h"
#include "tests/support/referencedecoder.h"
#include "tests/support/temporaryrecordings.h"
#include "tests/support/windows.h"

#include <gtest/gtest.h>

using namespace korvane;
using namespace korvane::recording;

namespace {

class ReaderWindows : public testing::TestWithParam<EvtEncoding>
{
};

TEST_P(ReaderWindows, PutTogetherAreTheWholeRecording)
{
    const CapturedMessages silence;
    const TemporaryRecordings recordings;
    const EvtEncoding encoding = GetParam();
    unsigned tried = 0;
    for (std::uint64_t seed = 0; seed < 24; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        RandomStreams streams(seed + 99);
        const Geometry geometry = streams.geometry();
        const std::size_t words = streams.below(seed % 4 == 0 ? 300 : 40000);
        evt::Bytes bytes = seed % 3 == 0 ? streams.soup(encoding, geometry, words)
                                         : streams.camera(encoding, geometry, words);
        if (seed % 2 == 0)
            bytes = streams.damaged(bytes);
        const auto whole = reference::decode(encoding, bytes, geometry);
        // A comment of some length brings the words to odd addresses.
        const std::string comment = "% note " + std::to_string(streams.below(100000)) + "\n";
        const auto path = recordings.write("stream.raw",
                                           comment + TemporaryRecordings::header(encoding, geometry), bytes);
        QString error;
        const auto reader = RawFileReader::open(path, error);
        ASSERT_TRUE(reader) << error.toStdString();
        ASSERT_EQ(reader->loadFile(), !whole.events.empty());
        if (whole.events.empty())
            continue;
        ++tried;
        windows::expectToMatch(*reader, whole.events, whole.triggers, streams, 40);
        if (HasFatalFailure())
            return;
        EXPECT_LE(reader->recordingIndex().memory(), RecordingIndex::minimumBudget);
    }
    EXPECT_GT(tried, 15u);
}

TEST_P(ReaderWindows, OfRecordingsWithoutAnyHeaderAreTheWholeRecordingToo)
{
    const CapturedMessages silence;
    const TemporaryRecordings recordings;
    const EvtEncoding encoding = GetParam();
    for (std::uint64_t seed = 0; seed < 6; ++seed) {
        RandomStreams streams(seed + 7);
        const Geometry sensors[]{{304, 240}, {640, 480}, {1280, 720}};
        const Geometry geometry = sensors[seed % 3];
        const auto bytes = streams.camera(encoding, geometry, 20000);
        const auto whole = reference::decode(encoding, bytes, geometry);
        const auto reader = TemporaryRecordings::load(recordings.write("bare.raw", "", bytes));
        ASSERT_TRUE(reader);
        EXPECT_EQ(reader->encoding(), encoding);
        EXPECT_EQ(reader->sensorGeometry(), geometry);
        windows::expectToMatch(*reader, whole.events, whole.triggers, streams, 20);
    }
}

std::string nameOf(const testing::TestParamInfo<EvtEncoding>& info)
{
    constexpr const char* encodingNames[]{"Evt2", "Evt21", "Evt21Legacy", "Evt3"};
    return encodingNames[static_cast<int>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(All, ReaderWindows,
                         testing::Values(EvtEncoding::Evt2, EvtEncoding::Evt21, EvtEncoding::Evt21Legacy,
                                         EvtEncoding::Evt3),
                         nameOf);

} // namespace
