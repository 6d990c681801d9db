#pragma once

#include "tests/fuzz/require.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// A file without a name or a place on a disk.
class MemoryFile
{
public:
    MemoryFile() : handle(memfd_create("recording", MFD_CLOEXEC)) { require(handle >= 0, "there is a file"); }
    ~MemoryFile() { close(handle); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void write(const std::uint8_t* data, std::size_t size) const
    {
        require(::write(handle, data, size) == static_cast<ssize_t>(size), "the file takes its content");
    }
    std::string path() const { return "/proc/self/fd/" + std::to_string(handle); }

private:
    int handle;
};
