#ifndef KOVANTA_TESTS_IMAGEFILE_STILLORACLE_H
#define KOVANTA_TESTS_IMAGEFILE_STILLORACLE_H

#include "Kovanta/Image.h"

#include <optional>
#include <string>

namespace test {

/// What bare libpng delivers for a file, taken sample by sample from its untransformed rows: PF_Y, PF_RGB or PF_RGBA.
/// Nothing when libpng refuses the file.
std::optional<Ko::Image<unsigned char>> decodePng(const std::string& bytes);

/// What bare libjpeg delivers for a file: PF_Y or PF_JFIF. Nothing when libjpeg refuses the file, or it is coded
/// otherwise.
std::optional<Ko::Image<unsigned char>> decodeJpeg(const std::string& bytes);

/// Reads a file into an image of the format, and tells what comes out otherwise than the file's picture in that format
/// has to; the text of an exception, too. Empty when all is right.
std::string wrongReading(const std::string& path, const Ko::Image<unsigned char>& picture, Ko::PIXEL_FORMAT format);

} // namespace test

#endif
