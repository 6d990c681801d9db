#include "app/applicationsetup.h"
#include "app/config.h"
#include "app/fonts.h"
#include "app/initdialog.h"
#include "app/languages.h"
#include "app/startarguments.h"
#include "camera/driver/backend.h"
#include "camera/plugins/backendlibraries.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/replaybackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "mainwindow/mainwidget.h"

#include <QApplication>
#include <QTimer>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace {

void registerBackends()
{
    korvane::registerBackend(std::make_shared<korvane::recording::RecordingBackend>());
    // Real cameras ahead of those without hardware.
    for (auto& backend : korvane::plugins::loadBackendLibraries(qEnvironmentVariable("KORVANE_BACKENDS")))
        korvane::registerBackend(std::move(backend));
    const auto simulated = std::make_shared<korvane::simulation::SimulatedBackend>();
    // Ahead of the simulated cameras: who names recordings wants to see them first.
    if (const QString replay = qEnvironmentVariable("KORVANE_REPLAY"); !replay.isEmpty()) {
        std::set<std::string> taken;
        for (const auto& camera : simulated->cameraDescriptions())
            taken.insert(camera.serial);
        korvane::registerBackend(
            std::make_shared<korvane::simulation::ReplayBackend>(replay, std::move(taken)));
    }
    korvane::registerBackend(simulated);
}

} // namespace

int main(int argc, char** argv)
{
    setApplicationAttributes();
    QApplication application(argc, argv);
    nameApplication();
    const StartArguments arguments = parseStartArguments(QApplication::arguments());
    registerBackends();

    loadApplicationFont();
    const Config* const config = Config::getInstance(QStringLiteral("config.ini"));
    loadLanguage(config->language);
    setApplicationIcon();

    std::optional<InitDialog> splash;
    if (arguments.splash) {
        splash.emplace(nullptr);
        splash->exec();
    }

    MainWidget window(nullptr);
    window.show();
    // Behind the first paint: the spinner of an opening source stands over a window that is there.
    QTimer::singleShot(0, &window, [&window, &arguments] {
        if (!arguments.cameraSerial.isEmpty())
            window.openCamera(arguments.cameraSerial);
        else if (!arguments.recording.isEmpty())
            window.openRecording(arguments.recording);
    });
    return QApplication::exec();
}
