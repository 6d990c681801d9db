#include "camera/simulation/simulatedbackend.h"

#include "camera/simulation/simulateddvscamera.h"

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

std::shared_ptr<DvsCamera> SimulatedBackend::openCamera(const std::string& serial)
{
    Slot* const slot = slotOf(serial);
    if (slot == nullptr || slot->config.failOpen)
        return nullptr;
    try {
        return slot->socket.open<SimulatedDvsCamera>(
            [slot] { return std::make_shared<SimulatedDvsCamera>(slot->config); });
    } catch (const std::exception& error) {
        qWarning("Simulated camera %s cannot be opened: %s", serial.c_str(), error.what());
        return nullptr;
    }
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
