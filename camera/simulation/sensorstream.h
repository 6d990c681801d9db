#pragma once

#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/eventstream.h"
#include "camera/simulation/scene.h"
#include "camera/simulation/sensorparameters.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace korvane::simulation {

/// The stream of a simulated sensor. The parameters may be read and set from any thread.
class SensorStream : public EventStream
{
public:
    SensorStream(std::unique_ptr<Scene> watched, const SensorParameters& parameters, std::uint64_t seed);

    recording::Geometry geometry() const override;
    std::uint64_t time() const override { return generator.time(); }
    std::uint64_t nextTime() const override { return generator.time() + EventGenerator::stepUs; }
    StreamStep generateStep() override;

    SensorParameters parameters() const;
    /// Takes effect as a whole with the next step.
    void setParameters(const SensorParameters& parameters);

private:
    EventGenerator generator;
    mutable std::mutex mutex;
    SensorParameters current; // guarded by mutex
    std::optional<SensorParameters> changed; // guarded by mutex
};

} // namespace korvane::simulation
