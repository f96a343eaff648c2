#include "support/Commands.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace test {

std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string text;
    char part[65536];
    while (const std::size_t n = std::fread(part, 1, sizeof part, pipe.get()))
        text.append(part, n);
    return text;
}

} // namespace test
