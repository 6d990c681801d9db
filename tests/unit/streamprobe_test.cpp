#include "camera/recording/streamprobe.h"
#include "tests/support/evtwriter.h"
#include "tests/support/randomstreams.h"
#include "tests/support/recordprinters.h"

#include <gtest/gtest.h>

#include <string>

using namespace korvane::recording;
using namespace evt;

namespace {

constexpr EvtEncoding encodings[]{EvtEncoding::Evt2, EvtEncoding::Evt21, EvtEncoding::Evt21Legacy,
                                  EvtEncoding::Evt3};

Bytes bytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

TEST(StreamProbe, TellsTheEncodingOfAStreamWithoutAHeader)
{
    for (const auto encoding : encodings) {
        for (std::uint64_t seed = 0; seed < 200; ++seed) {
            RandomStreams streams(seed);
            const Geometry sensors[]{{304, 240}, {320, 320}, {640, 480}, {1280, 720}};
            const auto bytes = streams.camera(encoding, sensors[seed % 4], seed % 2 == 0 ? 300 : 20000);
            EXPECT_EQ(probeEncoding(bytes), encoding) << "seed " << seed;
        }
    }
}

TEST(StreamProbe, TellsTheEncodingAlthoughAFewBitsAreWrong)
{
    for (const auto encoding : encodings) {
        for (std::uint64_t seed = 0; seed < 50; ++seed) {
            RandomStreams streams(seed);
            auto bytes = streams.camera(encoding, {640, 480}, 5000);
            for (int i = 0; i < 10; ++i)
                bytes[streams.below(bytes.size())] ^= 0x10;
            EXPECT_EQ(probeEncoding(bytes), encoding) << "seed " << seed;
        }
    }
}

TEST(StreamProbe, DoesNotTakeEventsInTheCornerForHalvesOfWords)
{
    // An OFF event at (0, 0) is a word of zeros: beside a time-high word it looks like EVT 2.1.
    for (const bool before : {true, false}) {
        for (unsigned shift = 0; shift < 2; ++shift) {
            Bytes bytes;
            for (unsigned i = 0; i < shift; ++i)
                append(bytes, high2(1000), 4);
            for (unsigned i = 0; i < 500; ++i) {
                if (before && i == 100)
                    append(bytes, cd2(0, 0, 0, 0), 4);
                append(bytes, high2(1000 + i / 4), 4);
                if (!before && i == 100)
                    append(bytes, cd2(0, 0, 0, 0), 4);
                for (unsigned n = 0; n < 3; ++n)
                    append(bytes, cd2(i % 2, 16 * (i % 4) + n, (7 * i + n) % 640, i % 480), 4);
            }
            EXPECT_EQ(probeEncoding(bytes), EvtEncoding::Evt2);
        }
    }
}

TEST(StreamProbe, RecognisesNothingInBytesWithoutOrder)
{
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        RandomStreams streams(seed);
        EXPECT_EQ(probeEncoding(streams.noise(EvtEncoding::Evt21, 8 + seed * seed)), std::nullopt) << seed;
    }
}

TEST(StreamProbe, RecognisesNothingWithoutTimeHighWords)
{
    EXPECT_EQ(probeEncoding({}), std::nullopt);
    EXPECT_EQ(probeEncoding(Bytes(1)), std::nullopt);
    EXPECT_EQ(probeEncoding(Bytes(100000)), std::nullopt);
    EXPECT_EQ(probeEncoding(Bytes(100000, 0xFF)), std::nullopt);
    EXPECT_EQ(probeEncoding(bytesOf("The quick brown fox jumps over the lazy dog.\n")), std::nullopt);
    std::vector<std::uint16_t> words;
    for (unsigned i = 0; i < 5000; ++i)
        words.insert(words.end(), {low3(i % 4096), row3(i % 480), x3(1, i % 640)});
    EXPECT_EQ(probeEncoding(words3(words)), std::nullopt);
}

TEST(StreamProbe, CountsTheWordOrderByTimeHighWords)
{
    std::vector<std::uint64_t> words;
    for (unsigned i = 0; i < 100; ++i) {
        words.push_back(high21(i));
        words.push_back(cd21(1, 0, 32 * (i % 20), i, 0xF0F0F0F0));
        words.push_back(trigger21(3, 0, 1));
    }
    const auto little = countWordOrder(words21(words));
    EXPECT_EQ(little.little, 100u);
    EXPECT_EQ(little.legacy, 0u);
    const auto swapped = countWordOrder(legacy(words21(words)));
    EXPECT_EQ(swapped.little, 0u);
    EXPECT_EQ(swapped.legacy, 100u);
    const auto none = countWordOrder(Bytes(7));
    EXPECT_EQ(none.little + none.legacy, 0u);
}

