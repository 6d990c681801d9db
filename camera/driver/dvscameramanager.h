#pragma once

#include "camera/driver/cameradescription.h"
#include "camera/driver/dvscamera.h"
#include "camera/driver/fusioncamera.h"

#include <memory>
#include <string>
#include <vector>

namespace korvane {

/// Finds and opens cameras by asking the registered backends in their order. `getCameraDescs` is called from
/// the GUI thread, the open calls from a worker thread.
class DvsCameraManager
{
public:
    DvsCameraManager() = default;
    ~DvsCameraManager() = default;
    DvsCameraManager(const DvsCameraManager&) = delete;
    DvsCameraManager& operator=(const DvsCameraManager&) = delete;

    /// The connected cameras of all backends; empty when there is none.
    std::vector<CameraDescription> getCameraDescs();
    /// Opens a DVS-only camera; empty on failure.
    std::shared_ptr<DvsCamera> openCamera(std::string serial);
    /// Opens a fusion camera; empty on failure.
    std::shared_ptr<FusionCamera> openFusionCamera(std::string serial);
};

} // namespace korvane
