#include "camera/simulation/simulateddvscamera.h"

#include <utility>

namespace korvane::simulation {

namespace {

constexpr int cannotStream = 2;

} // namespace

SimulatedDvsCamera::SimulatedDvsCamera(const SimulatedCameraConfig& config)
    : SimulatedDvsCamera(config, makeScene(config))
{
}

SimulatedDvsCamera::SimulatedDvsCamera(const SimulatedCameraConfig& config, std::unique_ptr<Scene> watched)
    : SimulatedDvsCamera(config,
                         std::make_unique<SensorStream>(std::move(watched), config.sensor, config.seed))
{
}

SimulatedDvsCamera::SimulatedDvsCamera(const SimulatedCameraConfig& config,
                                       std::unique_ptr<SensorStream> watching)
    : StreamedDvsCamera(config.serial, std::move(watching)), sensor(static_cast<SensorStream&>(source())),
      startFails(config.failStart)
{
}

int SimulatedDvsCamera::start()
{
    return startFails ? cannotStream : StreamedDvsCamera::start();
}

} // namespace korvane::simulation