TEST(StreamProbe, KnowsText)
{
    EXPECT_TRUE(looksLikeText(bytesOf("a,b\r\n1,2\t3\f\n")));
    EXPECT_TRUE(looksLikeText(bytesOf("Gr\xC3\xBC\xC3\x9F"
                                      "e, \xE4\xBD\xA0\xE5\xA5\xBD\n")));
    EXPECT_FALSE(looksLikeText(bytesOf(std::string("a\0b", 3))));
    EXPECT_FALSE(looksLikeText(bytesOf("a\x7F")));
    EXPECT_FALSE(looksLikeText(bytesOf("a\x01")));
    EXPECT_FALSE(looksLikeText(words3({high3(1), row3(2), x3(1, 3)})));
    EXPECT_FALSE(looksLikeText(words2({high2(1), cd2(1, 1, 1, 2)})));
}

// --- geometry --------------------------------------------------------------------------------------------

Geometry inferredFrom(EvtEncoding encoding, unsigned x, unsigned y)
{
    switch (encoding) {
    case EvtEncoding::Evt2:
        return inferGeometry(encoding, words2({high2(1), cd2(1, 0, 0, y), cd2(0, 0, x, 0)}));
    case EvtEncoding::Evt21:
        return inferGeometry(encoding, words21({high21(1), cd21(1, 0, 0, y, 1), cd21(0, 0, x, 0, 1)}));
    case EvtEncoding::Evt21Legacy:
        return inferGeometry(encoding,
                             legacy(words21({high21(1), cd21(1, 0, 0, y, 1), cd21(0, 0, x, 0, 1)})));
    case EvtEncoding::Evt3:
        break;
    }
    return inferGeometry(encoding, words3({high3(1), row3(y), x3(1, 0), row3(0), x3(0, x)}));
}

TEST(StreamProbe, InfersTheSmallestUsualSensorThatHoldsEveryCoordinate)
{
    struct Case
    {
        unsigned x;
        unsigned y;
        Geometry sensor;
    };
    const Case cases[]{
        {0, 0, {304, 240}},     {303, 239, {304, 240}},   {304, 0, {320, 320}},       {0, 240, {320, 320}},
        {319, 319, {320, 320}}, {320, 0, {640, 480}},     {0, 320, {640, 480}},       {639, 479, {640, 480}},
        {640, 0, {1280, 720}},  {0, 480, {1280, 720}},    {1279, 719, {1280, 720}},   {1280, 0, {1281, 1}},
        {0, 720, {1, 721}},     {1280, 720, {1281, 721}}, {2047, 2047, {2048, 2048}},
    };
    for (const auto encoding : encodings) {
        for (const auto& one : cases)
            EXPECT_EQ(inferredFrom(encoding, one.x, one.y), one.sensor)
                << encodingName(encoding) << " " << one.x << ", " << one.y;
    }
}

TEST(StreamProbe, InfersTheSmallestSensorWhereThereIsNoEvent)
{
    for (const auto encoding : encodings)
        EXPECT_EQ(inferGeometry(encoding, {}), (Geometry{304, 240}));
}

TEST(StreamProbe, OnlyEventsThatWillBeDecodedCountForTheGeometry)
{
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt2,
                            words2({cd2(1, 0, 2000, 2000), high2(1), trigger2(63, 31, 1),
                                    continued2(0xFFFFFFF), others2(63, 0xFFFF), cd2(1, 0, 1, 1)})),
              (Geometry{304, 240}));
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt21,
                            words21({cd21(1, 0, 2000, 2000, 1), high21(1), cd21(1, 0, 2000, 2000, 0),
                                     trigger21(63, 31, 1), cd21(1, 0, 1, 1, 1)})),
              (Geometry{304, 240}));
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt3,
                            words3({row3(2000), base3(1, 2000), high3(1), x3(1, 1900), vector12(1), row3(2),
                                    vector12(1), foreignRow3(1000), x3(1, 1500), base3(1, 1500), vector8(255),
                                    row3(1500), row3(3), vector12(0), base3(0, 100), vector8(0xF01)})),
              (Geometry{304, 240}));
}

TEST(StreamProbe, TheLastPixelsOfMasksAndVectorsCountForTheGeometry)
{
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt21, words21({high21(1), cd21(1, 0, 288, 1, 0x0000FFFF)})),
              (Geometry{304, 240}));
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt21, words21({high21(1), cd21(1, 0, 288, 1, 0x0001FFFF)})),
              (Geometry{320, 320}));
    const auto triple = [](unsigned last) {
        return words3({high3(1), row3(1), base3(1, 1248), vector12(1), x3(0, 5), vector12(0), vector8(last)});
    };
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt3, triple(0x80)), (Geometry{1280, 720}));
    std::vector<std::uint16_t> words{high3(1), row3(1), base3(1, 1279), vector8(2)};
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt3, words3(words)), (Geometry{1281, 2}));
    // Vectors in another family's row leave the base where it is.
    const auto hidden = words3({high3(1), row3(1), base3(1, 1268), foreignRow3(1), vector12(1), vector8(1),
                                row3(2), vector12(0x801)});
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt3, hidden), (Geometry{1280, 720}));
    // No sensor is wider than a coordinate can name.
    words.insert(words.end(), 7000, vector12(1));
    EXPECT_EQ(inferGeometry(EvtEncoding::Evt3, words3(words)), (Geometry{2048, 2}));
}

} // namespace
