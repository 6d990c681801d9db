#include "tests/support/decodeall.h"
#include "tests/support/randomstreams.h"
#include "tests/support/recordprinters.h"
#include "tests/support/referencedecoder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>

using namespace korvane;
using namespace korvane::recording;

namespace {

constexpr EvtEncoding encodings[]{EvtEncoding::Evt2, EvtEncoding::Evt21, EvtEncoding::Evt21Legacy,
                                  EvtEncoding::Evt3};

/// A stream at an odd address that ends where its memory ends, so that a sanitizer sees a look behind it.
class OddlyPlaced
{
public:
    OddlyPlaced(const evt::Bytes& bytes, std::size_t shift)
        : memory(new std::uint8_t[bytes.size() + shift]), words(memory.get() + shift, bytes.size())
    {
        if (!bytes.empty())
            std::memcpy(memory.get() + shift, bytes.data(), bytes.size());
    }
    std::span<const std::uint8_t> view() const { return words; }

private:
    std::unique_ptr<std::uint8_t[]> memory;
    std::span<const std::uint8_t> words;
};

template <typename T>
testing::AssertionResult same(const char* what, const std::vector<T>& expected, const std::vector<T>& found)
{
    const auto [e, f] = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
    if (e == expected.end() && f == found.end())
        return testing::AssertionSuccess();
    auto result = testing::AssertionFailure() << what << " " << (e - expected.begin()) << " of "
                                              << expected.size() << " differs (" << found.size() << " found)";
    if (e != expected.end())
        result << "; expected " << testing::PrintToString(*e);
    if (f != found.end())
        result << "; found " << testing::PrintToString(*f);
    return result;
}

constexpr std::uint64_t seeds = 150;

enum class Kind { Camera, Soup, Noise, DamagedCamera, DamagedSoup };

class RandomStream : public testing::TestWithParam<std::tuple<EvtEncoding, Kind>>
{
};

TEST_P(RandomStream, DecodesAsTheReferenceDoesWhateverInstructionsAndPortions)
{
    const auto [encoding, kind] = GetParam();
    std::size_t events = 0;
    std::size_t triggers = 0;
    for (std::uint64_t seed = 0; seed < seeds; ++seed) {
        RandomStreams streams(seed * 977 + 31);
        const Geometry geometry = streams.geometry();
        const std::size_t words = streams.below(seed % 4 == 0 ? 60 : 4000);
        evt::Bytes bytes;
        switch (kind) {
        case Kind::Camera:
            bytes = streams.camera(encoding, geometry, words);
            break;
        case Kind::Soup:
            bytes = streams.soup(encoding, geometry, words);
            break;
        case Kind::Noise:
            bytes = streams.noise(encoding, words);
            break;
        case Kind::DamagedCamera:
            bytes = streams.damaged(streams.camera(encoding, geometry, words));
            break;
        case Kind::DamagedSoup:
            bytes = streams.damaged(streams.soup(encoding, geometry, words));
            break;
        }
        const OddlyPlaced placed(bytes, streams.below(9));
        const auto expected = reference::decode(encoding, placed.view(), geometry);
        events += expected.events.size();
        triggers += expected.triggers.size();

        EvtState states[2];
        for (const auto instructions : {InstructionSet::Portable, InstructionSet::Best}) {
            for (int variant = 0; variant < 3; ++variant) {
                decoding::Portions portions;
                if (variant > 0) {
                    portions.bytes = 1 + streams.below(variant == 1 ? 40 : 3000);
                    portions.places = EvtDecoder::slack + streams.below(variant == 1 ? 2 : 2000);
                }
                SCOPED_TRACE(testing::Message()
                             << "seed " << seed << ", " << bytes.size() << " bytes, "
                             << (instructions == InstructionSet::Best ? "best" : "portable")
                             << " instructions, " << portions.bytes << " bytes and " << portions.places
                             << " places a pass, sensor " << geometry.width << "x" << geometry.height);
                const auto found
                    = decoding::decodeAll(encoding, instructions, placed.view(), geometry, portions);
                ASSERT_TRUE(same("event", expected.events, found.events));
                ASSERT_TRUE(same("trigger", expected.triggers, found.triggers));
                ASSERT_EQ(expected.counts, found.counts);
                states[static_cast<int>(instructions)] = found.state;
            }
        }
        ASSERT_EQ(states[0], states[1]) << "seed " << seed;
    }
    EXPECT_GT(events, 4000u) << "these streams try nothing";
    EXPECT_GT(triggers, 30u) << "these streams try nothing";
}

std::string nameOf(const testing::TestParamInfo<std::tuple<EvtEncoding, Kind>>& info)
{
    constexpr const char* encodingNames[]{"Evt2", "Evt21", "Evt21Legacy", "Evt3"};
    constexpr const char* kindNames[]{"Camera", "Soup", "Noise", "DamagedCamera", "DamagedSoup"};
    return std::string(encodingNames[static_cast<int>(std::get<0>(info.param))])
        + kindNames[static_cast<int>(std::get<1>(info.param))];
}

INSTANTIATE_TEST_SUITE_P(All, RandomStream,
                         testing::Combine(testing::ValuesIn(encodings),
                                          testing::Values(Kind::Camera, Kind::Soup, Kind::Noise,
                                                          Kind::DamagedCamera, Kind::DamagedSoup)),
                         nameOf);

TEST(DecoderStreams, EventTimesNeverStepBack)
{
    for (const auto encoding : encodings) {
        for (std::uint64_t seed = 0; seed < 20; ++seed) {
            RandomStreams streams(seed);
            const Geometry geometry{1280, 720};
            const auto bytes = streams.damaged(streams.soup(encoding, geometry, 3000));
            const auto found = decoding::decodeAll(encoding, InstructionSet::Best, bytes, geometry);
            EXPECT_TRUE(std::is_sorted(found.events.begin(), found.events.end(),
                                       [](auto& a, auto& b) { return a.timestamp < b.timestamp; }));
            EXPECT_TRUE(std::is_sorted(found.triggers.begin(), found.triggers.end(),
                                       [](auto& a, auto& b) { return a.timestamp < b.timestamp; }));
        }
    }
}

} // namespace
