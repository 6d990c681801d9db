#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Builds word streams by hand, for tests: what stands in a test is what stands in the file.
namespace evt {

using Bytes = std::vector<std::uint8_t>;

inline void append(Bytes& bytes, std::uint64_t word, unsigned size)
{
    for (unsigned i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
}

// EVT 2.0 words
inline std::uint32_t high2(std::uint32_t value)
{
    return 0x80000000u | value;
}
inline std::uint32_t cd2(unsigned polarity, unsigned bits, unsigned x, unsigned y)
{
    return (polarity << 28) | (bits << 22) | (x << 11) | y;
}
inline std::uint32_t trigger2(unsigned bits, unsigned id, unsigned edge)
{
    return 0xA0000000u | (bits << 22) | (id << 8) | edge;
}
inline std::uint32_t others2(unsigned bits, unsigned subtype)
{
    return 0xE0000000u | (bits << 22) | subtype;
}
inline std::uint32_t continued2(std::uint32_t payload)
{
    return 0xF0000000u | payload;
}

// EVT 2.1 words
inline std::uint64_t high21(std::uint32_t value)
{
    return std::uint64_t(high2(value)) << 32;
}
inline std::uint64_t cd21(unsigned polarity, unsigned bits, unsigned x, unsigned y, std::uint32_t mask)
{
    return (std::uint64_t(cd2(polarity, bits, x, y)) << 32) | mask;
}

inline std::uint64_t trigger21(unsigned bits, unsigned id, unsigned edge)
{
    return std::uint64_t(trigger2(bits, id, edge)) << 32;
}
inline std::uint64_t others21(unsigned bits, unsigned subtype, std::uint32_t payload)
{
    return (std::uint64_t(others2(bits, subtype)) << 32) | payload;
}

// EVT 3.0 words
inline std::uint16_t word3(unsigned type, unsigned value)
{
    return static_cast<std::uint16_t>((type << 12) | value);
}
inline std::uint16_t row3(unsigned y)
{
    return word3(0x0, y);
}
/// The row word of another family of events.
inline std::uint16_t foreignRow3(unsigned y)
{
    return word3(0x1, y);
}
inline std::uint16_t x3(unsigned polarity, unsigned x)
{
    return word3(0x2, (polarity << 11) | x);
}
inline std::uint16_t base3(unsigned polarity, unsigned x)
{
    return word3(0x3, (polarity << 11) | x);
}
inline std::uint16_t vector12(unsigned mask)
{
    return word3(0x4, mask);
}
inline std::uint16_t vector8(unsigned mask)
{
    return word3(0x5, mask);
}
inline std::uint16_t low3(unsigned bits)
{
    return word3(0x6, bits);
}
inline std::uint16_t high3(unsigned value)
{
    return word3(0x8, value);
}
inline std::uint16_t trigger3(unsigned id, unsigned edge)
{
    return word3(0xA, (id << 8) | edge);
}

inline std::uint16_t others3(unsigned subtype)
{
    return word3(0xE, subtype);
}
inline std::uint16_t continued12(unsigned payload)
{
    return word3(0xF, payload);
}
inline std::uint16_t continued4(unsigned payload)
{
    return word3(0x7, payload);
}

inline Bytes words2(const std::vector<std::uint32_t>& words)
{
    Bytes bytes;
    for (const auto word : words)
        append(bytes, word, 4);
    return bytes;
}

inline Bytes words21(const std::vector<std::uint64_t>& words)
{
    Bytes bytes;
    for (const auto word : words)
        append(bytes, word, 8);
    return bytes;
}

inline Bytes words3(const std::vector<std::uint16_t>& words)
{
    Bytes bytes;
    for (const auto word : words)
        append(bytes, word, 2);
    return bytes;
}

/// Swaps the halves of every 64-bit word.
inline Bytes legacy(const Bytes& bytes)
{
    Bytes out(bytes.size() / 8 * 8);
    for (std::size_t at = 0; at < out.size(); at += 8) {
        std::copy_n(bytes.data() + at + 4, 4, out.data() + at);
        std::copy_n(bytes.data() + at, 4, out.data() + at + 4);
    }
    return out;
}

inline bool writeFile(const QString& path, const std::string& header, const Bytes& body)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly)
        && file.write(QByteArray::fromStdString(header)) == static_cast<qint64>(header.size())
        && file.write(reinterpret_cast<const char*>(body.data()), static_cast<qint64>(body.size()))
        == static_cast<qint64>(body.size());
}

} // namespace evt
