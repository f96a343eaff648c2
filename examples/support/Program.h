// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_PROGRAM_H
#define KOVANTA_EXAMPLES_SUPPORT_PROGRAM_H

#include <CLI/CLI.hpp>

#include <functional>
#include <limits>
#include <string>

namespace example {

/// A program's command line and its way out: `--help`, `--version`, the message of what went wrong, the exit code.
class Program : public CLI::App {
public:
    /// @param description whole sentences, without line ends
    /// @param more what stands below the options: the keys, say
    Program(int argc, char** argv, const std::string& description, const std::string& more = "");

    /// Parses the command line and does the work.
    /// @return the exit code: 0; 1 when the work throws or standard output takes nothing more; 2 for a wrong command
    ///         line; 128 and its number after a signal that Stop.h caught
    int run(const std::function<void()>& work);

private:
    int argc;
    char** argv;
};

/// Refuses what is no whole number from @p low to @p high.
CLI::Validator wholeNumber(long low, long high = std::numeric_limits<int>::max());

} // namespace example

#endif
