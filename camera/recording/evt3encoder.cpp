#include "camera/recording/evt3encoder.h"

#include "camera/recording/evtwords.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace korvane::recording {

namespace {

// Types of words, in their place in a word.
enum Type : unsigned {
    AddressY = Evt3Words::AddressY << 12,
    AddressX = Evt3Words::AddressX << 12,
    VectorBase = Evt3Words::VectorBase << 12,
    Vector12 = Evt3Words::Vector12 << 12,
    Vector8 = Evt3Words::Vector8 << 12,
    TimeLow = Evt3Words::TimeLow << 12,
    TimeHigh = Evt3Words::TimeHigh << 12,
    Trigger = Evt3Words::Trigger << 12,
};

constexpr std::uint64_t highPeriod = 4096; // microseconds a time-high value stands for
constexpr std::uint64_t highRepeat = 16; // microseconds after which cameras send the time-high word again
/// Readers recognise a wrap of time as long as no gap between time-high words is longer than 8 s.
constexpr std::uint64_t longestGap = 4'000'000 / highPeriod * highPeriod;
constexpr unsigned polarityBit = 1u << 11;
constexpr unsigned tripleWidth = 32; // pixels that three vector words cover
/// From this many events on a triple is smaller than single words, with and without a base word before it.
constexpr std::ptrdiff_t worthWithBase = 5;
constexpr std::ptrdiff_t worthWithoutBase = 4;
/// The most words that one event takes: time-high, time-low, row, column.
constexpr std::size_t wordsPerEvent = 4;
/// Events whose words are put together before they are appended.
constexpr std::size_t pieceEvents = 2048;

/// Column, row and polarity in one number, such that pixels of one row and polarity are neighbours in it.
/// Copied as it lies in memory, for every event passes here.
std::uint64_t pixelOf(const Event2D& event)
{
    static_assert(offsetof(Event2D, x) == 0 && offsetof(Event2D, y) == 2 && offsetof(Event2D, polarity) == 4);
    std::uint64_t bits = 0;
    std::memcpy(&bits, &event, sizeof bits);
    return bits & 0xFF'FFFF'FFFF;
}

std::uint16_t* put(std::uint16_t* at, unsigned type, std::uint64_t value)
{
    *at = static_cast<std::uint16_t>(type | static_cast<unsigned>(value));
    return at + 1;
}

void append(std::vector<std::uint8_t>& out, const std::uint16_t* begin, const std::uint16_t* end)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(begin);
    out.insert(out.end(), bytes, bytes + (end - begin) * static_cast<std::ptrdiff_t>(sizeof *begin));
}

} // namespace

Evt3Encoder::Evt3Encoder(Geometry sensor)
    : geometry{std::min(sensor.width, maximumSide), std::min(sensor.height, maximumSide)}
{
}

std::uint16_t* Evt3Encoder::putTimeHigh(std::uint16_t* at, std::uint64_t microseconds)
{
    highTime = microseconds;
    return put(at, TimeHigh, microseconds / highPeriod % 4096);
}

void Evt3Encoder::encodeIdle(std::uint64_t until, std::vector<std::uint8_t>& out)
{
    if (!started)
        return;
    std::uint16_t word = 0;
    for (std::uint64_t next = highTime / highPeriod * highPeriod + longestGap; next < until;
         next += longestGap) {
        putTimeHigh(&word, next);
        append(out, &word, &word + 1);
        // A time-high word stands for the start of its period until a time-low word follows.
        time = next;
    }
}

void Evt3Encoder::putTrigger(const EventTriggerIn& trigger, std::vector<std::uint8_t>& out)
{
    if (!canName(trigger)) {
        ++nameless;
        return;
    }
    encodeIdle(trigger.timestamp, out);
    const std::uint64_t moment = started ? std::max(trigger.timestamp, time) : trigger.timestamp;
    std::array<std::uint16_t, 3> words = {};
    std::uint16_t* at = words.data();
    if (!started || moment / highRepeat != highTime / highRepeat)
        at = putTimeHigh(at, moment);
    if (!started || moment != time)
        at = put(at, TimeLow, moment % highPeriod);
    started = true;
    time = moment;
    at = put(at, Trigger, (static_cast<unsigned>(trigger.id) << 8) | (trigger.polarity != 0 ? 1u : 0u));
    append(out, words.data(), at);
}

