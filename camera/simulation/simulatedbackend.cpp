#include "camera/simulation/simulatedbackend.h"

#include <QtGlobal>

#include <algorithm>
#include <exception>

namespace korvane::simulation {

SimulatedBackend::SimulatedBackend(const std::vector<SimulatedCameraConfig>& configs)
{
    for (const SimulatedCameraConfig& config : configs)
        sockets.push_back({config, true, false, {}});
}

SimulatedBackend::Slot* SimulatedBackend::slotOf(const std::string& serial)
{
    const auto found = std::find_if(sockets.begin(), sockets.end(),
                                    [&serial](const Slot& slot) { return slot.config.serial == serial; });
    return found == sockets.end() ? nullptr : &*found;
}

std::vector<CameraDescription> SimulatedBackend::cameraDescriptions()
{
    const std::lock_guard lock(mutex);
    std::vector<CameraDescription> found;
    for (const Slot& slot : sockets) {
        if (slot.plugged)
            found.push_back({slot.config.serial, slot.config.product, name()});
    }
    return found;
}

std::shared_ptr<DvsCamera> SimulatedBackend::openCamera(const std::string& serial)
{
    SimulatedCameraConfig config;
    {
        const std::lock_guard lock(mutex);
        Slot* const slot = slotOf(serial);
        if (slot == nullptr || !slot->plugged || slot->opening || slot->config.failOpen)
            return nullptr;
        if (!slot->camera.expired())
            return nullptr;
        slot->opening = true;
        config = slot->config;
    }
    // Building the scene takes a while, during which the list of cameras is to be had.
    std::shared_ptr<SimulatedDvsCamera> camera;
    try {
        camera = std::make_shared<SimulatedDvsCamera>(config);
    } catch (const std::exception& error) {
        qWarning("Simulated camera %s cannot be opened: %s", serial.c_str(), error.what());
    }
    const std::lock_guard lock(mutex);
    Slot* const slot = slotOf(serial);
    slot->opening = false;
    if (!slot->plugged)
        return nullptr;
    slot->camera = camera;
    return camera;
}

void SimulatedBackend::pull(const std::string& serial)
{
    std::shared_ptr<SimulatedDvsCamera> open;
    {
        const std::lock_guard lock(mutex);
        if (Slot* const slot = slotOf(serial)) {
            slot->plugged = false;
            open = slot->camera.lock();
            slot->camera.reset();
        }
    }
    // Outside the lock: this may turn out to be the camera's last pointer.
    if (open)
        open->pull();
}

void SimulatedBackend::plug(const std::string& serial)
{
    const std::lock_guard lock(mutex);
    if (Slot* const slot = slotOf(serial))
        slot->plugged = true;
}

} // namespace korvane::simulation
