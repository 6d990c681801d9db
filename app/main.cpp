#include "app/config.h"
#include "app/fonts.h"
#include "app/initdialog.h"
#include "app/languages.h"
#include "app/productinfo.h"
#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/replaybackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "mainwindow/mainwidget.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>
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

struct Arguments
{
    QString recording;
    QString cameraSerial;
    bool splash = true;
};

Arguments parseArguments(const QApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Viewer and recorder for event cameras"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption camera(QStringLiteral("camera"),
                                    QStringLiteral("Open the camera with this serial number at start."),
                                    QStringLiteral("SERIAL"));
    const QCommandLineOption noSplash(QStringLiteral("no-splash"),
                                      QStringLiteral("Start without the version splash."));
    parser.addOption(camera);
    parser.addOption(noSplash);
    parser.addPositionalArgument(QStringLiteral("recording"), QStringLiteral("A recording to open at start."),
                                 QStringLiteral("[recording]"));
    parser.process(application);
    Arguments arguments;
    if (!parser.positionalArguments().isEmpty())
        arguments.recording = QFileInfo(parser.positionalArguments().constFirst()).absoluteFilePath();
    arguments.cameraSerial = parser.value(camera);
    arguments.splash = !parser.isSet(noSplash);
    return arguments;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
    // Deprecated and always on in Qt 6; set all the same, for whoever builds against another Qt.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#pragma GCC diagnostic pop

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("KorvaneInsight"));
    QApplication::setApplicationVersion(productinfo::version);
    const Arguments arguments = parseArguments(application);
    registerBackends();

    loadApplicationFont();
    const Config* const config = Config::getInstance(QStringLiteral("config.ini"));
    loadLanguage(config->language);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/img/assets/Korvane logo_navigate.png")));

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
