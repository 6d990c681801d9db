#include "camera/recording/recordingindex.h"
#include "tests/support/decodeall.h"
#include "tests/support/evtwriter.h"
#include "tests/support/randomstreams.h"
#include "tests/support/recordprinters.h"
#include "tests/support/referencedecoder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

using namespace korvane;
using namespace korvane::recording;
using namespace evt;

namespace {

constexpr EvtEncoding encodings[]{EvtEncoding::Evt2, EvtEncoding::Evt21, EvtEncoding::Evt21Legacy,
                                  EvtEncoding::Evt3};

/// What a budget of 1/1000 of the file or 256 KiB allows.
std::uint64_t budgetFor(std::uint64_t size)
{
    return std::max<std::uint64_t>(256 * 1024, size / 1000);
}

/// Decodes on from every entry and compares with what decoding from the start gives behind that place.
void expectEntriesToResume(EvtEncoding encoding, std::span<const std::uint8_t> body, Geometry geometry)
{
    const EvtDecoder decoder(encoding);
    EvtCounts met;
    const auto index = RecordingIndex::build(decoder, geometry, body, met);
    ASSERT_FALSE(index.entries().empty());
    EXPECT_EQ(index.entries().front().offset, 0u);
    EXPECT_LE(index.memory(), budgetFor(body.size()));

    const auto whole = reference::decode(encoding, body, geometry);
    EXPECT_EQ(met.restarts, whole.counts.restarts);
    EXPECT_EQ(met.wildTimes, whole.counts.wildTimes);

    decoding::Result before; // up to the entry at hand
    std::uint64_t reached = 0;
    const IndexEntry* last = nullptr;
    for (const IndexEntry& entry : index.entries()) {
        ASSERT_LE(entry.offset, body.size());
        ASSERT_EQ(entry.offset % wordSize(encoding), 0u);
        if (last) {
            ASSERT_GT(entry.offset, last->offset);
            ASSERT_GE(entry.state.eventFloor, last->state.eventFloor);
            ASSERT_GE(entry.state.triggerFloor, last->state.triggerFloor);
        }
        auto more = decoding::decodeFrom(decoder, body, geometry, reached, entry.offset, before.state);
        before.events.insert(before.events.end(), more.events.begin(), more.events.end());
        before.triggers.insert(before.triggers.end(), more.triggers.begin(), more.triggers.end());
        before.state = more.state;
        reached = entry.offset;
        last = &entry;

        SCOPED_TRACE(testing::Message() << encodingName(encoding) << " entry at " << entry.offset);
        if (!before.events.empty()) {
            ASSERT_LE(before.events.back().timestamp, static_cast<std::uint64_t>(entry.state.eventFloor));
        }
        if (!before.triggers.empty()) {
            ASSERT_LE(before.triggers.back().timestamp, static_cast<std::uint64_t>(entry.state.triggerFloor));
        }
        const auto rest
            = decoding::decodeFrom(decoder, body, geometry, entry.offset, body.size(), entry.state);
        ASSERT_EQ(before.events.size() + rest.events.size(), whole.events.size());
        ASSERT_TRUE(std::equal(rest.events.begin(), rest.events.end(),
                               whole.events.end() - std::ptrdiff_t(rest.events.size())));
        ASSERT_EQ(before.triggers.size() + rest.triggers.size(), whole.triggers.size());
        ASSERT_TRUE(std::equal(rest.triggers.begin(), rest.triggers.end(),
                               whole.triggers.end() - std::ptrdiff_t(rest.triggers.size())));
    }
}

TEST(RecordingIndex, DecodingOnFromAnyEntryGivesWhatDecodingFromTheStartGives)
{
    std::size_t entries = 0;
    for (const auto encoding : encodings) {
        for (std::uint64_t seed = 0; seed < 10; ++seed) {
            RandomStreams streams(seed + 4711);
            const Geometry geometry = streams.geometry();
            const std::size_t words = 120000 / wordSize(encoding);
            Bytes bytes = seed % 2 == 0 ? streams.camera(encoding, geometry, words)
                                        : streams.soup(encoding, geometry, words);
            if (seed % 3 == 0)
                bytes = streams.damaged(bytes);
            SCOPED_TRACE(testing::Message() << "seed " << seed);
            expectEntriesToResume(encoding, bytes, geometry);
            EvtCounts met;
            entries += RecordingIndex::build(EvtDecoder(encoding), geometry, bytes, met).entries().size();
        }
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(entries, 4 * 10 * 5u) << "these streams try nothing";
}

TEST(RecordingIndex, KnowsRowsAndBasesFromFarBeforeAnEntry)
{
    // One row and one base for many entries; then vectors run on without a new base.
    Bytes bytes = words3({high3(0), row3(7), base3(1, 5)});
    for (unsigned i = 1; i < 20000; ++i) {
        append(bytes, high3(i % 4096), 2);
        append(bytes, x3(0, i % 640), 2);
        if (i % 500 == 0)
            append(bytes, vector12(1), 2);
    }
    expectEntriesToResume(EvtEncoding::Evt3, bytes, {640, 480});
}

TEST(RecordingIndex, KnowsThatTheRowBelongsToAnotherFamily)
{
    Bytes bytes = words3({high3(0), row3(7), base3(1, 5), foreignRow3(9)});
    for (unsigned i = 1; i < 9000; ++i) {
        append(bytes, high3(i % 4096), 2);
        append(bytes, x3(0, i % 640), 2);
        if (i == 5000)
            append(bytes, row3(8), 2);
        if (i == 7000)
            append(bytes, foreignRow3(8), 2);
    }
    append(bytes, row3(1), 2);
    append(bytes, x3(0, 1), 2);
    expectEntriesToResume(EvtEncoding::Evt3, bytes, {640, 480});
}

TEST(RecordingIndex, KnowsNoRowAndNoBaseFromBeforeTheFirstTimeWord)
{
    Bytes bytes = words3({row3(7), base3(1, 5), x3(1, 1)});
    for (unsigned i = 0; i < 8000; ++i) {
        append(bytes, high3(i % 4096), 2);
        append(bytes, x3(0, i % 640), 2);
        append(bytes, vector12(1), 2);
    }
    append(bytes, row3(3), 2);
    append(bytes, vector12(1), 2);
    append(bytes, x3(0, 9), 2);
    expectEntriesToResume(EvtEncoding::Evt3, bytes, {2048, 2048});
}

TEST(RecordingIndex, CountsNoVectorsInRowsOfAnotherFamilyForTheBase)
{
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        RandomStreams streams(seed);
        Bytes bytes = words3({high3(0), row3(7), base3(1, 5)});
        // Row changes, bases and vectors are all rare, in any order.
        for (unsigned i = 1; i < 9000; ++i) {
            append(bytes, high3(i % 4096), 2);
            if (streams.oneIn(900))
                append(bytes, streams.oneIn(2) ? row3(i % 240) : foreignRow3(i % 240), 2);
            if (streams.oneIn(700))
                append(bytes, streams.oneIn(2) ? vector12(1) : vector8(1), 2);
            if (streams.oneIn(2000))
                append(bytes, base3(i % 2, i % 300), 2);
        }
        append(bytes, row3(1), 2);
        append(bytes, vector12(3), 2);
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        expectEntriesToResume(EvtEncoding::Evt3, bytes, {2048, 2048});
        if (HasFatalFailure())
            return;
    }
}

TEST(RecordingIndex, HoldsWhereTimeStandsStillForMegabytes)
{
    Bytes bytes = words3({high3(0), row3(7), base3(1, 5)});
    for (unsigned i = 0; i < 2600000; ++i)
        append(bytes, i % 1000 == 0 ? row3(i / 1000 % 480) : low3(i / 1000 * 4095 / 2600), 2);
    append(bytes, trigger3(1, 1), 2);
    for (unsigned i = 1; i < 6000; ++i) {
        append(bytes, high3(i % 4096), 2);
        append(bytes, x3(0, i % 640), 2);
        append(bytes, vector8(0x11), 2);
    }
    expectEntriesToResume(EvtEncoding::Evt3, bytes, {640, 480});
    // Entries lie there all the same, so that no window is megabytes away from one.
    EvtCounts met;
    const auto index = RecordingIndex::build(EvtDecoder(EvtEncoding::Evt3), {640, 480}, bytes, met);
    for (std::size_t i = 1; i < index.entries().size(); ++i)
        EXPECT_LE(index.entries()[i].offset - index.entries()[i - 1].offset, (4u << 20) + 65536);
}

TEST(RecordingIndex, ResumesBehindStepsBackAndRestarts)
{
    for (const bool evt3 : {false, true}) {
        Bytes bytes;
        std::int64_t high = 2000;
        RandomStreams streams(17);
        if (evt3)
            bytes = words3({high3(2000), row3(7)});
        else
            bytes = words2({high2(2000)});
        for (unsigned i = 0; i < 12000; ++i) {
            high += std::int64_t(streams.below(5)) - 1;
            if (streams.oneIn(50))
                high -= std::int64_t(streams.below(6));
            if (streams.oneIn(700))
                high = std::int64_t(streams.below(2000));
            high = std::max<std::int64_t>(high, 0);
            const auto low = static_cast<unsigned>(streams.below(4096));
            if (evt3) {
                append(bytes, high3(static_cast<unsigned>(high % 4096)), 2);
                append(bytes, low3(low), 2);
                append(bytes, x3(1, i % 640), 2);
                append(bytes, trigger3(1, i % 2), 2);
            } else {
                append(bytes, high2(static_cast<std::uint32_t>(high)), 4);
                append(bytes, cd2(1, low % 64, i % 640, 1), 4);
                append(bytes, trigger2(low % 64, 1, i % 2), 4);
            }
        }
        expectEntriesToResume(evt3 ? EvtEncoding::Evt3 : EvtEncoding::Evt2, bytes, {640, 480});
    }
}

TEST(RecordingIndex, FindsTheLastEntryBeforeATime)
{
    Bytes bytes;
    for (unsigned i = 0; i < 100000; ++i) {
        append(bytes, high2(500 + i), 4);
        append(bytes, cd2(1, 3, 1, 1), 4);
    }
    EvtCounts met;
    const auto index = RecordingIndex::build(EvtDecoder(EvtEncoding::Evt2), {640, 480}, bytes, met);
    const auto& entries = index.entries();
    ASSERT_GT(entries.size(), 100u);
    EXPECT_EQ(index.entryForEvents(0).offset, 0u);
    EXPECT_EQ(index.entryForEvents(-5).offset, 0u);
    EXPECT_EQ(index.entryForTriggers(0).offset, 0u);
    EXPECT_EQ(index.entryForEvents(INT64_MAX).offset, entries.back().offset);
    for (std::size_t i = 2; i < entries.size(); ++i) {
        // An event at the entry's own time may stand before it.
        EXPECT_EQ(index.entryForEvents(entries[i].state.eventFloor).offset, entries[i - 1].offset);
        EXPECT_EQ(index.entryForEvents(entries[i].state.eventFloor + 1).offset, entries[i].offset);
        EXPECT_EQ(index.entryForTriggers(entries[i].state.triggerFloor + 1).offset, entries[i].offset);
    }
}

TEST(RecordingIndex, AnEmptyBodyHasOneEntry)
{
    for (const auto encoding : encodings) {
        for (std::size_t size = 0; size < 8; ++size) {
            EvtCounts met;
            const Bytes bytes(size, 0x80);
            const auto index = RecordingIndex::build(EvtDecoder(encoding), {640, 480}, bytes, met);
            EXPECT_FALSE(index.entries().empty());
        }
    }
}

// --- size and duration -----------------------------------------------------------------------------------

struct FreeMemory
{
    void operator()(void* memory) const { std::free(memory); }
};

TEST(RecordingIndex, TakesAThousandthOfALargeFileAtMost)
{
    // Memory from calloc is not touched until it is read: a body of zeros with a time word every 32 KiB.
    constexpr std::size_t size = 320u << 20;
    const std::unique_ptr<void, FreeMemory> memory(std::calloc(size, 1));
    ASSERT_TRUE(memory);
    auto* const bytes = static_cast<std::uint8_t*>(memory.get());
    std::uint32_t high = 0;
    for (std::size_t at = 0; at < size; at += 32768) {
        const std::uint32_t word = high2(high++);
        std::memcpy(bytes + at, &word, sizeof word);
    }
    EvtCounts met;
    const auto index = RecordingIndex::build(EvtDecoder(EvtEncoding::Evt2), {640, 480}, {bytes, size}, met);
    EXPECT_LE(index.memory(), size / 1000);
    EXPECT_GT(index.entries().size(), 3000u);
    for (std::size_t i = 1; i < index.entries().size(); ++i)
        ASSERT_LE(index.entries()[i].offset - index.entries()[i - 1].offset,
                  4 * size / index.entries().size());
}

/// `value` gives the time-high value of each word of a body that holds nothing else, or of every `every`th
/// one between events.
template <typename Value>
Bytes timesOnly(EvtEncoding encoding, std::size_t size, unsigned every, Value value)
{
    Bytes bytes(size);
    const std::size_t step = wordSize(encoding);
    for (std::size_t i = 0; (i + 1) * step <= size; ++i) {
        const auto next = static_cast<std::uint32_t>(value(i / every) & 0xFFFFFFFF);
        const bool time = i % every == 0;
        const auto column = static_cast<unsigned>(i % 640);
        const std::uint64_t word = encoding == EvtEncoding::Evt3 ? (time ? high3(next % 4096) : x3(1, column))
            : encoding == EvtEncoding::Evt2 ? (time ? high2(next & 0xFFFFFFF) : cd2(1, 0, column, 3))
                                            : (time ? high21(next & 0xFFFFFFF) : cd21(1, 0, column, 3, 1));
        std::memcpy(bytes.data() + i * step, &word, step);
    }
    return encoding == EvtEncoding::Evt21Legacy ? legacy(bytes) : bytes;
}

TEST(RecordingIndex, IsBoundedAndQuickWhateverTheTimesSay)
{
    constexpr std::size_t size = 1 << 20;
    using Value = std::uint64_t (*)(std::uint64_t);
    const std::pair<const char*, Value> courses[]{
        {"never advances", [](std::uint64_t) -> std::uint64_t { return 5; }},
        {"advances with every word", [](std::uint64_t i) { return i; }},
        {"jumps with every word", [](std::uint64_t i) { return i * 1500; }},
        {"jumps far with every word", [](std::uint64_t i) { return i * 0x7654321; }},
        {"steps back with every word", [](std::uint64_t i) { return ~i; }},
        {"falls with every word", [](std::uint64_t i) { return ~(i * 700); }},
        {"steps to and fro", [](std::uint64_t i) -> std::uint64_t { return i % 2 == 0 ? 1000 : 1001; }},
        {"leaps to and fro", [](std::uint64_t i) -> std::uint64_t { return i % 2 == 0 ? 0 : 1700; }},
        {"leaps to and fro, then back",
         [](std::uint64_t i) -> std::uint64_t { return i % 3 == 0 ? 4000 : i % 3; }},
    };
    for (const auto encoding : encodings) {
        for (const auto& [course, value] : courses) {
            for (const unsigned every : {1u, 50u, 100000u}) {
                SCOPED_TRACE(testing::Message()
                             << encodingName(encoding) << ", time " << course << ", every " << every);
                const Bytes bytes = timesOnly(encoding, size, every, value);
                const EvtDecoder decoder(encoding);
                const auto start = std::chrono::steady_clock::now();
                EvtCounts met;
                const auto index = RecordingIndex::build(decoder, {640, 480}, bytes, met);
                const auto spent = std::chrono::steady_clock::now() - start;
                EXPECT_LE(index.memory(), budgetFor(size));
                // Milliseconds when it is sound; a scan that starts over at each word would take minutes.
                EXPECT_LT(spent, std::chrono::seconds(5));
            }
        }
    }
}

} // namespace
