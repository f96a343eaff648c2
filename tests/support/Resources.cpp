#include "support/Resources.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace test {

std::size_t openDescriptors(const std::string& name) {
    std::size_t count = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += std::filesystem::read_symlink(entry, ignored).string().find(name) != std::string::npos;
    return count;
}

std::size_t mappedFiles(const std::string& name) {
    std::size_t count = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        count += line.find(name) != std::string::npos;
    return count;
}

MemoryLimit::MemoryLimit(std::size_t moreBytes) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    if (pages == 0 || getrlimit(RLIMIT_AS, &before) != 0)
        throw std::runtime_error("the process does not know its size");
    rlimit limit = before;
    limit.rlim_cur = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + moreBytes;
    if (setrlimit(RLIMIT_AS, &limit) != 0)
        throw std::runtime_error("setrlimit failed");
}

MemoryLimit::~MemoryLimit() {
    setrlimit(RLIMIT_AS, &before);
}

} // namespace test
