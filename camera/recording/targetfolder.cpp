#include "camera/recording/targetfolder.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace korvane::recording {

bool namesFile(const QString& path)
{
    const QString name = QFileInfo(path).fileName();
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..");
}

TargetFolder::TargetFolder(const QString& file) : folder(QFileInfo(file).absolutePath())
{
    for (QString at = folder; !QFileInfo::exists(at); at = QFileInfo(at).path())
        missing.append(at);
    made = QDir().mkpath(folder);
}

TargetFolder::~TargetFolder()
{
    if (kept)
        return;
    // Only empty folders can be removed: nothing of anyone else's is lost.
    for (const QString& at : std::as_const(missing))
        QDir().rmdir(at);
}

} // namespace korvane::recording
