#include "camera/plugins/backendlibraries.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "tests/conformance/sources.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <gtest/gtest.h>

#include <iostream>

// korvane_backend_conformance: the suite over a backend of your own.

namespace {

struct Asked
{
    std::shared_ptr<korvane::Backend> backend;
    korvane::CameraDescription camera;
    std::string recording;
    bool byHand = false;
};

Asked asked;

void askForCable(bool plugged)
{
    std::cout << "\n*** " << (plugged ? "Plug the camera in" : "Unplug the camera") << " now. ***\n"
              << std::endl;
}

std::vector<conformance::CameraSource> cameras(bool fusion)
{
    if (asked.camera.serial.empty() || (asked.camera.product == "Pellix") != fusion)
        return {};
    conformance::CameraSource source{"Camera", asked.camera.serial, [] { return asked.backend; }, {}};
    if (asked.byHand)
        source.plug = askForCable;
    return {source};
}

/// Whether what the command line asks for is there; else it has been told what is not.
bool findWhatIsAsked(const QString& library, const QString& serial)
{
    if (library == QStringLiteral("simulation")) {
        asked.backend = std::make_shared<korvane::simulation::SimulatedBackend>();
    } else if (library == QStringLiteral("recording")) {
        asked.backend = std::make_shared<korvane::recording::RecordingBackend>();
    } else {
        const auto loaded = korvane::plugins::loadBackendLibraries(library);
        if (loaded.size() != 1)
            return false;
        asked.backend = loaded.front();
    }
    if (serial.isEmpty())
        return true;
    const std::string wanted = serial.toLocal8Bit().toStdString();
    for (const auto& description : asked.backend->cameraDescriptions()) {
        if (description.serial == wanted)
            asked.camera = description;
    }
    if (asked.camera.serial.empty())
        qCritical().noquote() << "The backend lists no camera with the serial number" << serial;
    return !asked.camera.serial.empty();
}

} // namespace

namespace conformance {

std::vector<CameraSource> dvsCameraSources()
{
    return cameras(false);
}

std::vector<CameraSource> fusionCameraSources()
{
    return cameras(true);
}

std::vector<RecordingSource> recordingSources()
{
    if (asked.recording.empty())
        return {};
    return {{"Recording", [](const std::string&) { return asked.recording; }, [] { return asked.backend; }}};
}

} // namespace conformance

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Runs the conformance suite over a camera or a recording of a backend. Point the "
                       "camera at something that\n"
                       "moves. Options that begin with --gtest_ go to GoogleTest."));
    parser.addHelpOption();
    const QCommandLineOption camera(QStringLiteral("camera"), QStringLiteral("The camera to test."),
                                    QStringLiteral("SERIAL"));
    const QCommandLineOption recording(QStringLiteral("recording"),
                                       QStringLiteral("A recording that the backend reads."),
                                       QStringLiteral("FILE"));
    const QCommandLineOption byHand(QStringLiteral("by-hand"),
                                    QStringLiteral("Ask for the cable to be pulled and put in again."));
    parser.addOptions({camera, recording, byHand});
    parser.addPositionalArgument(
        QStringLiteral("library"),
        QStringLiteral("The backend's shared library, or simulation, or recording for the built-in ones."));
    QStringList arguments;
    for (const QString& argument : QCoreApplication::arguments()) {
        if (!argument.startsWith(QStringLiteral("--gtest_")))
            arguments << argument;
    }
    parser.process(arguments);
    if (parser.positionalArguments().size() != 1 || (!parser.isSet(camera) && !parser.isSet(recording)))
        parser.showHelp(2);
    asked.recording = QFile::encodeName(parser.value(recording)).toStdString();
    asked.byHand = parser.isSet(byHand);
    if (!findWhatIsAsked(parser.positionalArguments().constFirst(), parser.value(camera)))
        return 2;
    // The suite's parameters are made here, of what was asked for.
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
