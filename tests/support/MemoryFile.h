// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_MEMORYFILE_H
#define KOVANTA_TESTS_SUPPORT_MEMORYFILE_H

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace test {

/// A file without a disk, for thousands of small ones; has a path like any other.
class MemoryFile {
public:
    MemoryFile()
        : descriptor(memfd_create("still", 0)) {
        if (descriptor < 0)
            throw std::runtime_error("memfd_create failed");
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }
    void hold(const void* bytes, std::size_t size) {
        if (ftruncate(descriptor, 0) != 0 || pwrite(descriptor, bytes, size, 0) != static_cast<ssize_t>(size))
            throw std::runtime_error("memory file cannot be written");
    }
    void hold(const std::string& bytes) { hold(bytes.data(), bytes.size()); }

private:
    int descriptor;
};

} // namespace test

#endif
