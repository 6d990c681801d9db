#pragma once

#include "camera/recording/evtencoding.h"

#include <cstdint>
#include <optional>
#include <span>

namespace korvane::recording {

/// Bytes that are looked at to tell what a file is.
constexpr std::size_t probeSize = 1024 * 1024;

/// How often the time-high words of EVT 2.1 stand in either word order among the first words of `body`.
struct WordOrderVotes
{
    std::uint64_t little = 0;
    std::uint64_t legacy = 0;
};
WordOrderVotes countWordOrder(std::span<const std::uint8_t> body);

/// The encoding of a stream whose header does not tell it, from the first probeSize bytes of its words:
/// time-high words come at regular places, count up steadily, and hardly a word has a reserved type. Empty
/// when nothing fits.
std::optional<EvtEncoding> probeEncoding(std::span<const std::uint8_t> body);

/// Whether bytes are plain text: no file of words, however short, looks like that.
bool looksLikeText(std::span<const std::uint8_t> bytes);

/// The smallest usual sensor that holds every coordinate of the stream, or what was seen where none does. For
/// recordings whose header gives no geometry; reads all of it, at the speed of memory.
Geometry inferGeometry(EvtEncoding encoding, std::span<const std::uint8_t> body);

} // namespace korvane::recording
