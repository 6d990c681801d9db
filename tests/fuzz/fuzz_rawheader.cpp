#include "camera/recording/rawheader.h"
#include "tests/fuzz/require.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace korvane::recording;

// Input: the start of a file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    const RawHeader header = parseRawHeader(file);
    require(header.bodyOffset <= size && header.bodyOffset <= RawHeader::maximumSize,
            "the header lies in the file");
    require(header.bodyOffset > 0 || header.entries.empty(), "entries take bytes");
    require(!(header.encoding && !header.error.empty()) || header.value("format").has_value(),
            "only a contradiction leaves an encoding beside an error");
    require(header.geometry.width <= maximumSide && header.geometry.height <= maximumSide,
            "sides have a limit");
    for (const auto& [key, value] : header.entries) {
        require(key.find_first_of(" \t\r\n") == std::string_view::npos, "keys hold no blanks");
        require(value.find('\n') == std::string_view::npos, "values end with their line");
        require(value.empty() || (value.front() != ' ' && value.back() != ' ' && value.back() != '\r'),
                "values are trimmed");
        require(header.value(key).has_value(), "every key has a value");
    }
    // The header alone says the same.
    const RawHeader again = parseRawHeader(file.substr(0, header.bodyOffset));
    require(again.entries == header.entries && again.bodyOffset == header.bodyOffset
                && again.encoding == header.encoding && again.geometry == header.geometry
                && again.legacyWordOrder == header.legacyWordOrder && again.error == header.error,
            "what follows a header does not change it");
    return 0;
}
