// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_RESOURCES_H
#define KOVANTA_TESTS_SUPPORT_RESOURCES_H

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

// What a process holds, as the system lists it.
namespace test {

/// Open descriptors of this process, of files with this in their names.
inline std::size_t openDescriptors(const std::string& name = "") {
    std::size_t count = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += std::filesystem::read_symlink(entry, ignored).string().find(name) != std::string::npos;
    return count;
}

/// Mappings of files with this in their names.
inline std::size_t mappedFiles(const std::string& name) {
    std::size_t count = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        count += line.find(name) != std::string::npos;
    return count;
}

} // namespace test

#endif
