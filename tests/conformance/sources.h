#pragma once

#include "camera/driver/backend.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/// What the conformance suite runs over. Whoever links the suite defines the functions below.
namespace conformance {

/// A camera of a backend.
struct CameraSource
{
    std::string name; ///< of the test, letters and digits
    std::string serial;
    /// The backend; a new one or the same each time.
    std::function<std::shared_ptr<korvane::Backend>()> backend;
    /// Puts the cable in or out, or asks someone to; empty where nobody can.
    std::function<void(bool plugged)> plug;

    friend void PrintTo(const CameraSource& source, std::ostream* out) { *out << source.name; }
};

/// A recording.
struct RecordingSource
{
    std::string name; ///< of the test, letters and digits
    /// The path of the recording, made in the folder or already there; empty when it failed.
    std::function<std::string(const std::string& folder)> make;
    /// The backend that reads it.
    std::function<std::shared_ptr<korvane::Backend>()> backend;

    friend void PrintTo(const RecordingSource& source, std::ostream* out) { *out << source.name; }
};

std::vector<CameraSource> dvsCameraSources();
std::vector<CameraSource> fusionCameraSources();
std::vector<RecordingSource> recordingSources();

inline std::vector<CameraSource> withReachableCable(std::vector<CameraSource> sources)
{
    std::erase_if(sources, [](const CameraSource& source) { return !source.plug; });
    return sources;
}

} // namespace conformance
