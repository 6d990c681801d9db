#pragma once

#include "camera/recording/evtencoding.h"
#include "tests/support/evtwriter.h"

#include <cstddef>
#include <cstdint>
#include <random>

/// Makes streams to try decoders on. The same seed gives the same streams on every machine.
class RandomStreams
{
public:
    explicit RandomStreams(std::uint64_t seed) : random(seed) {}

    /// What a camera may send: bursts, idle gaps, vectors, triggers, monitoring words, repeated and glitching
    /// times, now and then a restart of the clock or a wrap. About `words` words.
    evt::Bytes camera(korvane::recording::EvtEncoding encoding, korvane::recording::Geometry geometry,
                      std::size_t words);
    /// Words with any bits.
    evt::Bytes noise(korvane::recording::EvtEncoding encoding, std::size_t words);
    /// Words of known types in any order, values near the limits, times near each other: each stream mixes in
    /// more or less of what is unusual, down to nothing.
    evt::Bytes soup(korvane::recording::EvtEncoding encoding, korvane::recording::Geometry geometry,
                    std::size_t words);
    /// The bytes with some bits flipped, bytes lost or put in, pieces repeated, the end cut off.
    evt::Bytes damaged(const evt::Bytes& bytes);

    korvane::recording::Geometry geometry();
    /// 0 <= value < limit
    std::uint64_t below(std::uint64_t limit) { return limit == 0 ? 0 : random() % limit; }
    /// True once in `times` on the average; never for 0.
    bool oneIn(std::uint64_t times) { return times != 0 && below(times) == 0; }

private:
    evt::Bytes soupOfEvt2(korvane::recording::Geometry geometry, std::size_t words, bool wide);
    evt::Bytes soupOfEvt3(korvane::recording::Geometry geometry, std::size_t words);
    evt::Bytes cameraOfEvt2(korvane::recording::Geometry geometry, std::size_t words, bool wide);
    evt::Bytes cameraOfEvt3(korvane::recording::Geometry geometry, std::size_t words);
    std::uint32_t mask();
    unsigned near(unsigned limit);

    std::mt19937_64 random;
};
