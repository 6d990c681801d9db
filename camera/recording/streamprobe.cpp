#include "camera/recording/streamprobe.h"

#include "camera/recording/evtclock.h"
#include "camera/recording/evtwords.h"

#include <algorithm>
#include <array>
#include <bit>

namespace korvane::recording {

namespace {

struct Evidence
{
    std::uint64_t words = 0;
    std::uint64_t timeHighs = 0;
    std::uint64_t steady = 0; ///< time-high words that repeat the one before or count up by a little
    std::uint64_t reserved = 0;
};

/// Looks at a stream as if it were of an encoding. `knownTypes` has a bit for every type that occurs in it.
template <typename Words>
Evidence gather(std::span<const std::uint8_t> body, unsigned knownTypes)
{
    constexpr std::size_t size = sizeof(typename Words::Word);
    constexpr int typeShift = static_cast<int>(size * 8 - 4);
    // Idle streams count on in steps of seconds; damage and chance jump anywhere.
    constexpr std::int64_t smallStep = 10'000'000 / Words::rules.unit;
    Evidence evidence;
    std::uint32_t last = 0;
    const std::size_t length = std::min(body.size(), probeSize);
    for (std::size_t at = 0; at + size <= length; at += size) {
        const auto word = Words::load(body.data() + at);
        ++evidence.words;
        const auto type = static_cast<unsigned>(word >> typeShift);
        if ((knownTypes >> type & 1u) == 0)
            ++evidence.reserved;
        if ((word & Words::mask) != Words::tag)
            continue;
        // The lower half of a 64-bit time-high word is empty: else these are pairs of shorter words.
        if constexpr (size == 8) {
            if (static_cast<std::uint32_t>(word) != 0)
                ++evidence.reserved;
        }
        const std::uint32_t value = Words::value(word);
        const std::int64_t steps = EvtClock::stepsBetween(Words::rules, last, value);
        if (evidence.timeHighs == 0 || (steps >= 0 && steps <= smallStep))
            ++evidence.steady;
        last = value;
        ++evidence.timeHighs;
    }
    return evidence;
}

bool convinces(const Evidence& evidence)
{
    return evidence.timeHighs >= 1 && evidence.steady * 10 >= evidence.timeHighs * 9
        && evidence.reserved * 50 <= evidence.words
        // Cameras send one every few hundred words; between them there is room for bursts and padding.
        && evidence.timeHighs * 16384 >= evidence.words;
}

struct Extent
{
    unsigned x = 0;
    unsigned y = 0;
};

/// The first time-high word: what stands before it does not count.
template <typename Words>
std::size_t firstTimeHigh(std::span<const std::uint8_t> body)
{
    constexpr std::size_t size = sizeof(typename Words::Word);
    std::size_t at = 0;
    while (at + size <= body.size() && (Words::load(body.data() + at) & Words::mask) != Words::tag)
        at += size;
    return at;
}

Extent extentOfEvt2(std::span<const std::uint8_t> body)
{
    unsigned x = 0;
    unsigned y = 0;
    for (std::size_t at = firstTimeHigh<Evt2Words>(body); at + 4 <= body.size(); at += 4) {
        const auto word = loadWord<std::uint32_t>(body.data() + at);
        // All ones for events, nothing for other words: the loop has no branch.
        const std::uint32_t event = (word >> 29) == 0 ? ~0u : 0u;
        x = std::max(x, (word >> 11) & 0x7FF & event);
        y = std::max(y, word & 0x7FF & event);
    }
    return {x, y};
}

template <typename Words>
Extent extentOfEvt21(std::span<const std::uint8_t> body)
{
    Extent extent;
    for (std::size_t at = firstTimeHigh<Words>(body); at + 8 <= body.size(); at += 8) {
        const std::uint64_t word = Words::load(body.data() + at);
        const auto mask = static_cast<std::uint32_t>(word);
        if ((word >> 61) != 0 || mask == 0)
            continue;
        const auto upper = static_cast<std::uint32_t>(word >> 32);
        const unsigned last = 31u - static_cast<unsigned>(std::countl_zero(mask));
        extent.x = std::max(extent.x, ((upper >> 11) & 0x7FF) + last);
        extent.y = std::max(extent.y, upper & 0x7FF);
    }
    return extent;
}

Extent extentOfEvt3(std::span<const std::uint8_t> body)
{
    Extent extent;
    unsigned row = 0;
    unsigned base = 0;
    bool rowUsable = false;
    bool rowHidden = false;
    bool baseUsable = false;
    for (std::size_t at = firstTimeHigh<Evt3Words>(body); at + 2 <= body.size(); at += 2) {
        const unsigned word = loadWord<std::uint16_t>(body.data() + at);
        const unsigned type = word >> 12;
        if (type == Evt3Words::AddressY || type == Evt3Words::ForeignRow) {
            row = word & 0x7FF;
            rowUsable = type == Evt3Words::AddressY;
            rowHidden = type == Evt3Words::ForeignRow;
        } else if (type == Evt3Words::AddressX && rowUsable) {
            extent.x = std::max(extent.x, word & 0x7FF);
            extent.y = std::max(extent.y, row);
        } else if (type == Evt3Words::VectorBase) {
            base = word & 0x7FF;
            baseUsable = true;
        } else if ((type == Evt3Words::Vector12 || type == Evt3Words::Vector8) && !rowHidden) {
            const unsigned mask = word & (type == Evt3Words::Vector12 ? 0xFFFu : 0xFFu);
            if (mask != 0 && rowUsable && baseUsable) {
                extent.x = std::max(extent.x, base + static_cast<unsigned>(std::bit_width(mask)) - 1);
                extent.y = std::max(extent.y, row);
            }
            base = std::min(base + (type == Evt3Words::Vector12 ? 12u : 8u), vectorBaseLimit);
        }
    }
    return extent;
}

} // namespace

WordOrderVotes countWordOrder(std::span<const std::uint8_t> body)
{
    WordOrderVotes votes;
    constexpr std::size_t enough = 32 * 1024;
    const std::size_t length = std::min(body.size(), enough);
    for (std::size_t at = 0; at + 8 <= length; at += 8) {
        const auto first = loadWord<std::uint32_t>(body.data() + at);
        const auto second = loadWord<std::uint32_t>(body.data() + at + 4);
        if (first == 0 && second >> 28 == Evt2Words::TimeHigh)
            ++votes.little;
        else if (second == 0 && first >> 28 == Evt2Words::TimeHigh)
            ++votes.legacy;
    }
    return votes;
}

std::optional<EvtEncoding> probeEncoding(std::span<const std::uint8_t> body)
{
    constexpr unsigned evt2Types = 0b1100'0101'0000'0011;
    constexpr unsigned evt3Types = 0b1100'0101'1111'1101;
    const WordOrderVotes votes = countWordOrder(body);
    if (votes.little > votes.legacy && convinces(gather<Evt21Words>(body, evt2Types)))
        return EvtEncoding::Evt21;
    if (votes.legacy > votes.little && convinces(gather<Evt21LegacyWords>(body, evt2Types)))
        return EvtEncoding::Evt21Legacy;
    const Evidence evt2 = gather<Evt2Words>(body, evt2Types);
    const Evidence evt3 = gather<Evt3Words>(body, evt3Types);
    if (convinces(evt2) && (!convinces(evt3) || evt2.reserved * evt3.words < evt3.reserved * evt2.words))
        return EvtEncoding::Evt2;
    if (convinces(evt3))
        return EvtEncoding::Evt3;
    return std::nullopt;
}

bool looksLikeText(std::span<const std::uint8_t> bytes)
{
    const auto length = std::min(bytes.size(), probeSize);
    return std::all_of(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length),
                       [](std::uint8_t byte) {
                           return (byte >= 0x20 && byte != 0x7F) || byte == '\n' || byte == '\r'
                               || byte == '\t' || byte == '\f';
                       });
}

Geometry inferGeometry(EvtEncoding encoding, std::span<const std::uint8_t> body)
{
    Extent extent;
    switch (encoding) {
    case EvtEncoding::Evt2:
        extent = extentOfEvt2(body);
        break;
    case EvtEncoding::Evt21:
        extent = extentOfEvt21<Evt21Words>(body);
        break;
    case EvtEncoding::Evt21Legacy:
        extent = extentOfEvt21<Evt21LegacyWords>(body);
        break;
    case EvtEncoding::Evt3:
        extent = extentOfEvt3(body);
        break;
    }
    constexpr std::array<Geometry, 4> usual{{{304, 240}, {320, 320}, {640, 480}, {1280, 720}}};
    for (const Geometry& sensor : usual) {
        if (extent.x < sensor.width && extent.y < sensor.height)
            return sensor;
    }
    // Vectors may point past the last column that a coordinate can name.
    return {static_cast<std::uint16_t>(std::min<unsigned>(extent.x + 1, maximumSide)),
            static_cast<std::uint16_t>(std::min<unsigned>(extent.y + 1, maximumSide))};
}

} // namespace korvane::recording
