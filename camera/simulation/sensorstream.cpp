#include "camera/simulation/sensorstream.h"

#include <utility>

namespace korvane::simulation {

SensorStream::SensorStream(std::unique_ptr<Scene> watched, const SensorParameters& parameters,
                           std::uint64_t seed)
    : generator(std::move(watched), parameters, seed),
      settings(std::make_shared<Handover<SensorParameters>>(sanitized(parameters))),
      current(settings->latest())
{
}

recording::Geometry SensorStream::geometry() const
{
    return {static_cast<std::uint16_t>(generator.scene().width()),
            static_cast<std::uint16_t>(generator.scene().height())};
}

StreamStep SensorStream::generateStep()
{
    if (settings->take(current))
        generator.setParameters(current);
    const auto events = generator.generateStep();
    return {events, {}, generator.time()};
}

} // namespace korvane::simulation
