#ifndef KOVANTA_TESTS_IMAGEFILE_STILLORACLE_H
#define KOVANTA_TESTS_IMAGEFILE_STILLORACLE_H

#include "Kovanta/Image.h"

#include <optional>
#include <string>

namespace testing_support {

/// What bare libpng delivers for a file, taken sample by sample from its untransformed rows: PF_Y, PF_RGB or PF_RGBA.
/// Nothing when libpng refuses the file. @p greyAlpha tells whether the file holds grey plus alpha.
std::optional<Ko::Image<unsigned char>> decodePng(const std::string& bytes, bool* greyAlpha = nullptr);

/// What bare libjpeg delivers for a file: PF_Y or PF_JFIF. Nothing when libjpeg refuses the file, or it is coded
/// otherwise.
std::optional<Ko::Image<unsigned char>> decodeJpeg(const std::string& bytes);

} // namespace testing_support

#endif
