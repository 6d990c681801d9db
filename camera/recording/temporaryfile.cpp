#include "camera/recording/temporaryfile.h"

#include "camera/recording/recordingpath.h"

#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace korvane::recording {

namespace {

/// Brings a folder's names to the disk. What cannot be done here cannot be mended either: the file is whole
/// and has its name.
void syncFolder(const QString& path)
{
    const int folder = open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    fsync(folder);
    close(folder);
}

} // namespace

TemporaryFile::TemporaryFile(const QString& beside) : path(beside + QStringLiteral(".part"))
{
    constexpr int attempts = 100;
    for (int i = 1; !(opened = newFile.open(path)) && newFile.isTaken() && i < attempts; ++i)
        path = beside + QStringLiteral(".part%1").arg(i);
}

TemporaryFile::~TemporaryFile()
{
    stream.close();
    if (opened && !kept)
        newFile.discard();
}

QFile& TemporaryFile::device()
{
    if (!stream.isOpen())
        stream.open(newFile.handle(), QIODevice::ReadWrite | QIODevice::Unbuffered);
    return stream;
}

bool TemporaryFile::keepAs(const QString& wanted, QString& error)
{
    stream.close();
    if (stream.error() != QFileDevice::NoError) {
        error = stream.errorString();
        return false;
    }
    // Before it gets its name: under that, nobody finds half a file after a power cut. What closing might
    // tell, this tells; so the file stays open, and can be known again, until it has its name.
    if (!newFile.sync()) {
        error = newFile.errorString();
        return false;
    }
    const QString name = renameToFree(path, wanted, error);
    kept = !name.isEmpty();
    if (kept)
        syncFolder(QFileInfo(name).path());
    return kept;
}

} // namespace korvane::recording
