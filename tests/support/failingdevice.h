#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// Lets the device fail under every mapping of this file: from now on reading these bytes of it, whole pages,
/// raises what the kernel raises for a sector that cannot be read. The file's size stays.
inline void failReads(const std::string& path, std::uint64_t offset, std::uint64_t length)
{
    const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    const std::uint64_t first = offset / page * page;
    const std::uint64_t last = (offset + length + page - 1) / page * page;
    std::ifstream maps("/proc/self/maps");
    bool found = false;
    for (std::string line; std::getline(maps, line);) {
        if (line.size() < path.size() || line.compare(line.size() - path.size(), path.size(), path) != 0)
            continue;
        std::istringstream fields(line);
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        char dash = 0;
        fields >> std::hex >> begin >> dash >> end;
        if (last > end - begin)
            throw std::runtime_error("the mapping is shorter than that");
        // Behind the end of a file of no length there is nothing to read either.
        const int nothing = memfd_create("nothing", MFD_CLOEXEC);
        void* const place = reinterpret_cast<void*>(begin + first); // NOLINT
        if (mmap(place, last - first, PROT_READ, MAP_SHARED | MAP_FIXED, nothing, 0) == MAP_FAILED)
            throw std::runtime_error("the pages cannot be replaced");
        close(nothing);
        found = true;
    }
    if (!found)
        throw std::runtime_error("no mapping of " + path);
}
