#include "camera/simulation/streamtools.h"

#include "camera/simulation/filtertools.h"

namespace korvane::simulation {

StreamTools::StreamTools(recording::Geometry geometry)
{
    // Events pass the filters in the order in which they are added here, so that each has less to do and the
    // last one holds its limit for what is delivered.
    addRegionOfInterest(*this, geometry);
    addEventTrailFilter(*this, geometry);
    addAntiFlicker(*this, geometry);
    addEventRateControl(*this);
}

void StreamTools::addTriggerInput(std::uint64_t period)
{
    triggerInput.emplace(period);
    add(ToolType::TriggerIn, triggerInput->tool());
}

StreamStep StreamTools::process(const StreamStep& step)
{
    const auto triggers = triggerInput ? triggerInput->edgesUntil(step.until) : step.triggers;
    return {chain.run(step.events), triggers, step.until};
}

} // namespace korvane::simulation
