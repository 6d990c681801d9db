#include "camera/driver/dvscameramanager.h"

#include "camera/driver/backend.h"

#include <iterator>
#include <utility>

namespace korvane {

std::vector<CameraDescription> DvsCameraManager::getCameraDescs()
{
    std::vector<CameraDescription> all;
    for (const auto& backend : registeredBackends()) {
        auto found = backend->cameraDescriptions();
        for (auto& description : found)
            description.backend = backend->name();
        all.insert(all.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }
    return all;
}

std::shared_ptr<DvsCamera> DvsCameraManager::openCamera(std::string serial)
{
    for (const auto& backend : registeredBackends()) {
        if (auto camera = backend->openCamera(serial))
            return camera;
    }
    return nullptr;
}

std::shared_ptr<FusionCamera> DvsCameraManager::openFusionCamera(std::string serial)
{
    for (const auto& backend : registeredBackends()) {
        if (auto camera = backend->openFusionCamera(serial))
            return camera;
    }
    return nullptr;
}

} // namespace korvane
