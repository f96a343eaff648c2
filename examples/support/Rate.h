// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_RATE_H
#define KOVANTA_EXAMPLES_SUPPORT_RATE_H

#include <Kovanta/Frac.h>

#include <CLI/CLI.hpp>

#include <string>

namespace example {

using Rate = Ko::Frac<unsigned int>; // frames per second

/// Adds an option that takes "25", "12.5" and "30000/1001".
void addRate(CLI::App& program, Rate& rate, const std::string& description, const char* name = "--rate");

/// 0 where the rate is not known.
double perSecond(const Rate& rate);

} // namespace example

#endif
