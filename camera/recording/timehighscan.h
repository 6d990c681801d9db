#pragma once

#include "camera/recording/evtencoding.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace korvane::recording {

/// What to look for: words with (word & mask) == tag whose value bits differ from `current`. All in the order
/// in which words stand in the file.
template <typename Word>
struct TimeHighPattern
{
    Word mask;
    Word tag;
    Word valueMask;
    Word current; ///< the value bits of the current time-high word; a bit outside valueMask matches nothing
};

/// Index of the first of `count` words that the pattern finds, else `count`. Runs at the speed of memory.
std::size_t findTimeHighChange(const std::uint16_t* words, std::size_t count,
                               TimeHighPattern<std::uint16_t> pattern);
std::size_t findTimeHighChange(const std::uint32_t* words, std::size_t count,
                               TimeHighPattern<std::uint32_t> pattern);
std::size_t findTimeHighChange(const std::uint64_t* words, std::size_t count,
                               TimeHighPattern<std::uint64_t> pattern);

/// Whether any of these words is a trigger. At the speed of memory too.
bool holdsTriggerWord(EvtEncoding encoding, std::span<const std::uint8_t> words);

} // namespace korvane::recording
