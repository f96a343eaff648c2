// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_STILLS_H
#define KOVANTA_EXAMPLES_SUPPORT_STILLS_H

#include <string>
#include <vector>

namespace example {

/// Whether the name's extension is that of a still that the library reads.
bool isStill(const std::string& name);

/// The stills of a directory in the order of their names, byte by byte as Ko::VideoInputImageFile has them, or with
/// @p natural so that 2 comes before 10.
/// @throws std::runtime_error when there is none
std::vector<std::string> listStills(const std::string& directory, bool natural);

} // namespace example

#endif
