#include "camera/simulation/simulatedbackend.h"

#include "camera/simulation/simulateddvscamera.h"
#include "camera/simulation/simulatedfusioncamera.h"

#include <QtGlobal>

#include <algorithm>
#include <exception>

namespace korvane::simulation {

SimulatedBackend::SimulatedBackend(const std::vector<SimulatedCameraConfig>& configs)
{
    for (const SimulatedCameraConfig& config : configs)
        sockets.emplace_back().config = config;
}

SimulatedBackend::Slot* SimulatedBackend::slotOf(const std::string& serial)
{
    const auto found = std::find_if(sockets.begin(), sockets.end(),
                                    [&serial](const Slot& slot) { return slot.config.serial == serial; });
    return found == sockets.end() ? nullptr : &*found;
}

std::vector<CameraDescription> SimulatedBackend::cameraDescriptions()
{
    std::vector<CameraDescription> found;
    for (const Slot& slot : sockets) {
        if (slot.socket.isPlugged())
            found.push_back({slot.config.serial, slot.config.product, name()});
    }
    return found;
}

template <typename Camera>
std::shared_ptr<Camera> SimulatedBackend::open(const std::string& serial, bool fusion,
                                               std::shared_ptr<Camera> (*make)(const SimulatedCameraConfig&))
{
    Slot* const slot = slotOf(serial);
    const auto isFusion = [slot] { return slot->config.scene == SimulatedCameraConfig::SceneKind::Stage; };
    if (slot == nullptr || slot->config.failOpen || isFusion() != fusion)
        return nullptr;
    try {
        return slot->socket.open<Camera>([slot, make] { return make(slot->config); });
    } catch (const std::exception& error) {
        qWarning("Simulated camera %s cannot be opened: %s", serial.c_str(), error.what());
        return nullptr;
    }
}

std::shared_ptr<DvsCamera> SimulatedBackend::openCamera(const std::string& serial)
{
    return open<SimulatedDvsCamera>(serial, false, [](const SimulatedCameraConfig& config) {
        return std::make_shared<SimulatedDvsCamera>(config);
    });
}

std::shared_ptr<FusionCamera> SimulatedBackend::openFusionCamera(const std::string& serial)
{
    return open<SimulatedFusionCamera>(serial, true, &SimulatedFusionCamera::make);
}

void SimulatedBackend::pull(const std::string& serial)
{
    if (Slot* const slot = slotOf(serial))
        slot->socket.pull();
}

void SimulatedBackend::plug(const std::string& serial)
{
    if (Slot* const slot = slotOf(serial))
        slot->socket.plug();
}

} // namespace korvane::simulation
