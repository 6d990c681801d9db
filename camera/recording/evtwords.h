#pragma once

#include "camera/driver/event2d.h"
#include "camera/recording/evtclock.h"
#include "camera/recording/evtencoding.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace korvane::recording {

/// A little-endian word at any address.
template <typename Word>
inline Word loadWord(const std::uint8_t* at)
{
    Word word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

static_assert(std::endian::native == std::endian::little, "words are taken from memory as they stand");
static_assert(sizeof(Event2D) == 16 && offsetof(Event2D, x) == 0 && offsetof(Event2D, y) == 2
                  && offsetof(Event2D, polarity) == 4 && offsetof(Event2D, timestamp) == 8,
              "events are written as two 64-bit halves");

/// Writes an event in two stores: x, y and polarity in bits 0, 16 and 32 of `pixel`, then the time.
[[gnu::always_inline]] inline void storeEvent(Event2D* at, std::uint64_t pixel, std::uint64_t time)
{
    auto* const bytes = reinterpret_cast<unsigned char*>(at);
    std::memcpy(bytes, &pixel, sizeof pixel);
    std::memcpy(bytes + sizeof pixel, &time, sizeof time);
}

/// How time-high words look in an encoding: the part that the scanner, the index and the decoders share.
/// `mask` and `tag` tell a time-high word from others, `valueMask` is where its value stands. A word's type
/// is in its top four bits.
struct Evt2Words
{
    enum Type : unsigned {
        Off = 0x0,
        On = 0x1,
        TimeHigh = 0x8,
        Trigger = 0xA,
        Others = 0xE,
        Continued = 0xF,
    };
    using Word = std::uint32_t;
    static constexpr Word mask = 0xF0000000u;
    static constexpr Word tag = 0x80000000u;
    static constexpr Word valueMask = 0x0FFFFFFFu;
    static constexpr EvtClockRules rules = EvtClockRules::evt2();
    static Word load(const std::uint8_t* at) { return loadWord<Word>(at); }
    static std::uint32_t value(Word word) { return word & valueMask; }
};

/// Types as in EVT 2.0.
struct Evt21Words
{
    using Word = std::uint64_t;
    static constexpr Word mask = 0xF000000000000000u;
    static constexpr Word tag = 0x8000000000000000u;
    static constexpr Word valueMask = 0x0FFFFFFF00000000u;
    static constexpr EvtClockRules rules = EvtClockRules::evt2();
    static Word load(const std::uint8_t* at) { return loadWord<Word>(at); }
    static std::uint32_t value(Word word) { return std::uint32_t(word >> 32) & 0x0FFFFFFFu; }
};

/// The same words with their halves swapped; `load` gives them as Evt21Words has them.
struct Evt21LegacyWords
{
    using Word = std::uint64_t;
    static constexpr Word mask = Evt21Words::mask;
    static constexpr Word tag = Evt21Words::tag;
    static constexpr Word valueMask = Evt21Words::valueMask;
    static constexpr EvtClockRules rules = EvtClockRules::evt2();
    static Word load(const std::uint8_t* at)
    {
        const Word word = loadWord<Word>(at);
        return (word << 32) | (word >> 32);
    }
    static std::uint32_t value(Word word) { return Evt21Words::value(word); }
};

struct Evt3Words
{
    enum Type : unsigned {
        AddressY = 0x0,
        ForeignRow = 0x1,
        AddressX = 0x2,
        VectorBase = 0x3,
        Vector12 = 0x4,
        Vector8 = 0x5,
        TimeLow = 0x6,
        Continued4 = 0x7,
        TimeHigh = 0x8,
        Trigger = 0xA,
        Others = 0xE,
        Continued12 = 0xF,
    };
    using Word = std::uint16_t;
    static constexpr Word mask = 0xF000u;
    static constexpr Word tag = 0x8000u;
    static constexpr Word valueMask = 0x0FFFu;
    static constexpr EvtClockRules rules = EvtClockRules::evt3();
    static Word load(const std::uint8_t* at) { return loadWord<Word>(at); }
    static std::uint32_t value(Word word) { return word & valueMask; }
};

/// EVT 3.0: a vector base that has run off the sensor stays there instead of wrapping back into it.
constexpr unsigned vectorBaseLimit = 4096;

/// Words that are searched for the next time-high word at a discontinuity. Cameras repeat it every 16 us, the
/// leanest writers every 8 s; the bound keeps damaged files from being searched to their end at every jump.
constexpr std::ptrdiff_t peekWords = 1 << 20;

/// The value of the first time-high word in [at, end), if it is near.
template <typename Words>
std::optional<std::uint32_t> peekTimeHigh(const std::uint8_t* at, const std::uint8_t* end)
{
    constexpr std::ptrdiff_t size = sizeof(typename Words::Word);
    const std::ptrdiff_t words = std::min((end - at) / size, peekWords);
    for (std::ptrdiff_t i = 0; i < words; ++i) {
        const auto word = Words::load(at + i * size);
        if ((word & Words::mask) == Words::tag)
            return Words::value(word);
    }
    return std::nullopt;
}

} // namespace korvane::recording
