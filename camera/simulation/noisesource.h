#pragma once

#include "camera/simulation/random.h"
#include "camera/simulation/sensorparameters.h"

#include <cstdint>
#include <span>
#include <vector>

namespace korvane::simulation {

/// An event without a cause in the scene.
struct NoiseEvent
{
    std::uint32_t pixel = 0; ///< row-major index
    std::uint16_t time = 0; ///< microseconds from the start of the frame
    std::uint8_t polarity = 0;
};

/// Background activity and hot pixels: every pixel is a Poisson process of its own. The work grows with the
/// number of events, not of pixels. One thread at a time.
class NoiseSource
{
public:
    NoiseSource(std::uint32_t pixelCount, std::uint64_t seed);

    void setParameters(const SensorParameters& parameters);
    /// The noise of the next `duration` (at most 65535) microseconds, ordered by pixel and then by time;
    /// valid until the next call.
    std::span<const NoiseEvent> nextFrame(std::uint32_t duration);
    /// Row-major indices of the hot pixels, ascending.
    std::span<const std::uint32_t> hotPixels() const { return hot; }

private:
    void chooseHotPixels(const SensorParameters& parameters);
    std::uint8_t drawPolarity();

    std::uint32_t pixels;
    std::uint64_t seed;
    Random random;
    double backgroundRate = 0; // events per pixel and microsecond
    double onShare = 0;
    float hotShare = 0;
    float hotRate = 0;
    std::vector<std::uint32_t> hot;
    std::vector<double> hotRates; // events per microsecond
    std::vector<NoiseEvent> background;
    std::vector<NoiseEvent> fromHot;
    std::vector<NoiseEvent> merged;
};

} // namespace korvane::simulation
