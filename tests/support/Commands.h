// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_COMMANDS_H
#define KOVANTA_TESTS_SUPPORT_COMMANDS_H

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace test {

/// What a shell command writes to its standard output. @throws std::runtime_error when there is no shell
inline std::string outputOf(const std::string& command) {
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

#endif
