#include "camera/simulation/simulatedcameraconfig.h"

#include "camera/simulation/fusionscene.h"
#include "camera/simulation/streetscene.h"
#include "camera/simulation/turntablescene.h"

namespace korvane::simulation {

std::vector<SimulatedCameraConfig> standardCameras()
{
    SimulatedCameraConfig street;
    street.serial = "HAL-000001";
    street.product = "Halvora";
    street.seed = 2;

    SimulatedCameraConfig busyStreet = street;
    busyStreet.serial = "HAL-000002";
    busyStreet.seed = 4;
    busyStreet.eventsPerSecond = 30e6;

    SimulatedCameraConfig bench;
    bench.serial = "QRT-000001";
    bench.product = "QRT4";
    bench.scene = SimulatedCameraConfig::SceneKind::Turntable;
    bench.seed = 3;
    bench.eventsPerSecond = 1.5e6;

    SimulatedCameraConfig stage;
    stage.serial = "PEL-000001";
    stage.product = "Pellix";
    stage.scene = SimulatedCameraConfig::SceneKind::Stage;
    stage.seed = 5;
    // Indoors, with a fast lens: a quiet sensor.
    stage.sensor.backgroundRateHz = 0.03F;

    return {street, busyStreet, bench, stage};
}

std::unique_ptr<Scene> makeScene(const SimulatedCameraConfig& config)
{
    if (config.scene == SimulatedCameraConfig::SceneKind::Stage)
        return std::make_unique<FusionScene>(std::make_shared<const FusionStage>(config.seed));
    if (config.scene == SimulatedCameraConfig::SceneKind::Turntable)
        return std::make_unique<TurntableScene>(config.seed, config.eventsPerSecond);
    return std::make_unique<StreetScene>(config.seed, config.eventsPerSecond);
}

} // namespace korvane::simulation
