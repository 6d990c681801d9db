#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace korvane::simulation {

/// A small generator whose numbers are the same with every standard library, unlike those of <random>'s
/// distributions. SplitMix64 (Steele, Lea, Flood 2014). One thread at a time.
class Random
{
public:
    explicit Random(std::uint64_t seed) : state(seed) {}

    std::uint64_t next()
    {
        state += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    /// In [0, 1).
    double uniform() { return static_cast<double>(next() >> 11U) * 0x1.0p-53; }
    double uniform(double from, double to) { return from + (to - from) * uniform(); }
    /// In [0, count); `count` is positive.
    int below(int count) { return static_cast<int>(uniform() * count); }
    bool chance(double probability) { return uniform() < probability; }
    /// Exponentially distributed with mean 1.
    double exponential() { return -std::log1p(-uniform()); }
    /// Normally distributed with mean 0 and standard deviation 1 (Box-Muller).
    double gaussian()
    {
        const double radius = std::sqrt(2.0 * exponential());
        return radius * std::cos(2.0 * std::numbers::pi * uniform());
    }

private:
    std::uint64_t state;
};

/// 32 random bits for the price of a multiplication, good enough for the noise of single events (Knuth's
/// linear congruence). A plain value.
class QuickRandom
{
public:
    explicit QuickRandom(std::uint64_t seed) : state(seed) {}

    std::uint32_t next()
    {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(state >> 32U);
    }

private:
    std::uint64_t state;
};

} // namespace korvane::simulation
