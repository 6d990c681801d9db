#include "camera/recording/recordingpath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace korvane::recording {

namespace {

// From linux/fs.h, which other headers of the system contradict.
constexpr unsigned noReplace = 1;

bool exists(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

} // namespace

QString freeRecordingPath(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    const bool known = suffix.compare(QLatin1String("raw"), Qt::CaseInsensitive) == 0
        || suffix.compare(QLatin1String("mp4"), Qt::CaseInsensitive) == 0;
    const QString ending = known ? QLatin1Char('.') + suffix : QString();
    const QString base = path.chopped(ending.size());
    const auto taken = [&ending](const QString& name) {
        return exists(name + QStringLiteral(".raw")) || exists(name + QStringLiteral(".mp4"))
            || exists(name + ending);
    };
    QString name = base;
    for (int i = 1; taken(name); ++i)
        name = base + QLatin1Char('-') + QString::number(i);
    return name + ending;
}

int renameNoReplace(const QString& from, const QString& to, RenameBy method)
{
    const QByteArray old = QFile::encodeName(from);
    const QByteArray wanted = QFile::encodeName(to);
    if (method == RenameBy::Link) {
        if (link(old.constData(), wanted.constData()) != 0)
            return errno;
        unlink(old.constData());
        return 0;
    }
    if (method == RenameBy::Placeholder) {
        const int empty = open(wanted.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (empty < 0)
            return errno;
        close(empty);
        if (rename(old.constData(), wanted.constData()) == 0)
            return 0;
        const int code = errno;
        unlink(wanted.constData());
        return code;
    }
    // By its number: older C libraries have no function for it.
    return syscall(SYS_renameat2, AT_FDCWD, old.constData(), AT_FDCWD, wanted.constData(), noReplace) == 0
        ? 0
        : errno;
}

QString renameToFree(const QString& temporary, const QString& wanted, QString& error,
                     const RenameFile& renameFile)
{
    RenameBy method = RenameBy::Kernel;
    int code = EEXIST;
    // Somebody else may take the name between the look and the rename: then look again.
    for (int attempt = 0; attempt < 100 && code == EEXIST; ++attempt) {
        QString path = freeRecordingPath(wanted);
        code = renameFile(temporary, path, method);
        if (method == RenameBy::Kernel && (code == EINVAL || code == ENOSYS || code == ENOTSUP)) {
            method = RenameBy::Link;
            code = renameFile(temporary, path, method);
        }
        // What cannot have two names is told as not permitted.
        if (method == RenameBy::Link
            && (code == EPERM || code == EINVAL || code == ENOSYS || code == ENOTSUP || code == EMLINK)) {
            method = RenameBy::Placeholder;
            code = renameFile(temporary, path, method);
        }
        if (code == 0)
            return path;
    }
    error = QString::fromStdString(std::generic_category().message(code));
    return {};
}

} // namespace korvane::recording
