// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_STILLFORMATS_H
#define KOVANTA_SRC_IMAGEFILE_STILLFORMATS_H

#include "Kovanta/Image.h"
#include "imagefile/File.h"

#include <cstddef>
#include <cstdio>
#include <string>

namespace Ko {

/// What readImage() and writeImage() call for a file name's extension, or for what memory holds.
struct StillFormat {
    const char* extension; ///< In lower case, with its dot.
    const char* magic;     ///< The first bytes of a file.
    void (*read)(Image<>& im, const std::string& name);
    void (*write)(const std::string& name, const Image<>& im);
    void (*decode)(Image<>& im, std::FILE* file);
    void (*encode)(OutputFile& file, const Image<>& im);
};

/// The format of an extension (in lower case, with its dot), or null.
const StillFormat* findStillFormat(const std::string& extension);
/// The format of a file's bytes, or null.
const StillFormat* findStillFormat(const void* data, std::size_t size);

// What the public readers and writers do with an open file; a pixmap's comment ends with the file here.
void decodePpm(Image<>& im, std::FILE* file);
void decodePgm(Image<>& im, std::FILE* file);
void decodeJpeg(Image<>& im, std::FILE* file);
void decodePng(Image<>& im, std::FILE* file);
void encodePpm(OutputFile& file, const Image<>& im);
void encodePgm(OutputFile& file, const Image<>& im);
void encodeJpeg(OutputFile& file, const Image<>& im);
void encodePng(OutputFile& file, const Image<>& im);

} // namespace Ko

#endif
