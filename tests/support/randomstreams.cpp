#include "tests/support/randomstreams.h"

#include <algorithm>
#include <array>
#include <initializer_list>

using korvane::recording::EvtEncoding;
using korvane::recording::Geometry;

Geometry RandomStreams::geometry()
{
    constexpr std::array<Geometry, 9> sensors{{{1280, 720},
                                               {640, 480},
                                               {304, 240},
                                               {320, 320},
                                               {2048, 2048},
                                               {2041, 3},
                                               {1, 1},
                                               {33, 40},
                                               {1279, 2047}}};
    return sensors.at(below(sensors.size()));
}

/// Masks with few bits, many, all, none.
std::uint32_t RandomStreams::mask()
{
    const auto any = static_cast<std::uint32_t>(random());
    switch (below(8)) {
    case 0:
        return any;
    case 1:
        return 0;
    case 2:
        return 0xFFFFFFFF;
    case 3:
        return any & static_cast<std::uint32_t>(random()) & static_cast<std::uint32_t>(random());
    default:
        return (1u << below(32)) | (1u << below(32));
    }
}

/// A coordinate, mostly inside, sometimes about the limit.
unsigned RandomStreams::near(unsigned limit)
{
    if (oneIn(16))
        return static_cast<unsigned>(std::min<std::uint64_t>(2047, limit - 1 - below(std::min(limit, 40u))));
    return static_cast<unsigned>(below(limit));
}

evt::Bytes RandomStreams::noise(EvtEncoding encoding, std::size_t words)
{
    evt::Bytes bytes(words * korvane::recording::wordSize(encoding));
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(random() >> 13);
    return bytes;
}

evt::Bytes RandomStreams::soup(EvtEncoding encoding, Geometry geometry, std::size_t words)
{
    switch (encoding) {
    case EvtEncoding::Evt2:
        return soupOfEvt2(geometry, words, false);
    case EvtEncoding::Evt21:
        return soupOfEvt2(geometry, words, true);
    case EvtEncoding::Evt21Legacy:
        return evt::legacy(soupOfEvt2(geometry, words, true));
    case EvtEncoding::Evt3:
        break;
    }
    return soupOfEvt3(geometry, words);
}

evt::Bytes RandomStreams::soupOfEvt2(Geometry geometry, std::size_t words, bool wide)
{
    evt::Bytes bytes;
    const auto add = [&](std::uint32_t upper, std::uint32_t lower) {
        evt::append(bytes, wide ? std::uint64_t(upper) << 32 | lower : upper, wide ? 8 : 4);
    };
    const std::uint64_t unusual = std::array<std::uint64_t, 4>{0, 1000, 100, 10}.at(below(4));
    const std::uint64_t outside = std::array<std::uint64_t, 4>{0, 0, 300, 20}.at(below(4));
    const std::uint64_t backwards = std::array<std::uint64_t, 4>{0, 500, 50, 3}.at(below(4));
    const std::uint64_t timeEvery = std::array<std::uint64_t, 3>{200, 20, 4}.at(below(3));
    constexpr std::uint32_t range = 1u << 28;
    auto high = static_cast<std::uint32_t>(oneIn(4) ? range - 1 - below(50) : below(range));
    unsigned low = 0;
    if (!oneIn(5))
        add(evt::high2(high), 0);
    for (std::size_t i = 0; i < words; ++i) {
        if (oneIn(timeEvery)) {
            if (oneIn(2)) { // the next value
                high = (high + 1) % range;
                low = 0;
            } else if (oneIn(unusual / 4)) {
                constexpr std::array<int, 14> steps{-1,  -2,  -155, -156, -157,   -158,   -159,
                                                    156, 157, 158,  5000, -50000, 900000, 7};
                high = (high + static_cast<std::uint32_t>(steps.at(below(steps.size()))) + range) % range;
            } else if (oneIn(unusual))
                high = static_cast<std::uint32_t>(below(range));
            add(evt::high2(high), 0);
        } else if (oneIn(unusual)) {
            switch (below(4)) {
            case 0:
                add(evt::trigger2(static_cast<unsigned>(below(64)), static_cast<unsigned>(below(32)),
                                  static_cast<unsigned>(below(2))),
                    0);
                break;
            case 1:
                add(evt::others2(low, static_cast<unsigned>(below(65536))),
                    static_cast<std::uint32_t>(random()));
                break;
            case 2:
                add(evt::continued2(static_cast<std::uint32_t>(below(1u << 28))), 0);
                break;
            default:
                add(static_cast<std::uint32_t>(random()), mask());
            }
        } else {
            if (oneIn(backwards))
                low = static_cast<unsigned>(below(64));
            else if (oneIn(8))
                low = std::min(63u, low + static_cast<unsigned>(below(8)));
            const unsigned x = oneIn(outside) ? static_cast<unsigned>(below(2048)) : near(geometry.width);
            const unsigned y = oneIn(outside) ? static_cast<unsigned>(below(2048)) : near(geometry.height);
            add(evt::cd2(static_cast<unsigned>(below(2)), low, x, y), mask());
        }
    }
    return bytes;
}

