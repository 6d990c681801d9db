#include "camera/driver/backend.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace korvane {

namespace {

struct Registry
{
    std::mutex mutex;
    std::vector<std::shared_ptr<Backend>> backends;
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

} // namespace

std::shared_ptr<DvsCamera> Backend::openCamera(const std::string&)
{
    return nullptr;
}

std::shared_ptr<FusionCamera> Backend::openFusionCamera(const std::string&)
{
    return nullptr;
}

std::unique_ptr<DvsFileReader> Backend::createDvsFileReader(const std::string&)
{
    return nullptr;
}

std::unique_ptr<ApsFileReader> Backend::createApsFileReader(const std::string&)
{
    return nullptr;
}

bool Backend::isExportedVideo(const std::string&)
{
    return false;
}

void registerBackend(std::shared_ptr<Backend> backend)
{
    if (!backend)
        return;
    const std::lock_guard lock(registry().mutex);
    registry().backends.push_back(std::move(backend));
}

void unregisterBackend(const std::shared_ptr<Backend>& backend)
{
    const std::lock_guard lock(registry().mutex);
    std::erase(registry().backends, backend);
}

std::vector<std::shared_ptr<Backend>> registeredBackends()
{
    const std::lock_guard lock(registry().mutex);
    return registry().backends;
}

bool isExportedVideo(const std::string& path)
{
    const auto backends = registeredBackends();
    return std::any_of(backends.begin(), backends.end(),
                       [&path](const auto& backend) { return backend->isExportedVideo(path); });
}

std::unique_ptr<DvsFileReader> DvsFileReader::createFileReader(std::string path)
{
    for (const auto& backend : registeredBackends()) {
        if (auto reader = backend->createDvsFileReader(path))
            return reader;
    }
    return nullptr;
}

std::unique_ptr<ApsFileReader> ApsFileReader::createFileReader(std::string path)
{
    for (const auto& backend : registeredBackends()) {
        if (auto reader = backend->createApsFileReader(path))
            return reader;
    }
    return nullptr;
}

} // namespace korvane
