#pragma once

#include "camera/driver/apsfilereader.h"
#include "camera/driver/cameradescription.h"
#include "camera/driver/dvscamera.h"
#include "camera/driver/dvsfilereader.h"
#include "camera/driver/fusioncamera.h"

#include <memory>
#include <string>
#include <vector>

namespace korvane {

/// What a driver registers: a source of cameras, of recordings, or of both. Every operation has a default
/// that offers nothing, so a backend overrides only what it has. Operations may be called from any thread and
/// throw nothing.
class Backend
{
public:
    Backend() = default;
    virtual ~Backend() = default;
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    /// A short name for the log, unique among the registered backends.
    virtual std::string name() const = 0;
    /// The cameras that are connected now.
    virtual std::vector<CameraDescription> cameraDescriptions() { return {}; }
    /// The DVS-only camera with this serial; empty when it is not ours or cannot be opened.
    virtual std::shared_ptr<DvsCamera> openCamera(const std::string& serial);
    /// The fusion camera with this serial; empty when it is not ours or cannot be opened.
    virtual std::shared_ptr<FusionCamera> openFusionCamera(const std::string& serial);
    /// A reader for a file whose content is ours, else empty. Judged by the content, not by the name.
    virtual std::unique_ptr<DvsFileReader> createDvsFileReader(const std::string& path);
    virtual std::unique_ptr<ApsFileReader> createApsFileReader(const std::string& path);
    /// Whether the file is a video that DvsFileReader::exportVideo of this backend made.
    virtual bool isExportedVideo(const std::string& path);
};

/// Adds a backend for the rest of the process, after those registered before. Any thread.
void registerBackend(std::shared_ptr<Backend> backend);
/// Removes a backend that was registered; cameras and readers it made stay valid. Any thread.
void unregisterBackend(const std::shared_ptr<Backend>& backend);
/// The registered backends in the order of their registration. Any thread.
std::vector<std::shared_ptr<Backend>> registeredBackends();

/// Whether the file (path in the local 8-bit encoding) is a video exported from a recording, by whichever
/// registered backend: such a file beside a `.raw` holds no intensity frames of its own. Any thread.
bool isExportedVideo(const std::string& path);

} // namespace korvane
