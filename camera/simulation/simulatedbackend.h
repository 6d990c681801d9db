#pragma once

#include "camera/driver/backend.h"
#include "camera/simulation/camerasocket.h"
#include "camera/simulation/simulatedcameraconfig.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace korvane::simulation {

/// Offers simulated cameras. Any thread.
class SimulatedBackend : public Backend
{
public:
    explicit SimulatedBackend(const std::vector<SimulatedCameraConfig>& configs = standardCameras());

    std::string name() const override { return "simulation"; }
    std::vector<CameraDescription> cameraDescriptions() override;
    std::shared_ptr<DvsCamera> openCamera(const std::string& serial) override;
    std::shared_ptr<FusionCamera> openFusionCamera(const std::string& serial) override;

    /// Unplugs the camera with this serial: it is no longer listed, and when it is open its stream ends.
    void pull(const std::string& serial);
    /// Plugs it in again; what was open before the pull stays lost.
    void plug(const std::string& serial);

private:
    struct Slot
    {
        SimulatedCameraConfig config;
        CameraSocket socket;
    };
    Slot* slotOf(const std::string& serial);
    template <typename Camera>
    std::shared_ptr<Camera> open(const std::string& serial, bool fusion,
                                 std::shared_ptr<Camera> (*make)(const SimulatedCameraConfig& config));

    std::deque<Slot> sockets; // the same for ever
};

} // namespace korvane::simulation
