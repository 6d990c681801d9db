#include "camera/simulation/simulatedcameraconfig.h"

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

    return {street, busyStreet, bench};
}

std::unique_ptr<Scene> makeScene(const SimulatedCameraConfig& config)
{
    if (config.scene == SimulatedCameraConfig::SceneKind::Turntable)
        return std::make_unique<TurntableScene>(config.seed, config.eventsPerSecond);
    return std::make_unique<StreetScene>(config.seed, config.eventsPerSecond);
}

} // namespace korvane::simulation
