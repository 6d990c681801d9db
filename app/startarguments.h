#pragma once

#include <QString>
#include <QStringList>

/// What the command line asks of the start.
struct StartArguments
{
    QString recording; ///< absolute path of a recording to open; empty for none
    QString cameraSerial; ///< of a camera to open, which goes before the recording; empty for none
    bool splash = true; ///< whether the version splash is shown
};

/// Reads the command line, whose first word is the program itself. Asked for help or version, or given an
/// option that there is not, it says so and ends the process. GUI thread, once the application is named.
StartArguments parseStartArguments(const QStringList& commandLine);
