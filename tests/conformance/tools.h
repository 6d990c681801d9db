#pragma once

#include "camera/driver/cameratool.h"

namespace conformance {

/// Checks one group of settings and leaves it as it was, but for enumerations, which end at their default.
void checkTool(korvane::CameraTool& tool);

} // namespace conformance
