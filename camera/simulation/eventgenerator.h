#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/frameevents.h"
#include "camera/simulation/noisesource.h"
#include "camera/simulation/pixelarray.h"
#include "camera/simulation/scene.h"
#include "camera/simulation/sensorparameters.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace korvane::simulation {

/// Turns a scene into the event stream of a sensor that watches it. The stream depends on the scene, the seed
/// and the parameters only; clocks and threads have no part in it. One thread at a time.
class EventGenerator
{
public:
    /// A step of the stream, microseconds.
    static constexpr std::uint32_t stepUs = 16000;

    EventGenerator(std::unique_ptr<Scene> watched, const SensorParameters& parameters, std::uint64_t seed);

    /// Takes effect with the next step.
    void setParameters(const SensorParameters& parameters);
    /// The events of the next stepUs microseconds, by time, then row, then column; valid until the next call.
    std::span<const Event2D> generateStep();
    /// The time up to which the stream has been made, microseconds.
    std::uint64_t time() const { return now; }

    const Scene& scene() const { return *watchedScene; }
    const NoiseSource& noise() const { return noiseSource; }
    void setKernels(const PixelKernels& chosen) { pixels.setKernels(chosen); }

private:
    void settle();
    void processRow(int row);
    void processSegment(int row, int segment, int steps, std::span<const NoiseEvent> noise);

    std::unique_ptr<Scene> watchedScene;
    PixelArray pixels;
    NoiseSource noiseSource;
    FrameEvents events;
    std::uint64_t now = 0;
    std::span<const NoiseEvent> frameNoise; // what the rows so far have left
    std::vector<std::uint8_t> rowSteps;
    std::vector<std::uint8_t> settling; // per segment: frames to go before it may be left out
};

} // namespace korvane::simulation
