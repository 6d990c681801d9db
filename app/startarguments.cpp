#include "app/startarguments.h"

#include <QCommandLineParser>
#include <QFileInfo>

StartArguments parseStartArguments(const QStringList& commandLine)
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
    parser.process(commandLine);
    StartArguments arguments;
    if (!parser.positionalArguments().isEmpty())
        arguments.recording = QFileInfo(parser.positionalArguments().constFirst()).absoluteFilePath();
    arguments.cameraSerial = parser.value(camera);
    arguments.splash = !parser.isSet(noSplash);
    return arguments;
}
