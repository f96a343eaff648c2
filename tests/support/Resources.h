#ifndef KOVANTA_TESTS_SUPPORT_RESOURCES_H
#define KOVANTA_TESTS_SUPPORT_RESOURCES_H

#include <sys/resource.h>

#include <cstddef>
#include <string>

// What a process holds, as the system lists it.
namespace test {

/// Open descriptors of this process, of files with this in their names.
std::size_t openDescriptors(const std::string& name = "");

/// Mappings of files with this in their names.
std::size_t mappedFiles(const std::string& name);

/// While it lives, the process can take this much memory beyond what it has: a broken limit then ends in
/// std::bad_alloc (or in the sanitizer's report) instead of taking the machine with it.
class MemoryLimit {
public:
    explicit MemoryLimit(std::size_t moreBytes);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

private:
    rlimit before;
};

} // namespace test

#endif
