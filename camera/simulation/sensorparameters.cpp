#include "camera/simulation/sensorparameters.h"

#include <algorithm>
#include <cmath>

namespace korvane::simulation {

namespace {

float within(float value, float least, float most, float fallback)
{
    return std::isnan(value) ? fallback : std::clamp(value, least, most);
}

} // namespace

SensorParameters sanitized(const SensorParameters& parameters)
{
    const SensorParameters standard;
    SensorParameters p = parameters;
    p.onThreshold = within(p.onThreshold, 0.01F, 2.0F, standard.onThreshold);
    p.offThreshold = within(p.offThreshold, 0.01F, 2.0F, standard.offThreshold);
    p.thresholdMismatch = within(p.thresholdMismatch, 0.0F, 0.25F, standard.thresholdMismatch);
    p.thresholdJitter = within(p.thresholdJitter, 0.0F, 0.25F, standard.thresholdJitter);
    p.cutoffHz = within(p.cutoffHz, 0.1F, 1e6F, standard.cutoffHz);
    p.highPassHz = within(p.highPassHz, 0.0F, 40.0F, standard.highPassHz);
    p.backgroundRateHz = within(p.backgroundRateHz, 0.0F, 1000.0F, standard.backgroundRateHz);
    p.backgroundOnShare = within(p.backgroundOnShare, 0.0F, 1.0F, standard.backgroundOnShare);
    p.hotPixelShare = within(p.hotPixelShare, 0.0F, 0.1F, standard.hotPixelShare);
    p.hotPixelRateHz = within(p.hotPixelRateHz, 0.0F, 5000.0F, standard.hotPixelRateHz);
    p.refractoryUs = std::clamp<std::uint32_t>(p.refractoryUs, 1, 10000);
    return p;
}

} // namespace korvane::simulation
