// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_OUTPUT_H
#define KOVANTA_EXAMPLES_SUPPORT_OUTPUT_H

#include "Rate.h"

#include <Kovanta/VideoOutput.h>

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

/// Opens a video file to write. What is wrong with its name or its size is said in a sentence.
/// @throws std::runtime_error, and what open() throws
void openOutput(Ko::VideoOutputVideoFile& sink, unsigned int width, unsigned int height, const std::string& name,
                Rate rate, unsigned int bitRate);

} // namespace example

#endif
