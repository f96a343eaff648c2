// SPDX-License-Identifier: BSD-2-Clause
#include "Transparency.h"

#include <png.h>

#include <vector>

bool hasTransparentPixel(const std::string& name) {
    png_image picture{};
    picture.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&picture, name.c_str()) == 0)
        return true; // as the header says
    picture.format = PNG_FORMAT_GA;
    std::vector<png_byte> samples(PNG_IMAGE_SIZE(picture));
    if (png_image_finish_read(&picture, nullptr, samples.data(), 0, nullptr) == 0)
        return true;
    for (std::size_t alpha = 1; alpha < samples.size(); alpha += 2)
        if (samples[alpha] != 255)
            return true;
    return false;
}
