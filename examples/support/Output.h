// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_OUTPUT_H
#define KOVANTA_EXAMPLES_SUPPORT_OUTPUT_H

#include <CLI/CLI.hpp>

#include <string>

namespace example {

/// The name of a file to write, refused without an extension.
CLI::Validator fileName();

/// Adds the flag `--force`.
void addForce(CLI::App& program, bool& force);

/// Call before the work. A file that exists is replaced with @p force only, or when somebody at the terminal says yes.
/// @throws std::runtime_error
void requireReplaceable(const std::string& name, bool force);

} // namespace example

#endif
