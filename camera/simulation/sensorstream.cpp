#include "camera/simulation/sensorstream.h"

#include <utility>

namespace korvane::simulation {

SensorStream::SensorStream(std::unique_ptr<Scene> watched, const SensorParameters& parameters,
                           std::uint64_t seed)
    : generator(std::move(watched), parameters, seed), current(sanitized(parameters))
{
}

recording::Geometry SensorStream::geometry() const
{
    return {static_cast<std::uint16_t>(generator.scene().width()),
            static_cast<std::uint16_t>(generator.scene().height())};
}

SensorParameters SensorStream::parameters() const
{
    const std::lock_guard lock(mutex);
    return current;
}

void SensorStream::setParameters(const SensorParameters& parameters)
{
    const std::lock_guard lock(mutex);
    current = sanitized(parameters);
    changed = current;
}

StreamStep SensorStream::generateStep()
{
    std::optional<SensorParameters> next;
    {
        const std::lock_guard lock(mutex);
        next.swap(changed);
    }
    if (next)
        generator.setParameters(*next);
    const auto events = generator.generateStep();
    return {events, {}, generator.time()};
}

} // namespace korvane::simulation
