#include "camera/recording/temporaryfile.h"

#include "camera/recording/recordingpath.h"

namespace korvane::recording {

TemporaryFile::TemporaryFile(const QString& beside) : file(beside + QStringLiteral(".part"))
{
    constexpr auto mode = QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered;
    for (int i = 1; !(opened = file.open(mode)) && file.exists() && i < 100; ++i)
        file.setFileName(beside + QStringLiteral(".part%1").arg(i));
}

TemporaryFile::~TemporaryFile()
{
    if (opened && !kept)
        file.remove();
}

bool TemporaryFile::keepAs(const QString& wanted, QString& error)
{
    file.close();
    if (file.error() != QFileDevice::NoError) {
        error = file.errorString();
        return false;
    }
    kept = !renameToFree(file.fileName(), wanted, error).isEmpty();
    return kept;
}

} // namespace korvane::recording
