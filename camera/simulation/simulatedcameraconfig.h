#pragma once

#include "camera/simulation/scene.h"
#include "camera/simulation/sensorparameters.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace korvane::simulation {

/// One camera that a SimulatedBackend offers. A plain value.
struct SimulatedCameraConfig
{
    enum class SceneKind {
        Street, ///< see StreetScene
        Turntable, ///< see TurntableScene
        Stage, ///< see FusionStage; of fusion cameras
    };

    std::string serial; ///< at most 10 characters
    std::string product;
    SceneKind scene = SceneKind::Street;
    std::uint64_t seed = 1; ///< of scene and sensor
    double eventsPerSecond = 10e6; ///< about, with standard sensor parameters
    SensorParameters sensor;
    bool failOpen = false; ///< opening fails, as when another program holds the device
    bool failStart = false; ///< opening succeeds, streaming does not
    bool failVideo = false; ///< intensity frames cannot be recorded, as on a machine without an encoder
};

/// The cameras that every installation offers.
std::vector<SimulatedCameraConfig> standardCameras();
std::unique_ptr<Scene> makeScene(const SimulatedCameraConfig& config);

} // namespace korvane::simulation
