#include "camera/recording/recordingpath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace korvane::recording {

QString freeRecordingPath(const QString& path)
{
    const QFileInfo wanted(path);
    const QDir folder = wanted.dir();
    const QString base = wanted.completeBaseName();
    const auto taken = [&folder](const QString& name) {
        return folder.exists(name + QStringLiteral(".raw")) || folder.exists(name + QStringLiteral(".mp4"));
    };
    QString name = base;
    for (int i = 1; taken(name); ++i)
        name = base + QLatin1Char('-') + QString::number(i);
    return folder.filePath(name + QLatin1Char('.') + wanted.suffix());
}

QString renameToFree(const QString& temporary, const QString& wanted, QString& error)
{
    QFile file(temporary);
    // Somebody else may take the name between the look and the rename: then look again.
    for (int attempt = 0; attempt < 100; ++attempt) {
        QString path = freeRecordingPath(wanted);
        if (file.rename(path))
            return path;
        if (!QFile::exists(path))
            break;
    }
    error = file.errorString();
    return {};
}

} // namespace korvane::recording
