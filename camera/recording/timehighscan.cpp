#include "camera/recording/timehighscan.h"

#include "camera/recording/evtwords.h"
#include "display/kernels/multiversion.h"

#include <cstring>

namespace korvane::recording {

namespace {

template <typename Word>
[[gnu::always_inline]] inline bool matches(Word word, const TimeHighPattern<Word>& pattern)
{
    return ((word & pattern.mask) == pattern.tag) & ((word & pattern.valueMask) != pattern.current);
}

/// Words may stand at any address: they are loaded by copying.
template <typename Word>
[[gnu::always_inline]] inline std::size_t findIn(const Word* words, std::size_t count,
                                                 const TimeHighPattern<Word>& pattern)
{
    constexpr std::size_t block = 256 / sizeof(Word);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(words);
    std::size_t at = 0;
    for (; at + block <= count; at += block) {
        Word loaded[block];
        std::memcpy(loaded, bytes + at * sizeof(Word), sizeof loaded);
        Word any = 0;
        for (std::size_t i = 0; i < block; ++i)
            any = static_cast<Word>(any | static_cast<Word>(matches(loaded[i], pattern)));
        if (any)
            break;
    }
    for (; at < count; ++at) {
        Word word;
        std::memcpy(&word, bytes + at * sizeof(Word), sizeof word);
        if (matches(word, pattern))
            break;
    }
    return at;
}

/// Looks for a type only: no value is the current one.
template <typename Word>
bool holdsType(std::span<const std::uint8_t> bytes, Word mask, Word tag)
{
    const auto* const words = reinterpret_cast<const Word*>(bytes.data());
    const std::size_t count = bytes.size() / sizeof(Word);
    return findTimeHighChange(words, count, TimeHighPattern<Word>{mask, tag, 0, 1}) < count;
}

} // namespace

KORVANE_CLONES
std::size_t findTimeHighChange(const std::uint16_t* words, std::size_t count,
                               TimeHighPattern<std::uint16_t> pattern)
{
    return findIn(words, count, pattern);
}

KORVANE_CLONES
std::size_t findTimeHighChange(const std::uint32_t* words, std::size_t count,
                               TimeHighPattern<std::uint32_t> pattern)
{
    return findIn(words, count, pattern);
}

KORVANE_CLONES
std::size_t findTimeHighChange(const std::uint64_t* words, std::size_t count,
                               TimeHighPattern<std::uint64_t> pattern)
{
    return findIn(words, count, pattern);
}

bool holdsTriggerWord(EvtEncoding encoding, std::span<const std::uint8_t> words)
{
    constexpr std::uint32_t trigger2 = Evt2Words::Trigger << 28;
    constexpr auto trigger3 = static_cast<std::uint16_t>(Evt3Words::Trigger << 12);
    switch (encoding) {
    case EvtEncoding::Evt2:
        return holdsType<std::uint32_t>(words, Evt2Words::mask, trigger2);
    case EvtEncoding::Evt21:
        return holdsType<std::uint64_t>(words, Evt21Words::mask, std::uint64_t(trigger2) << 32);
    case EvtEncoding::Evt21Legacy:
        // The half with the type comes first.
        return holdsType<std::uint64_t>(words, Evt2Words::mask, trigger2);
    case EvtEncoding::Evt3:
        break;
    }
    return holdsType<std::uint16_t>(words, Evt3Words::mask, trigger3);
}

} // namespace korvane::recording
