#pragma once

#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/eventstream.h"
#include "camera/simulation/handover.h"
#include "camera/simulation/scene.h"
#include "camera/simulation/sensorparameters.h"

#include <cstdint>
#include <memory>

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

    SensorParameters parameters() const { return settings->latest(); }
    /// Takes effect as a whole with the next step.
    void setParameters(const SensorParameters& parameters) { settings->set(sanitized(parameters)); }
    /// The way to set them that may outlive the stream; what goes through it is sanitized.
    std::shared_ptr<Handover<SensorParameters>> parameterHandover() const { return settings; }

private:
    EventGenerator generator;
    const std::shared_ptr<Handover<SensorParameters>> settings;
    SensorParameters current;
};

} // namespace korvane::simulation
