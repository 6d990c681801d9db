#include "camera/plugins/backendlibraries.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/replaybackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "tests/conformance/fixture.h"
#include "tests/support/plainrecording.h"

#include <dlfcn.h>

// Every camera and recording of the tree: simulated, replayed, from the example's library.

namespace conformance {

namespace {

using korvane::Backend;
using korvane::simulation::ReplayBackend;
using korvane::simulation::SimulatedBackend;
using korvane::simulation::SimulatedCameraConfig;

template <typename Source>
CameraSource sourceOf(const char* name, const std::shared_ptr<std::shared_ptr<Source>>& current,
                      std::function<std::shared_ptr<Source>()> make)
{
    return {name, "CAMERA",
            [current, make] {
                *current = make();
                return *current;
            },
            [current](bool plugged) {
                if (plugged)
                    (*current)->plug("CAMERA");
                else
                    (*current)->pull("CAMERA");
            }};
}

CameraSource simulated(const char* name, const char* product, SimulatedCameraConfig::SceneKind scene)
{
    SimulatedCameraConfig config;
    config.serial = "CAMERA";
    config.product = product;
    config.scene = scene;
    config.eventsPerSecond = 3e5;
    return sourceOf<SimulatedBackend>(name, std::make_shared<std::shared_ptr<SimulatedBackend>>(), [config] {
        return std::make_shared<SimulatedBackend>(std::vector{config});
    });
}

CameraSource replayed()
{
    return sourceOf<ReplayBackend>("Replayed", std::make_shared<std::shared_ptr<ReplayBackend>>(), [] {
        static const TemporaryRecordings folder;
        // Two hundred milliseconds, so that every test crosses the seam.
        static const std::string path
            = writePlainRecording(folder, "CAMERA.raw", steadyEvents(700, 200700, 5));
        return std::make_shared<ReplayBackend>(QFile::decodeName(path.c_str()));
    });
}

/// The example's library, copied out of the build and loaded as the program loads it.
class ExampleLibrary
{
public:
    static std::shared_ptr<Backend> backend() { return instance().loaded; }
    static void plug(bool plugged) { instance().cable(plugged); }

private:
    ExampleLibrary()
    {
        const QString path = folder.filePath(QStringLiteral("maker.so"));
        QFile::copy(QStringLiteral(KORVANE_EXAMPLE_BACKEND), path);
        loaded = korvane::plugins::loadBackendLibraries(path).at(0);
        void* const library = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_NOLOAD);
        cable = reinterpret_cast<void (*)(bool)>(dlsym(library, "movingbar_plug"));
    }
    static ExampleLibrary& instance()
    {
        static ExampleLibrary library;
        return library;
    }

    QTemporaryDir folder;
    std::shared_ptr<Backend> loaded;
    void (*cable)(bool) = nullptr;
};

/// Records a moment of a camera.
std::string recorded(const CameraSource& source, const std::string& folder)
{
    const auto camera = source.backend()->openCamera(source.serial);
    if (!camera)
        return {};
    std::string path = folder + "/recorded.raw";
    camera->startRecording(path);
    if (camera->start() != 0)
        return {};
    std::vector<korvane::Event2D> batch;
    for (int i = 0; i < 4; ++i)
        waitFor([&] { return camera->getNextEventBatch(batch); });
    camera->stop();
    camera->stopRecording();
    return path;
}

CameraSource fromTheLibrary()
{
    return {"Library", "EX-000001", &ExampleLibrary::backend, &ExampleLibrary::plug};
}

std::shared_ptr<Backend> recordings()
{
    return std::make_shared<korvane::recording::RecordingBackend>();
}

} // namespace

std::vector<CameraSource> dvsCameraSources()
{
    return {simulated("Simulated", "QRT4", SimulatedCameraConfig::SceneKind::Turntable), replayed(),
            fromTheLibrary()};
}

std::vector<CameraSource> fusionCameraSources()
{
    return {simulated("Simulated", "Pellix", SimulatedCameraConfig::SceneKind::Stage)};
}

std::vector<RecordingSource> recordingSources()
{
    std::vector<RecordingSource> sources;
    for (const CameraSource& camera : {dvsCameraSources().front(), fromTheLibrary()}) {
        sources.push_back({"RecordedFrom" + camera.name,
                           [camera](const std::string& folder) { return recorded(camera, folder); },
                           &recordings});
    }
    sources.push_back({"WrittenByHand",
                       [](const std::string&) {
                           static const TemporaryRecordings folder;
                           static const std::string path
                               = writePlainRecording(folder, "plain.raw", steadyEvents(12345, 300000, 7));
                           return path;
                       },
                       &recordings});
    return sources;
}

} // namespace conformance
