#pragma once

#include "camera/simulation/scene.h"
#include "camera/simulation/sensorparameters.h"
#include "camera/simulation/sensorstream.h"
#include "camera/simulation/simulatedcameraconfig.h"
#include "camera/simulation/streameddvscamera.h"

#include <memory>

namespace korvane::simulation {

/// A camera without hardware: a simulated sensor that watches a scene. Its parameters may be read and set
/// from any thread.
class SimulatedDvsCamera : public StreamedDvsCamera
{
public:
    /// Building the scene takes a fifth of a second.
    explicit SimulatedDvsCamera(const SimulatedCameraConfig& config);
    SimulatedDvsCamera(const SimulatedCameraConfig& config, std::unique_ptr<Scene> watched);

    int start() override;

    SensorParameters sensorParameters() const { return sensor.parameters(); }
    /// Takes effect as a whole with the next step of the stream.
    void setSensorParameters(const SensorParameters& parameters) { sensor.setParameters(parameters); }

private:
    SimulatedDvsCamera(const SimulatedCameraConfig& config, std::unique_ptr<SensorStream> watching);

    SensorStream& sensor; // the base class's
    const bool startFails;
};

} // namespace korvane::simulation
