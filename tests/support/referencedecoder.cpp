#include "tests/support/referencedecoder.h"

#include <algorithm>
#include <optional>

namespace reference {

using korvane::Event2D;
using korvane::EventTriggerIn;
using korvane::recording::EvtCounts;
using korvane::recording::EvtEncoding;
using korvane::recording::Geometry;

namespace {

/// Bits `high` to `low` of a word.
unsigned bits(std::uint64_t word, unsigned high, unsigned low)
{
    unsigned value = 0;
    for (unsigned bit = high + 1; bit-- > low;)
        value = value * 2 + static_cast<unsigned>((word >> bit) % 2);
    return value;
}

/// What a stream says, its words taken apart; times are not yet put together.
struct Item
{
    enum Kind {
        TimeHigh,
        TimeLow, ///< EVT 3.0
        Pixel,
        OutsidePixel, ///< not on the sensor
        Trigger,
    };
    Kind kind;
    unsigned value = 0; ///< of a time word; the polarity of a pixel, the edge of a trigger
    unsigned x = 0; ///< of a pixel; the channel of a trigger
    unsigned y = 0;
    unsigned lowBits = 0; ///< EVT 2.0 and 2.1: the time bits in the word itself
};

class Parser
{
public:
    Parser(EvtEncoding wordEncoding, Geometry sensor) : encoding(wordEncoding), geometry(sensor) {}

    std::vector<Item> items;
    EvtCounts counts;

    void parse(std::span<const std::uint8_t> bytes)
    {
        // Where the bytes of a word stand, the most significant one first.
        static const std::vector<std::size_t> two{1, 0};
        static const std::vector<std::size_t> four{3, 2, 1, 0};
        static const std::vector<std::size_t> little{7, 6, 5, 4, 3, 2, 1, 0};
        static const std::vector<std::size_t> legacy{3, 2, 1, 0, 7, 6, 5, 4};
        const auto& order = encoding == EvtEncoding::Evt3 ? two
            : encoding == EvtEncoding::Evt2               ? four
            : encoding == EvtEncoding::Evt21              ? little
                                                          : legacy;
        for (std::size_t at = 0; at + order.size() <= bytes.size(); at += order.size()) {
            std::uint64_t word = 0;
            for (const std::size_t place : order)
                word = word * 256 + bytes[at + place];
            if (encoding == EvtEncoding::Evt3)
                takeEvt3(word);
            else if (encoding == EvtEncoding::Evt2)
                takeEvt2(bits(word, 31, 28), word, 1);
            else
                takeEvt2(bits(word, 63, 60), word >> 32, word & 0xFFFFFFFF);
        }
    }

private:
    void addPixel(unsigned x, unsigned y, unsigned polarity, unsigned lowBits)
    {
        const bool inside = x < geometry.width && y < geometry.height;
        counts.outside += inside ? 0u : 1u;
        items.push_back({inside ? Item::Pixel : Item::OutsidePixel, polarity, x, y, lowBits});
    }

    /// A word of EVT 2.0, or the upper half of one of 2.1 with its mask of pixels.
    void takeEvt2(unsigned type, std::uint64_t word, std::uint64_t mask)
    {
        switch (type) {
        case 0x0:
        case 0x1:
            for (unsigned n = 0; n < 32; ++n) {
                if (bits(mask, n, n) == 0)
                    continue;
                if (started)
                    addPixel(bits(word, 21, 11) + n, bits(word, 10, 0), type, bits(word, 27, 22));
                else
                    ++counts.beforeTime;
            }
            break;
        case 0x8:
            started = true;
            items.push_back({Item::TimeHigh, bits(word, 27, 0)});
            break;
        case 0xA:
            if (started)
                items.push_back({Item::Trigger, bits(word, 0, 0), bits(word, 12, 8), 0, bits(word, 27, 22)});
            break;
        case 0xE:
        case 0xF:
            break;
        default:
            ++counts.reservedWords;
        }
    }

