// SPDX-License-Identifier: BSD-3-Clause

// A file that is only memory, for readers that take a path; Linux only.
#pragma once

#include "fuzz/law.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace velmora {

class MemoryFile {
public:
    // Ends the program when there is no room for `bytes`.
    MemoryFile(const uint8_t* bytes, std::size_t size) : fd(memfd_create("input", MFD_CLOEXEC)) {
        require(fd != -1 && ::write(fd, bytes, size) == ssize_t(size), "a memory file can be had");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(fd); }

    // Opens at its first byte, as often as needed while the object lives.
    std::string path() const { return "/proc/self/fd/" + std::to_string(fd); }

private:
    int fd;
};

} // namespace velmora
