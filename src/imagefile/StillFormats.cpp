// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/StillFormats.h"

#include "Kovanta/ImageFile.h"

namespace Ko {

namespace {

constexpr StillFormat stillFormats[] = {
    {".pgm", readPgmImage, writePgmImage},   {".ppm", readPpmImage, writePpmImage},
    {".png", readPngImage, writePngImage},   {".jpeg", readJpegImage, writeJpegImage},
    {".jpg", readJpegImage, writeJpegImage},
};

} // namespace

const StillFormat* findStillFormat(const std::string& extension) {
    for (const StillFormat& format : stillFormats)
        if (extension == format.extension)
            return &format;
    return nullptr;
}

} // namespace Ko
