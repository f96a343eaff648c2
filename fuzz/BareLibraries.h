// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FUZZ_BARELIBRARIES_H
#define KOVANTA_FUZZ_BARELIBRARIES_H

#include "Kovanta/Image.h"

#include <optional>
#include <string>

namespace fuzz {

/// What bare libpng delivers for a file, taken sample by sample from its untransformed rows: PF_Y, PF_RGB or PF_RGBA.
/// Nothing when libpng refuses the file.
std::optional<Ko::Image<>> decodePng(const std::string& bytes);

/// What bare libjpeg delivers for a file: PF_Y or PF_JFIF. Nothing when libjpeg refuses the file, or it is coded
/// otherwise.
std::optional<Ko::Image<>> decodeJpeg(const std::string& bytes);

} // namespace fuzz

#endif
