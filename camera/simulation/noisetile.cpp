#include "camera/simulation/noisetile.h"

#include "camera/simulation/random.h"

#include <algorithm>
#include <cmath>

namespace korvane::simulation {

NoiseTile::NoiseTile(std::uint64_t seed, int cell, int octaves, float persistence)
    : values(static_cast<std::size_t>(size) * size)
{
    Random random(seed);
    float strength = 1.0F;
    std::vector<float> lattice;
    for (int octave = 0; octave < octaves && cell >= 1; ++octave, cell /= 2, strength *= persistence) {
        const auto cells = static_cast<std::size_t>(size / cell);
        lattice.resize(cells * cells);
        for (float& value : lattice)
            value = static_cast<float>(random.uniform(-1.0, 1.0)) * strength;
        const auto step = static_cast<std::size_t>(cell);
        for (std::size_t y = 0; y < size; ++y) {
            const float* above = lattice.data() + y / step * cells;
            const float* below = lattice.data() + (y / step + 1) % cells * cells;
            const float fy = static_cast<float>(y % step) / static_cast<float>(step);
            const float sy = fy * fy * (3.0F - 2.0F * fy);
            for (std::size_t cellX = 0; cellX < cells; ++cellX) {
                const std::size_t nextX = (cellX + 1) % cells;
                const float left = above[cellX] + (below[cellX] - above[cellX]) * sy;
                const float right = above[nextX] + (below[nextX] - above[nextX]) * sy;
                float* out = values.data() + y * size + cellX * step;
                for (std::size_t i = 0; i < step; ++i) {
                    const float fx = static_cast<float>(i) / static_cast<float>(step);
                    out[i] += left + (right - left) * fx * fx * (3.0F - 2.0F * fx);
                }
            }
        }
    }
    double sum = 0;
    double squares = 0;
    for (const float value : values) {
        sum += static_cast<double>(value);
        squares += static_cast<double>(value) * static_cast<double>(value);
    }
    const double mean = sum / static_cast<double>(values.size());
    const double deviation = std::sqrt(squares / static_cast<double>(values.size()) - mean * mean);
    for (float& value : values)
        value = static_cast<float>((static_cast<double>(value) - mean) / std::max(deviation, 1e-6));
}

} // namespace korvane::simulation
