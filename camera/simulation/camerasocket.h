#pragma once

#include "camera/simulation/pluggable.h"

#include <functional>
#include <memory>
#include <mutex>

namespace korvane::simulation {

/// Where one camera is plugged in. A camera has one owner: while it is open, opening it again fails. Any
/// thread.
class CameraSocket
{
public:
    bool isPlugged() const;

    /// The camera that `make` builds, which may take its time. Empty when the camera is unplugged, open or
    /// being opened, or `make` gave nothing.
    template <typename Camera>
    std::shared_ptr<Camera> open(const std::function<std::shared_ptr<Camera>()>& make)
    {
        if (!reserve())
            return nullptr;
        std::shared_ptr<Camera> made;
        try {
            made = make();
        } catch (...) {
            occupy(nullptr);
            throw;
        }
        return occupy(made) ? made : nullptr;
    }

    /// Unplugs the camera; when it is open its stream ends.
    void pull();
    /// Plugs it in again; what was open before the pull stays lost.
    void plug();

private:
    bool reserve();
    bool occupy(const std::shared_ptr<Pluggable>& opened);

    mutable std::mutex mutex;
    bool plugged = true; // guarded by mutex
    bool opening = false; // guarded by mutex
    std::weak_ptr<Pluggable> camera; // guarded by mutex
};

} // namespace korvane::simulation
