#include "camera/recording/evt3encoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace korvane::recording {

namespace {

// Types of EVT 3.0 words, in their top four bits.
enum Type : unsigned {
    AddressY = 0x0,
    AddressX = 0x2,
    VectorBase = 0x3,
    Vector12 = 0x4,
    Vector8 = 0x5,
    TimeLow = 0x6,
    TimeHigh = 0x8,
    Trigger = 0xA,
};

constexpr std::uint64_t highPeriod = 4096; // microseconds a time-high value stands for
constexpr std::uint64_t highRepeat = 16; // microseconds after which cameras send the time-high word again
/// Readers recognise a wrap of time as long as no gap between time-high words is longer than 8 s.
constexpr std::uint64_t longestGap = 4'000'000 / highPeriod * highPeriod;
constexpr unsigned tripleWidth = 32; // pixels that three vector words cover
/// From this many events on a triple is smaller than single words, with and without a base word before it.
constexpr unsigned worthWithBase = 5;
constexpr unsigned worthWithoutBase = 4;
/// The most words that one event takes: two for time-high and time-low, a row, its column; or a base more.
constexpr std::size_t wordsPerEvent = 6;
/// Events whose words are made room for at a time.
constexpr std::size_t pieceEvents = 4096;

} // namespace

/// Puts words into room made beforehand.
class Evt3Encoder::Writer
{
public:
    Writer(std::vector<std::uint8_t>& bytes, std::size_t words) : target(bytes), start(bytes.size())
    {
        target.resize(start + words * sizeof(std::uint16_t));
        at = target.data() + start;
    }
    ~Writer() { target.resize(static_cast<std::size_t>(at - target.data())); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void put(unsigned type, std::uint64_t value)
    {
        const auto word = static_cast<std::uint16_t>((type << 12) | static_cast<unsigned>(value));
        std::memcpy(at, &word, sizeof word);
        at += sizeof word;
    }

private:
    std::vector<std::uint8_t>& target;
    std::size_t start;
    std::uint8_t* at = nullptr;
};

Evt3Encoder::Evt3Encoder(Geometry sensor) : geometry(sensor) {}

void Evt3Encoder::encodeIdle(std::uint64_t microseconds, std::vector<std::uint8_t>& out)
{
    if (!started || microseconds <= time)
        return;
    const std::uint64_t gaps = (microseconds - highTime) / longestGap;
    Writer writer(out, gaps + 2);
    for (std::uint64_t next = highTime / highPeriod * highPeriod + longestGap; next < microseconds;
         next += longestGap) {
        writer.put(TimeHigh, (next / highPeriod) & 0xFFF);
        highTime = next;
        time = next;
    }
}

void Evt3Encoder::putTime(Writer& writer, std::uint64_t microseconds)
{
    if (started && microseconds == time)
        return;
    if (!started || microseconds / highRepeat != highTime / highRepeat) {
        writer.put(TimeHigh, (microseconds / highPeriod) & 0xFFF);
        highTime = microseconds;
        started = true;
    }
    writer.put(TimeLow, microseconds % highPeriod);
    time = microseconds;
}

void Evt3Encoder::encode(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers,
                         std::vector<std::uint8_t>& out)
{
    while (!events.empty() || !triggers.empty()) {
        const bool triggerFirst
            = !triggers.empty() && (events.empty() || triggers.front().timestamp <= events.front().timestamp);
        if (triggerFirst) {
            const EventTriggerIn& trigger = triggers.front();
            encodeIdle(trigger.timestamp, out);
            Writer writer(out, wordsPerEvent);
            putTime(writer, started ? std::max(trigger.timestamp, time) : trigger.timestamp);
            writer.put(Trigger,
                       (static_cast<unsigned>(trigger.id & 0xF) << 8) | (trigger.polarity != 0 ? 1u : 0u));
            triggers = triggers.subspan(1);
            continue;
        }
        std::size_t count = std::min(events.size(), pieceEvents);
        const auto until = [&](std::uint64_t limit) {
            const auto piece = events.first(count);
            count = static_cast<std::size_t>(
                std::partition_point(piece.begin(), piece.end(),
                                     [limit](const Event2D& event) { return event.timestamp < limit; })
                - piece.begin());
        };
        if (!triggers.empty())
            until(triggers.front().timestamp);
        // A gap inside the piece gets its own time words: end the piece before it.
        encodeIdle(events.front().timestamp, out);
        for (std::size_t i = 1; i < count; ++i) {
            if (events[i].timestamp > events[i - 1].timestamp + longestGap) {
                count = i;
                break;
            }
        }
        Writer writer(out, count * wordsPerEvent);
        putEvents(writer, events.first(count));
        events = events.subspan(count);
    }
}

void Evt3Encoder::putEvents(Writer& writer, std::span<const Event2D> events)
{
    const Event2D* const end = events.data() + events.size();
    for (const Event2D* event = events.data(); event != end;) {
        if (event->x >= geometry.width || event->y >= geometry.height) {
            ++dropped;
            ++event;
            continue;
        }
        putTime(writer, started ? std::max(event->timestamp, time) : event->timestamp);
        if (!hasRow || row != event->y) {
            row = event->y;
            hasRow = true;
            writer.put(AddressY, row);
        }
        const Event2D* last = event + 1;
        while (last != end && last->x > last[-1].x && last->x < geometry.width && last->y == row
               && last->polarity == event->polarity && last->timestamp <= time)
            ++last;
        putRun(writer, event, last);
        event = last;
    }
}

void Evt3Encoder::putRun(Writer& writer, const Event2D* event, const Event2D* end)
{
    const unsigned polarity = event->polarity != 0 ? 1 : 0;
    while (event != end) {
        const unsigned x = event->x;
        const unsigned first = x / tripleWidth * tripleWidth;
        const bool atBase = hasBase && base == first && basePolarity == polarity;
        if (end - event >= static_cast<std::ptrdiff_t>(worthWithoutBase)
            && first + tripleWidth <= geometry.width) {
            std::uint32_t mask = 0;
            const Event2D* behind = event;
            for (; behind != end && behind->x < first + tripleWidth; ++behind)
                mask |= 1u << (behind->x - first);
            if (behind - event >= static_cast<std::ptrdiff_t>(atBase ? worthWithoutBase : worthWithBase)) {
                if (!atBase)
                    writer.put(VectorBase, (polarity << 11) | first);
                writer.put(Vector12, mask & 0xFFF);
                writer.put(Vector12, (mask >> 12) & 0xFFF);
                writer.put(Vector8, mask >> 24);
                hasBase = true;
                base = static_cast<std::uint16_t>(first + tripleWidth);
                basePolarity = static_cast<std::uint8_t>(polarity);
                event = behind;
                continue;
            }
            for (; event != behind; ++event)
                writer.put(AddressX, (polarity << 11) | event->x);
            continue;
        }
        writer.put(AddressX, (polarity << 11) | x);
        ++event;
    }
}

} // namespace korvane::recording
