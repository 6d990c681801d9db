#pragma once

#include "camera/recording/evtencoding.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvane::recording {

/// The text header of a `.raw` recording: lines "% key value" that end with "% end" or with the first
/// position that does not start with "% ".
struct RawHeader
{
    /// The header may take this many bytes, a line of it that many; what is longer belongs to the body.
    static constexpr std::size_t maximumSize = 64 * 1024;
    static constexpr std::size_t maximumLine = 1024;

    /// Every key with its value in file order; a key may stand twice, then the last value holds.
    std::vector<std::pair<std::string, std::string>> entries;
    std::size_t bodyOffset = 0; ///< bytes; where the words begin
    /// As the header says; `Evt21` stands for both word orders here. Empty when the header is silent.
    std::optional<EvtEncoding> encoding;
    /// The word order of EVT 2.1, where the header tells it.
    std::optional<bool> legacyWordOrder;
    Geometry geometry; ///< not valid when the header is silent
    std::string serial; ///< empty when the header is silent
    std::string error; ///< why the recording cannot be read; empty when it may be

    /// The value of the last entry with this key.
    std::optional<std::string_view> value(std::string_view key) const;
};

/// Reads the header at the start of `bytes`, which holds at least the first RawHeader::maximumSize bytes of
/// the file or all of it. Never fails; a header that contradicts itself or names an unknown encoding sets
/// `error`.
RawHeader parseRawHeader(std::string_view bytes);

} // namespace korvane::recording