evt::Bytes RandomStreams::soupOfEvt3(Geometry geometry, std::size_t words)
{
    evt::Bytes bytes;
    const auto add = [&bytes](std::uint16_t word) { evt::append(bytes, word, 2); };
    const std::uint64_t unusual = std::array<std::uint64_t, 4>{0, 1000, 100, 10}.at(below(4));
    const std::uint64_t outside = std::array<std::uint64_t, 4>{0, 0, 300, 20}.at(below(4));
    const std::uint64_t backwards = std::array<std::uint64_t, 4>{0, 500, 50, 3}.at(below(4));
    const std::uint64_t timeEvery = std::array<std::uint64_t, 3>{400, 40, 6}.at(below(3));
    const bool vectors = !oneIn(3);
    const bool singles = !vectors || !oneIn(3);
    auto high = static_cast<unsigned>(below(4096));
    unsigned low = 0;
    if (!oneIn(5)) {
        add(evt::high3(high));
        add(evt::row3(near(geometry.height)));
    }
    while (bytes.size() < 2 * words) {
        if (oneIn(timeEvery)) {
            if (oneIn(4)) {
                high = (high + 1) % 4096;
                low = 0;
            } else if (oneIn(unusual / 4)) {
                constexpr std::array<int, 12> steps{-1, -2, -3, -4, 2, 3, 4, 2047, 2048, 2049, -500, 700};
                high = (high + static_cast<unsigned>(steps.at(below(steps.size())) + 4096)) % 4096;
            } else if (oneIn(unusual))
                high = static_cast<unsigned>(below(4096));
            add(evt::high3(high));
        } else if (oneIn(unusual)) {
            switch (below(6)) {
            case 0:
                add(evt::trigger3(static_cast<unsigned>(below(16)), static_cast<unsigned>(below(2))));
                break;
            case 1:
                add(evt::others3(static_cast<unsigned>(below(4096))));
                add(evt::continued12(static_cast<unsigned>(below(4096))));
                if (oneIn(2))
                    add(evt::continued4(static_cast<unsigned>(below(4096))));
                break;
            case 2:
                add(evt::foreignRow3(static_cast<unsigned>(below(4096))));
                break;
            case 3:
                add(0x9999);
                break;
            case 4:
                add(evt::row3(0x800u | near(geometry.height)));
                break;
            default:
                add(static_cast<std::uint16_t>(random()));
            }
        } else if (oneIn(6)) {
            if (oneIn(backwards))
                low = static_cast<unsigned>(below(4096));
            else
                low = std::min(4095u, low + static_cast<unsigned>(below(20)));
            add(evt::low3(low));
        } else if (oneIn(6)) {
            add(evt::row3(oneIn(outside) ? static_cast<unsigned>(below(2048)) : near(geometry.height)));
        } else if (singles && oneIn(2)) {
            add(evt::x3(static_cast<unsigned>(below(2)),
                        oneIn(outside) ? static_cast<unsigned>(below(2048)) : near(geometry.width)));
        } else if (vectors) {
            const unsigned room
                = geometry.width > 32 && !oneIn(outside) ? geometry.width - 32u : geometry.width;
            if (!oneIn(8))
                add(evt::base3(static_cast<unsigned>(below(2)), near(room)));
            for (auto n = below(4); n-- > 0;)
                add(oneIn(3) ? evt::vector8(mask() & 0xFFF) : evt::vector12(mask() & 0xFFF));
        }
    }
    return bytes;
}

evt::Bytes RandomStreams::camera(EvtEncoding encoding, Geometry geometry, std::size_t words)
{
    switch (encoding) {
    case EvtEncoding::Evt2:
        return cameraOfEvt2(geometry, words, false);
    case EvtEncoding::Evt21:
        return cameraOfEvt2(geometry, words, true);
    case EvtEncoding::Evt21Legacy:
        return evt::legacy(cameraOfEvt2(geometry, words, true));
    case EvtEncoding::Evt3:
        break;
    }
    return cameraOfEvt3(geometry, words);
}

evt::Bytes RandomStreams::cameraOfEvt2(Geometry geometry, std::size_t words, bool wide)
{
    evt::Bytes bytes;
    const auto add = [&](std::uint32_t upper, std::uint32_t lower) {
        evt::append(bytes, wide ? std::uint64_t(upper) << 32 | lower : upper, wide ? 8 : 4);
    };
    const std::uint64_t pace = std::array<std::uint64_t, 4>{2, 2, 40, 2000}.at(below(4));
    const std::uint64_t span = std::uint64_t(1) << 34;
    std::uint64_t time = oneIn(4) ? span - below(100000) : below(span);
    std::uint64_t told = ~std::uint64_t(0);
    const std::size_t size = wide ? 8 : 4;
    while (bytes.size() < words * size) {
        time += below(pace);
        if (oneIn(3000))
            time += below(20'000'000); // an idle gap that was cut out
        if (oneIn(6000))
            time -= std::min<std::uint64_t>(time, below(12000)); // between sources
        if (oneIn(20000))
            time = below(1'000'000); // the camera was switched on again
        if (time / 16 != told) {
            told = time / 16;
            add(evt::high2(static_cast<std::uint32_t>((time >> 6) & 0xFFFFFFF)), 0);
        }
        const auto low = static_cast<unsigned>(time & 63);
        if (oneIn(500)) {
            add(evt::trigger2(low, static_cast<unsigned>(below(2)), static_cast<unsigned>(below(2))), 0);
        } else if (oneIn(400)) {
            add(evt::others2(low, 0x14), 0xF0000000 | static_cast<std::uint32_t>(below(1u << 22)));
            if (!wide)
                add(evt::continued2(static_cast<std::uint32_t>(below(1u << 22))), 0);
        } else {
            const unsigned x = static_cast<unsigned>(below(geometry.width)) & (wide ? ~31u : ~0u);
            add(evt::cd2(static_cast<unsigned>(below(2)), low, x,
                         static_cast<unsigned>(below(geometry.height))),
                x + 32 > geometry.width ? 1u : mask());
        }
    }
    return bytes;
}

