#pragma once

#include <QFile>
#include <QString>

#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

namespace korvane::recording {

/// A file in memory, read-only. Any thread may read it. Where the file shrinks under its mapping, or its
/// device cannot read a part of it, the lost bytes read as zeros instead of ending the process; `currentSize`
/// and `hasLost` tell what is really there.
class MappedFile
{
public:
    explicit MappedFile(const QString& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// Maps the whole file; false with `errorString` when it cannot be opened or mapped, or is empty.
    bool open();
    const QString& errorString() const { return error; }
    std::span<const std::uint8_t> bytes() const { return mapped; }
    /// Bytes of the mapping that the file still backs.
    std::uint64_t currentSize() const;
    /// Whether bytes in [from, to) have been read as zeros because there was nothing to read. Tells also of
    /// bytes near them.
    bool hasLost(std::uint64_t from, std::uint64_t to) const;
    /// Asks the system to bring these bytes in; a hint.
    void willNeed(std::uint64_t offset, std::uint64_t length) const;

    /// The handler's: marks the block around this byte.
    void markLost(std::uint64_t offset);

private:
    QFile file;
    std::span<const std::uint8_t> mapped;
    /// One flag for each block of `lossBlock` bytes, set by the handler of the signal.
    static constexpr std::uint64_t lossBlock = 64 * 1024;
    std::vector<std::atomic<bool>> lostBlocks;
    std::atomic<bool> anyLost{false};
    QString error;
};

} // namespace korvane::recording
