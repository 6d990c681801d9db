#pragma once

#include <string>

namespace korvane {

/// What the recorder of a camera does. `writing` false with an empty `error` means that no recording was
/// asked for or that it was stopped as asked; a non-empty `error` says why a recording ended by itself.
struct RecorderState
{
    bool writing = false;
    std::string path; ///< the recording that is or was written
    std::string error; ///< fit to show
};

} // namespace korvane
