#pragma once

#include <string>

namespace korvane {

/// What the recorder of a camera does. `writing` false with an empty `error` means that no recording was
/// asked for or that it was stopped as asked; a non-empty `error` says why a recording ended by itself. With
/// both, a part of the recording ended: of a fusion camera's, the intensity frames, while events go on.
struct RecorderState
{
    bool writing = false;
    std::string path; ///< the recording that is or was written; with an error, the file that has it
    std::string error; ///< fit to show
};

} // namespace korvane
