#pragma once

#include <cstdint>
#include <vector>

namespace korvane::simulation {

/// A square of smooth noise that repeats in both directions, for the grain of walls, roads and clouds.
/// Immutable once made, any thread.
class NoiseTile
{
public:
    static constexpr int size = 512;

    /// Sums `octaves` layers of value noise, the coarsest with cells of `cell` values (a power of two), each
    /// next one twice as fine and `persistence` times as strong. The sum has mean 0 and standard deviation 1.
    NoiseTile(std::uint64_t seed, int cell, int octaves, float persistence);

    float at(int x, int y) const
    {
        return values[(static_cast<std::size_t>(y) % size) * size + static_cast<std::size_t>(x) % size];
    }

private:
    std::vector<float> values;
};

} // namespace korvane::simulation
