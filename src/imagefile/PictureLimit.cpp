// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/PictureLimit.h"

#include "Kovanta/ImageFile.h"
#include "image/SizeLimit.h"

#include <atomic>

namespace Ko {

namespace {

std::atomic<std::uint64_t> mostPixels{0}; // 0: no limit of the application's

} // namespace

void setMaxImagePixels(std::uint64_t pixels) {
    mostPixels = pixels;
}

void requireFits(const char* function, std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel) {
    constexpr std::uint32_t mostRows = 1u << 28; // a table of more row pointers would be absurd by itself
    const std::uint64_t most = mostPixels;
    if (height > mostRows || !fitsArray(std::uint64_t{width} * bytesPerPixel, height) ||
        (most != 0 && std::uint64_t{width} * height > most))
        throwTooLarge(function);
}

} // namespace Ko
