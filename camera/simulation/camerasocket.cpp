#include "camera/simulation/camerasocket.h"

namespace korvane::simulation {

bool CameraSocket::isPlugged() const
{
    const std::lock_guard lock(mutex);
    return plugged;
}

bool CameraSocket::reserve()
{
    const std::lock_guard lock(mutex);
    if (!plugged || opening || !camera.expired())
        return false;
    opening = true;
    return true;
}

bool CameraSocket::occupy(const std::shared_ptr<Pluggable>& opened)
{
    const std::lock_guard lock(mutex);
    opening = false;
    if (!plugged || !opened)
        return false;
    camera = opened;
    return true;
}

void CameraSocket::pull()
{
    std::shared_ptr<Pluggable> open;
    {
        const std::lock_guard lock(mutex);
        plugged = false;
        open = camera.lock();
        camera.reset();
    }
    // Outside the lock: this may turn out to be the camera's last pointer.
    if (open)
        open->pull();
}

void CameraSocket::plug()
{
    const std::lock_guard lock(mutex);
    plugged = true;
}

} // namespace korvane::simulation
