#include "camera/recording/newfile.h"

#include "camera/recording/filesizesignal.h"

#include <QFile>

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane::recording {

NewFile::~NewFile()
{
    close();
}

bool NewFile::fail(int code)
{
    error = QString::fromStdString(std::generic_category().message(code));
    return false;
}

bool NewFile::open(const QString& path)
{
    close();
    ignoreFileSizeSignal();
    name = QFile::encodeName(path);
    length = 0;
    descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    taken = descriptor < 0 && errno == EEXIST;
    return descriptor >= 0 || fail(errno);
}

bool NewFile::write(std::span<const std::uint8_t> bytes)
{
    // Bytes that go into a file without a name are lost: whoever removed it, or its folder, ended it.
    struct stat status = {};
    if (fstat(descriptor, &status) != 0)
        return fail(errno);
    if (status.st_nlink == 0) {
        error = QStringLiteral("the file has been removed");
        return false;
    }
    // Behind an end that was moved there would be a gap.
    if (static_cast<std::uint64_t>(status.st_size) < length) {
        error = QStringLiteral("the file has been truncated");
        return false;
    }
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return fail(written < 0 ? errno : ENOSPC);
        length += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

bool NewFile::sync()
{
    while (fsync(descriptor) != 0) {
        // Some file systems have nothing to bring to a disk.
        if (errno == EINVAL || errno == ENOTSUP)
            break;
        if (errno != EINTR)
            return fail(errno);
    }
    return true;
}

bool NewFile::close()
{
    const int open = std::exchange(descriptor, -1);
    // After EINTR the descriptor is gone all the same, and with it nothing is lost.
    return open < 0 || ::close(open) == 0 || errno == EINTR || fail(errno);
}

void NewFile::discard()
{
    struct stat ours = {};
    struct stat there = {};
    // The name may have been given to another file meanwhile. As long as ours is open no other has its
    // number.
    if (descriptor >= 0 && fstat(descriptor, &ours) == 0 && lstat(name.constData(), &there) == 0
        && ours.st_ino == there.st_ino && ours.st_dev == there.st_dev)
        unlink(name.constData());
    close();
}

} // namespace korvane::recording
