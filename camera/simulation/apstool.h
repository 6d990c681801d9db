#pragma once

#include "camera/simulation/apsrenderer.h"
#include "camera/simulation/handover.h"
#include "camera/simulation/parametertool.h"

#include <memory>

namespace korvane::simulation {

/// The tool that sets an intensity sensor: exposure, gain, black level, and whether its picture is upside
/// down. The event sensor is another one: its events stay where they are, and lie on the edges of the picture
/// only while that is upright.
std::shared_ptr<ParameterTool> makeApsTool(std::shared_ptr<Handover<ApsParameters>> sensor);

} // namespace korvane::simulation
