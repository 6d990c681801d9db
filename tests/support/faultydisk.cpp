#include "tests/support/faultydisk.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <limits>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct Disk
{
    std::mutex mutex;
    std::string folder;
    std::uint64_t room = std::numeric_limits<std::uint64_t>::max();
    double bytesPerSecond = 0; // 0: as fast as it is
    std::chrono::steady_clock::time_point free;
    std::string unreadable; // how the names of the files end
    std::uint64_t unreadableFrom = 0;
    std::uint64_t unreadableEnd = 0;
    int failedReads = 0;
    std::function<void()> nextWrite;
};

std::atomic<bool> faulty{false};

Disk& disk()
{
    static Disk only;
    return only;
}

/// Where a file lies that is open, as long as it has a name; else an empty text.
std::string pathOf(int descriptor)
{
    std::array<char, 4096> buffer{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), buffer.data(), buffer.size());
    return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length)) : std::string();
}

bool liesOnIt(std::string_view path, std::string_view folder)
{
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

ssize_t writeFaulty(int descriptor, const void* bytes, std::size_t count)
{
    const std::string path = pathOf(descriptor);
    std::function<void()> action;
    std::chrono::steady_clock::time_point due;
    {
        Disk& it = disk();
        const std::lock_guard lock(it.mutex);
        if (liesOnIt(path, it.folder)) {
            action = std::exchange(it.nextWrite, nullptr);
            if (it.room == 0 && count > 0) {
                errno = ENOSPC;
                return -1;
            }
            count = std::min<std::uint64_t>(count, it.room);
            if (it.room != std::numeric_limits<std::uint64_t>::max())
                it.room -= count;
            if (it.bytesPerSecond > 0) {
                it.free = std::max(it.free, std::chrono::steady_clock::now())
                    + std::chrono::nanoseconds(
                              static_cast<std::int64_t>(1e9 / it.bytesPerSecond * double(count)));
                due = it.free;
            }
        }
    }
    if (action)
        action();
    std::this_thread::sleep_until(due);
    return syscall(SYS_write, descriptor, bytes, count);
}

ssize_t readFaulty(int descriptor, void* bytes, std::size_t count)
{
    const std::string path = pathOf(descriptor);
    const off_t at = lseek(descriptor, 0, SEEK_CUR);
    Disk& it = disk();
    const std::lock_guard lock(it.mutex);
    if (!it.unreadable.empty() && at >= 0 && liesOnIt(path, it.folder) && path.ends_with(it.unreadable)) {
        const auto from = static_cast<std::uint64_t>(at);
        if (from < it.unreadableEnd && from + count > it.unreadableFrom) {
            // What stands before the bad place can be had.
            if (from >= it.unreadableFrom) {
                ++it.failedReads;
                errno = EIO;
                return -1;
            }
            count = it.unreadableFrom - from;
        }
    }
    return syscall(SYS_read, descriptor, bytes, count);
}

} // namespace

// These stand before the system's own for all of the program, its libraries included. Their names are given
// to the assembler only: headers may define the functions themselves.
extern "C" {
__attribute__((visibility("default"))) ssize_t writeOfTheProgram(int descriptor, const void* bytes,
                                                                 std::size_t count) __asm__("write");
__attribute__((visibility("default"))) ssize_t readOfTheProgram(int descriptor, void* bytes,
                                                                std::size_t count) __asm__("read");

ssize_t writeOfTheProgram(int descriptor, const void* bytes, std::size_t count)
{
    return faulty ? writeFaulty(descriptor, bytes, count) : syscall(SYS_write, descriptor, bytes, count);
}

ssize_t readOfTheProgram(int descriptor, void* bytes, std::size_t count)
{
    return faulty ? readFaulty(descriptor, bytes, count) : syscall(SYS_read, descriptor, bytes, count);
}
}

FaultyDisk::FaultyDisk(const QString& folder)
{
    // Folders may lead elsewhere; the kernel tells where files really lie.
    QDir().mkpath(folder);
    Disk& it = disk();
    const std::lock_guard lock(it.mutex);
    it.folder = QFile::encodeName(QDir(folder).canonicalPath()).toStdString();
    faulty = true;
}

FaultyDisk::~FaultyDisk()
{
    faulty = false;
    Disk& it = disk();
    const std::lock_guard lock(it.mutex);
    it.folder.clear();
    it.room = std::numeric_limits<std::uint64_t>::max();
    it.bytesPerSecond = 0;
    it.free = {};
    it.unreadable.clear();
    it.failedReads = 0;
    it.nextWrite = nullptr;
}

void FaultyDisk::setRoom(std::uint64_t bytes)
{
    const std::lock_guard lock(disk().mutex);
    disk().room = bytes;
}

void FaultyDisk::setSpeed(double bytesPerSecond)
{
    const std::lock_guard lock(disk().mutex);
    disk().bytesPerSecond = bytesPerSecond;
}

void FaultyDisk::failReads(const QString& nameEnding, std::uint64_t from, std::uint64_t end)
{
    const std::lock_guard lock(disk().mutex);
    disk().unreadable = nameEnding.toStdString();
    disk().unreadableFrom = from;
    disk().unreadableEnd = end;
}

void FaultyDisk::atNextWrite(std::function<void()> action)
{
    const std::lock_guard lock(disk().mutex);
    disk().nextWrite = std::move(action);
}

int FaultyDisk::failedReads() const
{
    const std::lock_guard lock(disk().mutex);
    return disk().failedReads;
}
