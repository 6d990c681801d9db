#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/pixelkernels.h"
#include "camera/simulation/scene.h"
#include "camera/simulation/sensorparameters.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace korvane::simulation::testing {

/// A scene given by a formula: the level (natural logarithm of intensity) at a column, a row and a time in
/// seconds.
class FormulaScene : public Scene
{
public:
    using Formula = std::function<double(double column, double row, double seconds)>;

    FormulaScene(int width, int height, int stepsPerFrame, Formula formula)
        : Scene(width, height), steps(stepsPerFrame), level(std::move(formula))
    {
    }

    void beginFrame(std::uint64_t frameStart, std::uint32_t frameDuration) override
    {
        start = static_cast<double>(frameStart) * 1e-6;
        duration = frameDuration * 1e-6;
    }
    void beginRow(int chosen, std::uint8_t* perSegment) override
    {
        row = chosen;
        std::fill_n(perSegment, segments(), static_cast<std::uint8_t>(steps));
    }
    void sample(int segment, int point, std::int16_t* out) override
    {
        const double time = start + duration * point / framePoints;
        for (int i = 0; i < segmentWidth; ++i) {
            const double value = level(segment * segmentWidth + i, row, time) * logUnits;
            out[i] = static_cast<std::int16_t>(std::lround(std::clamp(value, -8191.0, 8191.0)));
        }
    }

private:
    int steps;
    Formula level;
    int row = 0;
    double start = 0;
    double duration = 0;
};

inline std::unique_ptr<Scene> stillScene(int width = 128, int height = 64)
{
    return std::make_unique<FormulaScene>(width, height, 0, [](double, double, double) { return 0.0; });
}

/// A bright field that grows to the right: ln of its brightness over the dark side is `contrast`, its edge is
/// three pixels wide.
inline std::unique_ptr<Scene> edgeScene(double contrast, double pixelsPerSecond)
{
    return std::make_unique<FormulaScene>(128, 64, 8, [=](double column, double, double seconds) {
        const double place = -4.0 + pixelsPerSecond * seconds;
        return contrast * (std::clamp((place - column) / 3.0, -0.5, 0.5));
    });
}

/// A sensor without any of the imperfections that would hide what a test looks for.
inline SensorParameters idealSensor()
{
    SensorParameters p;
    p.thresholdMismatch = 0;
    p.thresholdJitter = 0;
    p.cutoffHz = 1e6F;
    p.backgroundRateHz = 0;
    p.hotPixelShare = 0;
    p.refractoryUs = 1;
    return p;
}

inline std::vector<Event2D> generate(EventGenerator& generator, double seconds)
{
    std::vector<Event2D> all;
    const auto end = static_cast<std::uint64_t>(seconds * 1e6);
    while (generator.time() < end) {
        const auto step = generator.generateStep();
        all.insert(all.end(), step.begin(), step.end());
    }
    return all;
}

inline std::vector<Event2D> generate(std::unique_ptr<Scene> scene, const SensorParameters& parameters,
                                     double seconds, std::uint64_t seed = 1)
{
    EventGenerator generator(std::move(scene), parameters, seed);
    return generate(generator, seconds);
}

} // namespace korvane::simulation::testing
