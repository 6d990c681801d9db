#pragma once

#include <string>

namespace korvane {

/// A camera that a backend found. Texts are in the local 8-bit encoding.
struct CameraDescription
{
    std::string serial; ///< the key for opening the camera
    std::string product; ///< "QRT4" and "Halvora" are DVS-only cameras, "Pellix" is a fusion camera
    std::string backend; ///< name of the backend that found it, for the log
};

} // namespace korvane
