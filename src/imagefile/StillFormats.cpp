// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/StillFormats.h"

#include "Kovanta/ImageFile.h"

#include <cstring>

namespace Ko {

namespace {

constexpr StillFormat stillFormats[] = {
    {".pgm", "P5", readPgmImage, writePgmImage, decodePgm, encodePgm},
    {".ppm", "P6", readPpmImage, writePpmImage, decodePpm, encodePpm},
    {".png", "\x89PNG\r\n\x1a\n", readPngImage, writePngImage, decodePng, encodePng},
    {".jpeg", "\xff\xd8\xff", readJpegImage, writeJpegImage, decodeJpeg, encodeJpeg},
    {".jpg", "\xff\xd8\xff", readJpegImage, writeJpegImage, decodeJpeg, encodeJpeg},
};

} // namespace

const StillFormat* findStillFormat(const std::string& extension) {
    for (const StillFormat& format : stillFormats)
        if (extension == format.extension)
            return &format;
    return nullptr;
}

const StillFormat* findStillFormat(const void* data, std::size_t size) {
    for (const StillFormat& format : stillFormats) {
        const std::size_t length = std::strlen(format.magic);
        if (size >= length && std::memcmp(data, format.magic, length) == 0)
            return &format;
    }
    return nullptr;
}

} // namespace Ko
