#pragma once

#include "camera/driver/cameratool.h"
#include "camera/driver/tooltype.h"

namespace conformance {

/// Checks one group of settings and leaves it as it was, but for enumerations, which end at their default.
void checkTool(korvane::CameraTool& tool, korvane::ToolType type);

} // namespace conformance
