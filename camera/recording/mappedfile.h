#pragma once

#include <QFile>
#include <QString>

#include <cstdint>
#include <span>

namespace korvane::recording {

/// A file in memory, read-only. Any thread may read it. Where the file shrinks under its mapping, the lost
/// bytes read as zeros instead of ending the process; `currentSize` tells what is really there.
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
    /// Asks the system to bring these bytes in; a hint.
    void willNeed(std::uint64_t offset, std::uint64_t length) const;

private:
    QFile file;
    std::span<const std::uint8_t> mapped;
    QString error;
};

} // namespace korvane::recording