    void takeEvt3(std::uint64_t word)
    {
        const unsigned type = bits(word, 15, 12);
        if (!started) {
            if (type == 0x8) {
                started = true;
                items.push_back({Item::TimeHigh, bits(word, 11, 0)});
            }
            for (unsigned n = 0; n < 12; ++n)
                counts.beforeTime += (type == 0x4 || (type == 0x5 && n < 8)) && bits(word, n, n) ? 1u : 0u;
            counts.beforeTime += type == 0x2 ? 1u : 0u;
            return;
        }
        switch (type) {
        case 0x0:
            row = bits(word, 10, 0);
            foreign = false;
            break;
        case 0x1: // a row of another family of events: those that follow are not ours
            row.reset();
            foreign = true;
            ++counts.reservedWords;
            break;
        case 0x2:
            if (row)
                addPixel(bits(word, 10, 0), *row, bits(word, 11, 11), 0);
            else
                ++counts.withoutRow;
            break;
        case 0x3:
            base = bits(word, 10, 0);
            basePolarity = bits(word, 11, 11);
            break;
        case 0x4:
            takeVector(word, 12);
            break;
        case 0x5:
            takeVector(word, 8);
            break;
        case 0x6:
            items.push_back({Item::TimeLow, bits(word, 11, 0)});
            break;
        case 0x8:
            items.push_back({Item::TimeHigh, bits(word, 11, 0)});
            break;
        case 0xA:
            items.push_back({Item::Trigger, bits(word, 0, 0), bits(word, 11, 8)});
            break;
        case 0x7:
        case 0xE:
        case 0xF:
            break;
        default:
            ++counts.reservedWords;
        }
    }

    void takeVector(std::uint64_t mask, unsigned width)
    {
        for (unsigned i = 0; i < width; ++i) {
            if (bits(mask, i, i) == 0)
                continue;
            if (foreign)
                ++counts.withoutRow;
            else if (!base)
                ++counts.withoutBase;
            else if (!row)
                ++counts.withoutRow;
            else
                addPixel(*base + i, *row, basePolarity, 0);
        }
        if (base && !foreign)
            *base += width;
    }

    const EvtEncoding encoding;
    const Geometry geometry;
    bool started = false;
    std::optional<unsigned> row;
    bool foreign = false;
    std::optional<unsigned> base;
    unsigned basePolarity = 0;
};

class Clock
{
public:
    explicit Clock(EvtEncoding encoding) : evt3(encoding == EvtEncoding::Evt3) {}

    std::int64_t unit() const { return evt3 ? 4096 : 64; }

    /// Microseconds from one time-high value to another. Backwards is negative, but for a wrap: EVT 3.0 takes
    /// a step back of half its 4096 values or more for one, EVT 2 one from the last sixteenth of its 2^28
    /// values to the first.
    std::int64_t distance(unsigned from, unsigned to) const
    {
        const std::int64_t values = evt3 ? 4096 : 268435456;
        const bool wraps = evt3 ? from >= to + 2048 : from >= values / 16 * 15 && to < values / 16;
        return (std::int64_t(to) - std::int64_t(from) + (wraps ? values : 0)) * unit();
    }

private:
    const bool evt3;
};

class LiteralTimes
{
public:
    explicit LiteralTimes(const Clock& rules) : clock(rules) {}

    void timeHigh(unsigned value, std::optional<unsigned>, EvtCounts&)
    {
        now = current ? now + clock.distance(*current, value) : std::int64_t(value) * clock.unit();
        if (current != value)
            low = 0;
        current = value;
    }
    void timeLow(unsigned value, EvtCounts&) { low = value; }
    void outside(unsigned, EvtCounts&) {}
    std::int64_t event(unsigned lowBits, EvtCounts&) { return now + low + lowBits; }
    std::int64_t trigger(unsigned lowBits, EvtCounts&) { return now + low + lowBits; }

private:
    const Clock& clock;
    std::optional<unsigned> current;
    std::int64_t now = 0;
    std::int64_t low = 0;
};

/// Time from the first time-high word on that never runs backwards.
class ReaderTimes
{
public:
    explicit ReaderTimes(const Clock& rules) : clock(rules) {}

    void timeHigh(unsigned value, std::optional<unsigned> following, EvtCounts& counts)
    {
        if (!current) {
            current = value;
            return;
        }
        if (*current == value)
            return;
        const std::int64_t step = clock.distance(*current, value);
        if (following) {
            const std::int64_t toFollowing = clock.distance(*current, *following);
            const bool jumpTakenBack = step > tenMilliseconds && toFollowing >= 0 && toFollowing < step;
            const bool fallTakenBack
                = step <= -tenMilliseconds && toFollowing >= 0 && toFollowing <= tenMilliseconds;
            if (jumpTakenBack || fallTakenBack) {
                ++counts.wildTimes;
                return;
            }
        }
        farthest = std::max({farthest, now + low, lastEvent, lastTrigger});
        settle(0, counts);
        current = value;
        now += step;
        low = 0;
        if (step < 0) {
            // The bits below time-high decide where they can make the difference.
            undecided = farthest - now >= tenMilliseconds;
            if (farthest - (now + clock.unit() - 1) >= tenMilliseconds)
                settle(clock.unit() - 1, counts);
        }
        lastEvent = std::max(lastEvent, now);
        lastTrigger = std::max(lastTrigger, now);
    }