evt::Bytes RandomStreams::cameraOfEvt3(Geometry geometry, std::size_t words)
{
    evt::Bytes bytes;
    const auto add = [&bytes](std::uint16_t word) { evt::append(bytes, word, 2); };
    const std::uint64_t pace = std::array<std::uint64_t, 4>{2, 2, 40, 2000}.at(below(4));
    const bool vectors = oneIn(2);
    std::uint64_t time = oneIn(4) ? (1u << 24) - below(100000) : below(1u << 24);
    std::uint64_t told = ~std::uint64_t(0);
    unsigned high = 4096;
    unsigned low = 4096;
    unsigned row = 4096;
    while (bytes.size() < 2 * words) {
        time += below(pace);
        if (oneIn(3000))
            time += below(8'000'000);
        if (oneIn(6000))
            time -= std::min<std::uint64_t>(time, below(12000));
        if (oneIn(20000))
            time = below(1'000'000);
        const auto newHigh = static_cast<unsigned>((time >> 12) & 0xFFF);
        if (newHigh != high || time / 16 != told) {
            high = newHigh;
            told = time / 16;
            add(evt::high3(high));
        }
        const auto newLow = static_cast<unsigned>(time & 0xFFF);
        if (oneIn(300) && newLow < 4080) {
            add(evt::low3(newLow + 11)); // ahead, and no event with it
            low = newLow + 11;
        }
        if (newLow != low) {
            low = newLow;
            add(evt::low3(low));
        }
        if (oneIn(500)) {
            add(evt::trigger3(static_cast<unsigned>(below(8)), static_cast<unsigned>(below(2))));
            continue;
        }
        if (oneIn(400)) {
            for (const std::uint16_t word :
                 {evt::others3(0x19), evt::continued12(0x123), evt::continued12(0x456)})
                add(word);
            if (oneIn(2))
                add(evt::continued4(7));
        }
        const auto newRow = oneIn(3) || row == 4096 ? static_cast<unsigned>(below(geometry.height)) : row;
        if (newRow != row) {
            row = newRow;
            add(evt::row3(row));
        }
        const auto x = static_cast<unsigned>(below(geometry.width));
        const auto polarity = static_cast<unsigned>(below(2));
        if (vectors && oneIn(2) && (x & ~31u) + 32 <= geometry.width) {
            add(evt::base3(polarity, x & ~31u));
            unsigned end = x & ~31u;
            do {
                const std::uint32_t pixels = mask();
                add(evt::vector12(pixels & 0xFFF));
                add(evt::vector12(pixels >> 12 & 0xFFF));
                add(evt::vector8(pixels >> 24));
                end += 32;
            } while (oneIn(20) && end + 32 <= geometry.width);
        } else {
            add(evt::x3(polarity, x));
        }
    }
    return bytes;
}

evt::Bytes RandomStreams::damaged(const evt::Bytes& bytes)
{
    evt::Bytes out = bytes;
    const auto somewhere = [&] { return out.begin() + static_cast<std::ptrdiff_t>(below(out.size())); };
    for (auto n = 1 + below(8); n-- > 0 && !out.empty();) {
        const auto at = somewhere();
        switch (below(6)) {
        case 0:
        case 1:
            *at = static_cast<std::uint8_t>(*at ^ (1u << below(8)));
            break;
        case 2:
            out.erase(at,
                      at + std::min<std::ptrdiff_t>(out.end() - at, static_cast<std::ptrdiff_t>(below(9))));
            break;
        case 3:
            out.insert(at, static_cast<std::uint8_t>(random()));
            break;
        case 4: {
            const evt::Bytes piece(at, at + std::min<std::ptrdiff_t>(out.end() - at, 40));
            out.insert(somewhere(), piece.begin(), piece.end());
            break;
        }
        default:
            std::fill(at,
                      at + std::min<std::ptrdiff_t>(out.end() - at, static_cast<std::ptrdiff_t>(below(100))),
                      oneIn(2) ? std::uint8_t(0) : std::uint8_t(0xFF));
        }
    }
    if (oneIn(3))
        out.resize(out.size() - std::min<std::size_t>(out.size(), below(17)));
    return out;
}
