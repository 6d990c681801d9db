#pragma once

#include <QString>

#include <cstdint>
#include <functional>

/// Makes the disk under a folder, and all that lies in it, fail as a disk does: the system's own calls of
/// this process answer what they would answer then. Otherwise, and once this is gone, the disk is sound. At
/// most one lives at a time; any thread may use the files meanwhile.
class FaultyDisk
{
public:
    explicit FaultyDisk(const QString& folder);
    ~FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// So many bytes can still be written; then the disk is full.
    void setRoom(std::uint64_t bytes);
    /// So many bytes a second are written and no more.
    void setSpeed(double bytesPerSecond);
    /// Bytes from this offset of a file up to the end cannot be read, in files whose names end so.
    void failReads(const QString& nameEnding, std::uint64_t from, std::uint64_t end);
    /// Called once, by the thread that writes first from now on, before it has written.
    void atNextWrite(std::function<void()> action);
    /// Reads that failed so far.
    int failedReads() const;
};