    void timeLow(unsigned value, EvtCounts& counts)
    {
        settle(value, counts);
        low = value;
    }

    void outside(unsigned lowBits, EvtCounts& counts) { settle(lowBits, counts); }

    std::int64_t event(unsigned lowBits, EvtCounts& counts)
    {
        settle(low + lowBits, counts);
        return hold(lastEvent, lowBits, counts);
    }

    std::int64_t trigger(unsigned lowBits, EvtCounts& counts)
    {
        settle(low + lowBits, counts);
        return hold(lastTrigger, lowBits, counts);
    }

private:
    static constexpr std::int64_t tenMilliseconds = 10000;

    /// Whether a step back was a restart of the camera's clock, now that the bits below time-high are known.
    void settle(std::int64_t bitsBelow, EvtCounts& counts)
    {
        if (undecided && farthest - (now + bitsBelow) >= tenMilliseconds) {
            ++counts.restarts;
            now = farthest + 1;
            lastEvent = std::max(lastEvent, now);
            lastTrigger = std::max(lastTrigger, now);
        }
        undecided = false;
    }

    std::int64_t hold(std::int64_t& last, unsigned lowBits, EvtCounts& counts)
    {
        counts.clamped += now + low + lowBits < last ? 1u : 0u;
        last = std::max(last, now + low + lowBits);
        return last;
    }

    const Clock& clock;
    std::optional<unsigned> current;
    std::int64_t now = 0; ///< what the current time-high word stands for
    std::int64_t low = 0;
    std::int64_t farthest = 0;
    std::int64_t lastEvent = 0;
    std::int64_t lastTrigger = 0;
    bool undecided = false;
};

template <typename TimeRules>
void putTimes(const std::vector<Item>& items, TimeRules rules, bool evt3, Decoded& decoded)
{
    std::vector<std::optional<unsigned>> following(items.size());
    std::optional<unsigned> next;
    for (std::size_t i = items.size(); i-- > 0;) {
        following[i] = next;
        if (items[i].kind == Item::TimeHigh)
            next = items[i].value;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Item& item = items[i];
        switch (item.kind) {
        case Item::TimeHigh:
            rules.timeHigh(item.value, following[i], decoded.counts);
            break;
        case Item::TimeLow:
            rules.timeLow(item.value, decoded.counts);
            break;
        case Item::OutsidePixel:
            // In EVT 3.0 such a word says nothing about time.
            if (!evt3)
                rules.outside(item.lowBits, decoded.counts);
            break;
        case Item::Pixel:
            decoded.events.emplace_back(
                static_cast<std::uint16_t>(item.x), static_cast<std::uint16_t>(item.y),
                static_cast<std::uint8_t>(item.value),
                static_cast<std::uint64_t>(rules.event(item.lowBits, decoded.counts)));
            break;
        case Item::Trigger:
            decoded.triggers.emplace_back(
                static_cast<std::int16_t>(item.x), static_cast<std::int16_t>(item.value),
                static_cast<std::uint64_t>(rules.trigger(item.lowBits, decoded.counts)));
            break;
        }
    }
}

} // namespace

Decoded decode(EvtEncoding encoding, std::span<const std::uint8_t> words, Geometry geometry, Times times)
{
    Parser parser(encoding, geometry);
    parser.parse(words);
    Decoded decoded;
    decoded.counts = parser.counts;
    const Clock clock(encoding);
    const auto first = std::find_if(parser.items.begin(), parser.items.end(),
                                    [](const Item& item) { return item.kind == Item::TimeHigh; });
    if (first != parser.items.end())
        decoded.timeBase = std::int64_t(first->value) * clock.unit();
    const bool evt3 = encoding == EvtEncoding::Evt3;
    if (times == Times::Reader)
        putTimes(parser.items, ReaderTimes(clock), evt3, decoded);
    else
        putTimes(parser.items, LiteralTimes(clock), evt3, decoded);
    return decoded;
}

} // namespace reference
