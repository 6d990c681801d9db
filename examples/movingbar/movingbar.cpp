#include "camera/driver/backendentry.h"
#include "examples/movingbar/movingbarcamera.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace movingbar {

namespace {

/// The cable of the one camera there is.
std::shared_ptr<Socket> theSocket()
{
    static const auto socket = std::make_shared<Socket>();
    return socket;
}

/// Offers one camera that sees a moving bar. Any thread.
class MovingBarBackend : public korvane::Backend
{
public:
    std::string name() const override { return "movingbar"; }

    std::vector<korvane::CameraDescription> cameraDescriptions() override
    {
        if (!theSocket()->plugged)
            return {};
        return {{serialNumber, "Halvora", {}}};
    }

    std::shared_ptr<korvane::DvsCamera> openCamera(const std::string& serial) override
    {
        const auto socket = theSocket();
        if (serial != serialNumber || !socket->plugged || socket->open.exchange(true))
            return nullptr;
        try {
            return std::make_shared<MovingBarCamera>(socket);
        } catch (const std::exception&) {
            socket->open = false;
            return nullptr;
        }
    }
};

} // namespace

} // namespace movingbar

KORVANE_BACKEND_ENTRY(movingbar::MovingBarBackend);

/// Stands for a hand on the cable; backends of real cameras have none.
KORVANE_EXPORTED void movingbar_plug(bool plugged)
{
    const auto socket = movingbar::theSocket();
    if (!plugged)
        ++socket->pulls;
    socket->plugged = plugged;
}
