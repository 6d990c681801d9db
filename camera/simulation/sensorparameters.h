#pragma once

#include <cstdint>

namespace korvane::simulation {

/// What a simulated change detector does with the light that falls on it. Contrasts are differences of the
/// natural logarithm of intensity. The defaults are those of a typical 1280 x 720 sensor in daylight. A plain
/// value.
struct SensorParameters
{
    float onThreshold = 0.25F; ///< contrast that makes an ON event, 0.01 to 2
    float offThreshold = 0.25F; ///< contrast that makes an OFF event, 0.01 to 2
    float thresholdMismatch
        = 0.03F; ///< fixed spread from pixel to pixel, standard deviation over threshold, 0 to 0.25
    float thresholdJitter
        = 0.01F; ///< spread from event to event, standard deviation over threshold, 0 to 0.25
    float cutoffHz = 400.0F; ///< low-pass corner of a pixel that sees mid-grey; proportional to intensity
    float highPassHz = 0.0F; ///< high-pass corner, 0 to 40: slow changes below it are forgotten; 0 is off
    float backgroundRateHz = 0.1F; ///< noise events per pixel and second
    float backgroundOnShare = 0.65F; ///< share of ON among noise events: leakage pulls the reference down
    float hotPixelShare = 2e-5F; ///< share of pixels that fire without cause, 0 to 0.1
    float hotPixelRateHz = 80.0F; ///< median rate of a hot pixel; rates spread over a decade
    std::uint32_t refractoryUs
        = 200; ///< a pixel is blind for so long after an event, 1 to 10000 microseconds

    friend bool operator==(const SensorParameters&, const SensorParameters&) = default;
};

/// The same parameters with every member moved into its range; what is not a number becomes the default.
SensorParameters sanitized(const SensorParameters& parameters);

} // namespace korvane::simulation
