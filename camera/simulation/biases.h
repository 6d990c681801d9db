#pragma once

#include "camera/simulation/handover.h"
#include "camera/simulation/parametertool.h"
#include "camera/simulation/sensorparameters.h"

#include <memory>

namespace korvane::simulation {

/// Offsets of a sensor's biases from where its maker set them. A plain value.
struct Biases
{
    // The least and greatest offsets.
    static constexpr int leastThreshold = -60;
    static constexpr int greatestThreshold = 200;
    static constexpr int leastLowPass = -60;
    static constexpr int greatestLowPass = 60;
    static constexpr int leastHighPass = 0;
    static constexpr int greatestHighPass = 100;
    static constexpr int leastRefractory = -60;
    static constexpr int greatestRefractory = 100;

    int diffOn = 0; ///< threshold of ON events, percent
    int diffOff = 0; ///< threshold of OFF events, percent
    int lowPass = 0; ///< corner of the low-pass, 20 for each doubling
    int highPass = 0; ///< corner of the high-pass; 0 is off, 100 is 40 Hz
    int refractory = 0; ///< refractory time, 20 for each doubling

    friend bool operator==(const Biases&, const Biases&) = default;
};

/// What a sensor that is set to `base` does under these biases. With the corner of the low-pass shot noise
/// gets through, which thresholds hold back in their polarity; leakage, which makes ON events only, comes the
/// more often the lower their threshold, and is forgotten by the high-pass. `base` itself without offsets.
SensorParameters biased(const SensorParameters& base, const Biases& biases);

/// The tool that sets the biases of a sensor that is set to `base`.
std::shared_ptr<ParameterTool> makeBiasesTool(const SensorParameters& base,
                                              std::shared_ptr<Handover<SensorParameters>> sensor);

} // namespace korvane::simulation
