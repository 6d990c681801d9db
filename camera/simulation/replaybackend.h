#pragma once

#include "camera/driver/backend.h"
#include "camera/simulation/camerasocket.h"

#include <QFileInfo>
#include <QString>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace korvane::simulation {

/// Offers recordings as cameras that see them over and over: who has no camera can try everything on real
/// data. One with intensity frames beside it, an .mp4 of the same name that is not an exported video, is a
/// fusion camera. A recording keeps its serial as long as the backend lives. Any thread.
class ReplayBackend : public Backend
{
public:
    /// `path` names a recording, or a folder, of which all .raw files are offered. The folder is looked at
    /// anew whenever the cameras are asked for. `taken` are serials of other cameras, given to none.
    explicit ReplayBackend(const QString& path, std::set<std::string> taken = {});

    std::string name() const override { return "replay"; }
    std::vector<CameraDescription> cameraDescriptions() override;
    std::shared_ptr<DvsCamera> openCamera(const std::string& serial) override;
    std::shared_ptr<FusionCamera> openFusionCamera(const std::string& serial) override;

    /// Unplugs and plugs in again, see CameraSocket.
    void pull(const std::string& serial);
    void plug(const std::string& serial);

private:
    /// Tells a file from what it was before.
    struct Stamp
    {
        std::int64_t size = 0; ///< bytes
        std::int64_t modified = 0; ///< milliseconds since 1970

        friend bool operator==(const Stamp&, const Stamp&) = default;
    };
    struct Judgement
    {
        Stamp stamp;
        bool usable = false;
    };
    struct Slot
    {
        QString path;
        std::string serial;
        bool offered = false;
        bool fusion = false; ///< as it is offered
        CameraSocket socket;
    };

    void look();
    bool judged(const QString& path, const Stamp& stamp, const std::function<bool()>& judge);
    bool isUsable(const QString& path, const Stamp& stamp);
    bool hasFrames(const QString& recordingPath);
    static Stamp stampOf(const QFileInfo& file);
    /// Empty when the recording is not offered as a camera of that kind.
    Slot* find(const std::string& serial, bool fusion);
    template <typename Camera>
    std::shared_ptr<Camera> open(const std::string& serial, bool fusion,
                                 std::shared_ptr<Camera> (*make)(const QString& path,
                                                                 const CameraDescription& description));
    CameraDescription describe(const Slot& slot) const;
    Slot& slotFor(const QString& path);
    Slot* slotOf(const std::string& serial);
    std::string newSerial(const QString& path);

    const QString root;
    std::mutex mutex;
    std::deque<Slot> sockets; // guarded by mutex, but for their sockets; none is ever removed
    std::set<std::string> serials; // guarded by mutex
    std::map<QString, Judgement> judgements; // guarded by mutex, by path; of recordings and their frames
    bool lackTold = false; // guarded by mutex
};

} // namespace korvane::simulation
