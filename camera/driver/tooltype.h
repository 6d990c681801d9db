#pragma once

namespace korvane {

/// The kinds of settings tool that a camera may have. The value 2 is not in use.
enum class ToolType : int {
    Biases = 0,
    TriggerIn = 1,
    AntiFlicker = 3,
    EventTrailFilter = 4,
    EventRateControl = 5,
    Roi = 6,
    Aps = 7, ///< fusion cameras only
};

} // namespace korvane
