#include "camera/simulation/streamtools.h"

namespace korvane::simulation {

StreamTools::StreamTools(recording::Geometry)
{
    // Events pass the filters in the order in which they are added here: region of interest, event trail
    // filter, anti-flicker, event rate control, so that each has less to do and the last one holds its limit
    // for what is delivered.
}

StreamStep StreamTools::process(const StreamStep& step)
{
    return {chain.run(step.events), step.triggers, step.until};
}

} // namespace korvane::simulation