void Evt3Encoder::encode(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers,
                         std::vector<std::uint8_t>& out)
{
    while (!events.empty() || !triggers.empty()) {
        if (!triggers.empty() && (events.empty() || triggers.front().timestamp <= events.front().timestamp)) {
            putTrigger(triggers.front(), out);
            triggers = triggers.subspan(1);
            continue;
        }
        auto piece = events;
        if (!triggers.empty())
            piece = events.first(static_cast<std::size_t>(
                std::partition_point(events.begin(), events.end(),
                                     [limit = triggers.front().timestamp](const Event2D& event) {
                                         return event.timestamp < limit;
                                     })
                - events.begin()));
        while (!piece.empty()) {
            encodeIdle(piece.front().timestamp, out);
            const std::size_t done = putEvents(piece, out);
            piece = piece.subspan(done);
            events = events.subspan(done);
        }
    }
}

std::size_t Evt3Encoder::putEvents(std::span<const Event2D> events, std::vector<std::uint8_t>& out)
{
    std::array<std::uint16_t, pieceEvents * wordsPerEvent> words;
    std::uint16_t* at = words.data();
    const Event2D* event = events.data();
    const Event2D* const end = event + std::min(events.size(), pieceEvents);
    // Kept in registers: what is written through `at` might be a member for all the compiler knows.
    std::uint64_t now = time;
    std::uint64_t tick = highTime / highRepeat;
    unsigned currentRow = row;
    unsigned currentBase = base;
    bool running = started;
    std::uint64_t left = 0;
    const unsigned width = geometry.width;
    const unsigned height = geometry.height;
    while (event != end) {
        const std::uint64_t pixel = pixelOf(*event);
        const auto x = static_cast<unsigned>(pixel & 0xFFFF);
        const auto y = static_cast<unsigned>(pixel >> 16 & 0xFFFF);
        if (x >= width || y >= height) {
            ++left;
            ++event;
            continue;
        }
        std::uint64_t moment = event->timestamp;
        if ((moment / highRepeat != tick && moment > now) || !running) {
            // The words of a gap come first, which the caller puts.
            if (running && moment - highTime > longestGap)
                break;
            at = putTimeHigh(at, moment);
            tick = moment / highRepeat;
        }
        const unsigned polarity = (pixel >> 32) != 0 ? polarityBit : 0;
        // Whether time and row change cannot be foreseen: their words are written in any case and kept where
        // they are wanted.
        moment = std::max(moment, now);
        put(at, TimeLow, moment % highPeriod);
        at += (moment != now) | !running;
        now = moment;
        running = true;
        put(at, AddressY, y);
        at += y != currentRow;
        currentRow = y;

        // Four events of one block of pixels may be worth vectors; mostly the fourth from here lies
        // elsewhere.
        if (end - event >= worthWithoutBase && (pixelOf(event[worthWithoutBase - 1]) ^ pixel) < tripleWidth) {
            std::uint64_t previous = pixel;
            std::uint32_t mask = 1u << x % tripleWidth;
            const Event2D* behind = event + 1;
            for (; behind != end && behind->timestamp <= now; ++behind) {
                const std::uint64_t next = pixelOf(*behind);
                if (next <= previous || (next ^ pixel) >= tripleWidth)
                    break;
                mask |= 1u << next % tripleWidth;
                previous = next;
            }
            const unsigned first = x / tripleWidth * tripleWidth;
            const bool atBase = currentBase == (polarity | first);
            if (behind - event >= (atBase ? worthWithoutBase : worthWithBase)
                && first + tripleWidth <= width) {
                if (!atBase)
                    at = put(at, VectorBase, polarity | first);
                at = put(at, Vector12, mask & 0xFFF);
                at = put(at, Vector12, mask >> 12 & 0xFFF);
                at = put(at, Vector8, mask >> 24);
                // Behind the last column that a word can name there is no base: its number would be taken for
                // the polarity.
                currentBase = first + tripleWidth < polarityBit ? polarity | (first + tripleWidth) : noBase;
                event = behind;
                continue;
            }
        }
        at = put(at, AddressX, polarity | x);
        ++event;
    }
    const auto done = static_cast<std::size_t>(event - events.data());
    time = now;
    row = currentRow;
    base = currentBase;
    started = running;
    dropped += left;
    encoded += done - left;
    append(out, words.data(), at);
    return done;
}

} // namespace korvane::recording
