// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_CONVERT_TRANSPARENCY_H
#define KOVANTA_EXAMPLES_CONVERT_TRANSPARENCY_H

#include <string>

/// Whether a PNG, which has something that could make it so, really has a pixel that can be seen through. The library
/// leaves some kinds of transparency out of what it reads; libpng tells.
bool hasTransparentPixel(const std::string& name);

#endif
