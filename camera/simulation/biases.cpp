#include "camera/simulation/biases.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace korvane::simulation {

namespace {

const std::string diffOn = "bias_diff_on";
const std::string diffOff = "bias_diff_off";
const std::string lowPass = "bias_low_pass";
const std::string highPass = "bias_high_pass";
const std::string refractory = "bias_refractory";

// Half the square of how many standard deviations of shot noise a threshold is, without offsets.
constexpr double noiseMargin = 3.0;
// A corner of the high-pass above this, in Hz, forgets leakage faster than it builds up.
constexpr double leakageCorner = 0.1;
// A pixel that does nothing but make noise, in Hz.
constexpr double mostNoise = 5.0;
constexpr double greatestHighPassHz = 40.0;

double octaves(int offset)
{
    return std::exp2(offset / 20.0);
}

double percent(int offset)
{
    return 1.0 + offset / 100.0;
}

double highPassCorner(int offset)
{
    const auto grown = [](int value) { return std::exp2(value / 15.0) - 1.0; };
    return greatestHighPassHz * grown(offset) / grown(Biases::greatestHighPass);
}

/// How much more often noise of a bandwidth crosses a threshold (Rice's rate of crossings); the power of shot
/// noise goes with the bandwidth.
double crossings(double threshold, double bandwidth)
{
    return bandwidth * std::exp(noiseMargin * (1.0 - threshold * threshold / bandwidth));
}

} // namespace

SensorParameters biased(const SensorParameters& base, const Biases& biases)
{
    if (biases == Biases())
        return base;
    const double on = percent(biases.diffOn);
    const double off = percent(biases.diffOff);
    const double bandwidth = octaves(biases.lowPass);
    const double forgetting = static_cast<double>(base.highPassHz) + highPassCorner(biases.highPass);

    SensorParameters p = base;
    p.onThreshold = static_cast<float>(static_cast<double>(base.onThreshold) * on);
    p.offThreshold = static_cast<float>(static_cast<double>(base.offThreshold) * off);
    p.cutoffHz = static_cast<float>(static_cast<double>(base.cutoffHz) * bandwidth);
    p.highPassHz = static_cast<float>(forgetting);
    p.refractoryUs = static_cast<std::uint32_t>(std::lround(base.refractoryUs * octaves(biases.refractory)));

    const double onNoise
        = static_cast<double>(base.backgroundRateHz) * static_cast<double>(base.backgroundOnShare);
    const double offNoise = static_cast<double>(base.backgroundRateHz) - onNoise;
    const double leakage = std::max(0.0, onNoise - offNoise);
    const double passed = 1.0 / (1.0 + forgetting / static_cast<double>(p.cutoffHz));
    const double remembered = 1.0 / (1.0 + std::pow(forgetting / leakageCorner, 2.0));
    const double onRate = (onNoise - leakage) * crossings(on, bandwidth) * passed + leakage / on * remembered;
    const double offRate = offNoise * crossings(off, bandwidth) * passed;
    const double rate = onRate + offRate;
    p.backgroundRateHz = static_cast<float>(std::min(rate, mostNoise));
    p.backgroundOnShare = rate > 0 ? static_cast<float>(onRate / rate) : base.backgroundOnShare;
    // A hot pixel is one that leaks.
    p.hotPixelRateHz = static_cast<float>(static_cast<double>(base.hotPixelRateHz) / on);
    return sanitized(p);
}

std::shared_ptr<ParameterTool> makeBiasesTool(const SensorParameters& base,
                                              std::shared_ptr<Handover<SensorParameters>> sensor)
{
    using Integer = ToolParameter::Integer;
    std::vector<ToolParameter> table{
        {diffOn,
         QT_TRANSLATE_NOOP("CameraTools",
                           "Contrast threshold of ON events. Higher: fewer ON events and less noise."),
         Integer{Biases::leastThreshold, Biases::greatestThreshold, 0},
         {}},
        {diffOff,
         QT_TRANSLATE_NOOP("CameraTools",
                           "Contrast threshold of OFF events. Higher: fewer OFF events and less noise."),
         Integer{Biases::leastThreshold, Biases::greatestThreshold, 0},
         {}},
        {lowPass,
         QT_TRANSLATE_NOOP("CameraTools",
                           "Bandwidth of the pixels. Higher: faster response. Lower: less noise."),
         Integer{Biases::leastLowPass, Biases::greatestLowPass, 0},
         {}},
        {highPass,
         QT_TRANSLATE_NOOP("CameraTools", "Suppresses slow changes and background activity. 0 is off."),
         Integer{Biases::leastHighPass, Biases::greatestHighPass, 0},
         {}},
        {refractory,
         QT_TRANSLATE_NOOP("CameraTools",
                           "Dead time of a pixel after an event. Higher: fewer events per edge."),
         Integer{Biases::leastRefractory, Biases::greatestRefractory, 0},
         {}},
    };
    return std::make_shared<ParameterTool>(std::move(table),
                                           [base, sensor = std::move(sensor)](const ToolValues& wanted) {
                                               Biases biases;
                                               biases.diffOn = wanted.integer(diffOn);
                                               biases.diffOff = wanted.integer(diffOff);
                                               biases.lowPass = wanted.integer(lowPass);
                                               biases.highPass = wanted.integer(highPass);
                                               biases.refractory = wanted.integer(refractory);
                                               sensor->set(biased(base, biases));
                                               return true;
                                           });
}

} // namespace korvane::simulation
