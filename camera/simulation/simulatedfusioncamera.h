#pragma once

#include "camera/simulation/apsrenderer.h"
#include "camera/simulation/fusionstage.h"
#include "camera/simulation/handover.h"
#include "camera/simulation/sensorstream.h"
#include "camera/simulation/simulatedcameraconfig.h"
#include "camera/simulation/streamedfusioncamera.h"

#include <memory>

namespace korvane::simulation {

/// A fusion camera without hardware: an event sensor and an intensity sensor that look at one stage. Threads
/// as with StreamedFusionCamera.
class SimulatedFusionCamera : public StreamedFusionCamera
{
public:
    /// A camera whose last pointer may also be dropped by one of its own callbacks.
    static std::shared_ptr<SimulatedFusionCamera> make(const SimulatedCameraConfig& config);

    void start(STREAM_TYPE type) override;

    SensorParameters sensorParameters() const { return sensor.parameters(); }
    void setSensorParameters(const SensorParameters& parameters) { sensor.setParameters(parameters); }
    ApsParameters apsParameters() const { return intensity->latest(); }
    /// Takes effect with the next frame.
    void setApsParameters(const ApsParameters& parameters) { intensity->set(parameters); }

private:
    using Intensity = std::shared_ptr<Handover<ApsParameters>>;

    SimulatedFusionCamera(const SimulatedCameraConfig& config,
                          const std::shared_ptr<const FusionStage>& stage, Intensity parameters);
    ~SimulatedFusionCamera() override = default;

    SensorStream& sensor;
    const Intensity intensity;
    const bool startFails;
};

} // namespace korvane::simulation
