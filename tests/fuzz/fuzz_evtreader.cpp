#include "camera/recording/evt3encoder.h"
#include "camera/recording/recordingindex.h"
#include "camera/recording/streamprobe.h"
#include "tests/fuzz/require.h"
#include "tests/support/decodeall.h"
#include "tests/support/referencedecoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

using namespace korvane;
using namespace korvane::recording;

namespace {

void tryDecoders(EvtEncoding encoding, std::span<const std::uint8_t> words, Geometry geometry,
                 decoding::Portions portions, const reference::Decoded& expected)
{
    EvtState last;
    for (const auto instructions : {InstructionSet::Portable, InstructionSet::Best}) {
        for (const auto& portion : {decoding::Portions(), portions}) {
            const auto found = decoding::decodeAll(encoding, instructions, words, geometry, portion);
            require(found.events == expected.events, "events are those of the reference decoder");
            require(found.triggers == expected.triggers, "triggers are those of the reference decoder");
            require(found.counts == expected.counts, "counts are those of the reference decoder");
            require(instructions == InstructionSet::Portable || found.state == last,
                    "all instructions leave the same state");
            last = found.state;
        }
    }
}

void tryIndex(EvtEncoding encoding, std::span<const std::uint8_t> words, Geometry geometry,
              const reference::Decoded& expected)
{
    const EvtDecoder decoder(encoding);
    EvtCounts met;
    const auto index = RecordingIndex::build(decoder, geometry, words, met);
    require(!index.entries().empty() && index.memory() <= RecordingIndex::minimumBudget,
            "the index is bounded");
    require(met.restarts == expected.counts.restarts, "the scan counts restarts");
    require(met.wildTimes == expected.counts.wildTimes, "the scan counts damaged time words");
    for (const IndexEntry& entry : index.entries()) {
        require(entry.offset <= words.size(), "entries lie in the body");
        const auto rest
            = decoding::decodeFrom(decoder, words, geometry, entry.offset, words.size(), entry.state);
        require(rest.events.size() <= expected.events.size()
                    && std::equal(rest.events.rbegin(), rest.events.rend(), expected.events.rbegin()),
                "events from an entry on are the last ones of the whole");
        require(rest.triggers.size() <= expected.triggers.size()
                    && std::equal(rest.triggers.rbegin(), rest.triggers.rend(), expected.triggers.rbegin()),
                "triggers from an entry on are the last ones of the whole");
        const std::size_t before = expected.events.size() - rest.events.size();
        require(before == 0
                    || static_cast<std::int64_t>(expected.events[before - 1].timestamp)
                        <= entry.state.eventFloor,
                "no event before an entry is later than its floor");
    }
}

/// What was read is written as EVT 3.0, in two parts, and read again.
void tryEncoder(Geometry geometry, reference::Decoded expected)
{
    std::erase_if(expected.triggers, [](const auto& trigger) { return !Evt3Encoder::canName(trigger); });
    const auto& events = expected.events;
    const auto& triggers = expected.triggers;
    if (events.empty())
        return;
    // Idle time takes words too.
    constexpr std::uint64_t longest = 3'600'000'000; // microseconds
    const std::uint64_t first = triggers.empty()
        ? events.front().timestamp
        : std::min(events.front().timestamp, triggers.front().timestamp);
    const std::uint64_t last = triggers.empty()
        ? events.back().timestamp
        : std::max(events.back().timestamp, triggers.back().timestamp);
    if (last - first > longest)
        return;

    Evt3Encoder encoder(geometry);
    std::vector<std::uint8_t> words;
    const std::size_t half = events.size() / 2;
    const auto behind = std::partition_point(triggers.begin(), triggers.end(), [&](const auto& trigger) {
        return trigger.timestamp < events[half].timestamp;
    });
    encoder.encode(std::span(events).first(half), std::span(triggers.begin(), behind), words);
    encoder.encode(std::span(events).subspan(half), std::span(behind, triggers.end()), words);
    const auto again = reference::decode(EvtEncoding::Evt3, words, geometry);

    // Times count from the first time-high word.
    const std::uint64_t base = first / 4096 * 4096;
    for (auto& event : expected.events)
        event.timestamp -= base;
    for (auto& trigger : expected.triggers)
        trigger.timestamp -= base;
    require(again.events == expected.events, "events that were written are read again");
    require(again.triggers == expected.triggers, "triggers that were written are read again");
    require(again.counts == EvtCounts(), "what we write is clean");
}

void tryProbe(EvtEncoding encoding, std::span<const std::uint8_t> words)
{
    countWordOrder(words);
    probeEncoding(words);
    looksLikeText(words);
    const Geometry inferred = inferGeometry(encoding, words);
    require(inferred.isValid() && inferred.width <= maximumSide && inferred.height <= maximumSide,
            "an inferred sensor has a size");
    for (const Event2D& event : reference::decode(encoding, words, {maximumSide, maximumSide}).events)
        require(event.x < inferred.width && event.y < inferred.height,
                "an inferred sensor holds every event");
}

} // namespace

// Input: encoding, sensor and portions in two bytes, then words. The words are put four times in a row, so
// that short inputs fill the blocks of wide instructions and the steps of the index too.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    constexpr std::array<Geometry, 4> sensors{{{1280, 720}, {304, 240}, {2048, 2048}, {33, 7}}};
    const auto encoding = static_cast<EvtEncoding>(data[0] & 3);
    const Geometry geometry = sensors[data[0] >> 2 & 3];
    const decoding::Portions portions{1 + data[1] * std::size_t(3), EvtDecoder::slack + (data[1] & 15)};
    std::vector<std::uint8_t> words(data + 2, data + size);
    const std::size_t once = words.size() / 8 * 8;
    const unsigned copies = data[0] & 16 ? 64 : 4;
    if (size < 4096) {
        for (unsigned i = 1; i < copies; ++i)
            words.insert(words.end(), data + 2, data + 2 + once);
    }
    words.shrink_to_fit();
    const auto expected = reference::decode(encoding, words, geometry);
    tryDecoders(encoding, words, geometry, portions, expected);
    tryIndex(encoding, words, geometry, expected);
    tryEncoder(geometry, expected);
    tryProbe(encoding, words);
    return 0;
}
