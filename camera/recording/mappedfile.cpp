#include "camera/recording/mappedfile.h"

#include <QDebug>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <mutex>

#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace korvane::recording {

namespace {

/// The mappings whose lost pages are to read as zeros. A signal handler looks at them: plain atomics, no
/// lock.
struct GuardedRange
{
    std::atomic<std::uintptr_t> begin{0};
    std::atomic<std::uintptr_t> end{0};
    std::atomic<MappedFile*> owner{nullptr};
};
std::array<GuardedRange, 256> guardedRanges;
std::mutex guardMutex;
struct sigaction previousAction;
std::uintptr_t pageSize = 4096;

/// Puts a page of zeros at this address. By the bare system call where it takes plain arguments: the thread
/// sanitizer's own mmap would count as a write to the page.
bool placeZeros(void* page)
{
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED;
#if defined(__linux__) && defined(__LP64__)
    return syscall(SYS_mmap, page, pageSize, PROT_READ, flags, -1, 0L) != -1;
#else
    return mmap(page, pageSize, PROT_READ, flags, -1, 0) != MAP_FAILED;
#endif
}

/// A page of a mapping that its file no longer backs raises SIGBUS. Puts a page of zeros in its place.
void onBusError(int signal, siginfo_t* info, void*)
{
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    for (const GuardedRange& range : guardedRanges) {
        if (address >= range.begin.load(std::memory_order_acquire)
            && address < range.end.load(std::memory_order_acquire)) {
            // The address is the kernel's: there is no object to point into.
            void* const page = reinterpret_cast<void*>(address & ~(pageSize - 1)); // NOLINT
            // Marked first: whoever has read the zeros finds the mark.
            if (MappedFile* const owner = range.owner.load(std::memory_order_acquire))
                owner->markLost(address - range.begin.load(std::memory_order_acquire));
            if (placeZeros(page))
                return;
        }
    }
    // Not ours: the fault happens again under whatever was there before.
    sigaction(signal, &previousAction, nullptr);
}

void guard(MappedFile* owner, std::uintptr_t begin, std::uintptr_t end)
{
    const std::lock_guard lock(guardMutex);
    static const bool installed = [] {
        pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        struct sigaction action = {};
        action.sa_sigaction = onBusError;
        action.sa_flags = SA_SIGINFO;
        sigemptyset(&action.sa_mask);
        return sigaction(SIGBUS, &action, &previousAction) == 0;
    }();
    if (!installed)
        return;
    for (GuardedRange& range : guardedRanges) {
        if (range.end.load() == 0) {
            range.owner.store(owner, std::memory_order_release);
            range.begin.store(begin, std::memory_order_release);
            range.end.store(end, std::memory_order_release);
            return;
        }
    }
}

void unguard(std::uintptr_t begin)
{
    const std::lock_guard lock(guardMutex);
    for (GuardedRange& range : guardedRanges) {
        if (range.end.load() != 0 && range.begin.load() == begin) {
            range.end.store(0, std::memory_order_release);
            range.begin.store(0, std::memory_order_release);
            range.owner.store(nullptr, std::memory_order_release);
            return;
        }
    }
}

} // namespace

MappedFile::MappedFile(const QString& path) : file(path) {}

MappedFile::~MappedFile()
{
    if (mapped.empty())
        return;
    const auto begin = reinterpret_cast<std::uintptr_t>(mapped.data());
    // In this order: once unmapped, the addresses may belong to another file that is guarded already.
    unguard(begin);
    file.unmap(const_cast<uchar*>(mapped.data()));
}

bool MappedFile::open()
{
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return false;
    }
    const qint64 size = file.size();
    if (size <= 0) {
        error = QStringLiteral("the file is empty");
        return false;
    }
    const uchar* const data = file.map(0, size);
    if (!data) {
        error = file.errorString();
        return false;
    }
    mapped = {data, static_cast<std::size_t>(size)};
    lostBlocks = std::vector<std::atomic<bool>>(mapped.size() / lossBlock + 1);
    guard(this, reinterpret_cast<std::uintptr_t>(data),
          reinterpret_cast<std::uintptr_t>(data) + mapped.size());
    return true;
}

std::uint64_t MappedFile::currentSize() const
{
    struct stat status = {};
    if (fstat(file.handle(), &status) != 0)
        return mapped.size();
    return std::min<std::uint64_t>(mapped.size(),
                                   static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0)));
}

void MappedFile::markLost(std::uint64_t offset)
{
    lostBlocks[offset / lossBlock].store(true, std::memory_order_relaxed);
    anyLost.store(true, std::memory_order_release);
}

bool MappedFile::hasLost(std::uint64_t from, std::uint64_t to) const
{
    if (!anyLost.load(std::memory_order_acquire) || from >= to)
        return false;
    const std::uint64_t last = std::min<std::uint64_t>((to - 1) / lossBlock + 1, lostBlocks.size());
    for (std::uint64_t block = from / lossBlock; block < last; ++block) {
        if (lostBlocks[block].load(std::memory_order_relaxed))
            return true;
    }
    return false;
}

void MappedFile::willNeed(std::uint64_t offset, std::uint64_t length) const
{
    const std::uint64_t size = std::min<std::uint64_t>(mapped.size(), currentSize());
    const std::uint64_t first = offset / pageSize * pageSize;
    const std::uint64_t last = std::min(size, offset + length);
    if (first >= last)
        return;
#ifdef MADV_POPULATE_READ
    madvise(const_cast<uchar*>(mapped.data()) + first, last - first, MADV_POPULATE_READ);
#endif
}

} // namespace korvane::recording
