#include "camera/simulation/simulateddvscamera.h"

#include "camera/simulation/biases.h"

#include <cstdint>
#include <utility>

namespace korvane::simulation {

namespace {

constexpr int cannotStream = 2;
// Of the signal at the trigger input, microseconds.
constexpr std::uint64_t triggerPeriod = 10000;

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
    streamTools().add(ToolType::Biases, makeBiasesTool(sensor.parameters(), sensor.parameterHandover()));
    streamTools().addTriggerInput(triggerPeriod);
    offerTools();
}

int SimulatedDvsCamera::start()
{
    return startFails ? cannotStream : StreamedDvsCamera::start();
}

} // namespace korvane::simulation
