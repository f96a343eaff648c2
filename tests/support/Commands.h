#ifndef KOVANTA_TESTS_SUPPORT_COMMANDS_H
#define KOVANTA_TESTS_SUPPORT_COMMANDS_H

#include <string>

namespace test {

/// What a shell command writes to its standard output. @throws std::runtime_error when there is no shell
std::string outputOf(const std::string& command);

} // namespace test

#endif
