#pragma once

#include <cstddef>
#include <cstdint>

namespace korvane::recording {

/// The word encodings of event streams, with the word orders that EVT 2.1 comes in.
enum class EvtEncoding : std::uint8_t {
    Evt2, ///< 32-bit words
    Evt21, ///< 64-bit words, plain little-endian
    Evt21Legacy, ///< 64-bit words as two 32-bit halves, the high half first
    Evt3, ///< 16-bit words, stateful
};

/// Bytes a word takes.
constexpr std::size_t wordSize(EvtEncoding encoding)
{
    switch (encoding) {
    case EvtEncoding::Evt2:
        return 4;
    case EvtEncoding::Evt21:
    case EvtEncoding::Evt21Legacy:
        return 8;
    case EvtEncoding::Evt3:
        break;
    }
    return 2;
}

/// "EVT 2.0" and so on, for logs.
constexpr const char* encodingName(EvtEncoding encoding)
{
    switch (encoding) {
    case EvtEncoding::Evt2:
        return "EVT 2.0";
    case EvtEncoding::Evt21:
        return "EVT 2.1";
    case EvtEncoding::Evt21Legacy:
        return "EVT 2.1 (legacy word order)";
    case EvtEncoding::Evt3:
        break;
    }
    return "EVT 3.0";
}

/// Coordinates in a word have 11 bits.
constexpr std::uint16_t maximumSide = 2048;

/// Size of a sensor in pixels.
struct Geometry
{
    std::uint16_t width = 0;
    std::uint16_t height = 0;

    bool isValid() const { return width > 0 && height > 0; }
    friend bool operator==(const Geometry&, const Geometry&) = default;
};

} // namespace korvane::recording
