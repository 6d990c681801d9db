#pragma once

#include <QString>

#include <cstdint>
#include <span>

namespace korvane::recording {

/// Where the bytes of a new recording go. One thread at a time.
class OutputFile
{
public:
    OutputFile() = default;
    virtual ~OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Appends all of the bytes, or as many as there is room for; false with `errorString` unless it was all.
    /// No bytes only ask whether the file can still be written.
    virtual bool write(std::span<const std::uint8_t> bytes) = 0;
    /// Completes the file; false with `errorString` when the system tells only now that it failed.
    virtual bool close() = 0;
    /// Closes the file and takes it away again.
    virtual void discard() = 0;
    /// Bytes written so far.
    virtual std::uint64_t size() const = 0;
    virtual QString errorString() const = 0;
};

} // namespace korvane::recording
