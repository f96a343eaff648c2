// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Flip.h"

#include "Kovanta/Image.h"
#include "image/ImageLayout.h"
#include "image/MissingSamples.h"
#include "image/PlaneRows.h"
#include "image/RowKernels.h"
#include "image/SharedMemory.h"
#include "util/Errors.h"

#include <stdexcept>

namespace Ko {

namespace {

using Byte = unsigned char;

/// What moves together in a format: how many planes take part, and the bytes of one unit.
struct Units {
    int planes;
    std::size_t bytes;
};

/// No planes for a format that is not flipped.
Units unitsOf(const Image<>& im) {
    switch (im.format) {
    case PF_Y:
        return {1, 1};
    case PF_YCC444P:
        return {3, 1};
    case PF_RGB:
        return {1, 3};
    default:
        return {0, 1};
    }
}

std::logic_error refusal(const char* function) {
    return std::logic_error(errorText(function, "Image not planar, nor packed!"));
}

Units unitsInPlace(const Image<>& im, const char* function) {
    const Units units = unitsOf(im);
    if (units.planes == 0)
        throw refusal(function);
    return units;
}

/// ImageLayout::takeShape(), and the refusal of a format, which comes after it.
Units prepareTarget(Image<>& dst, const Image<>& src, const char* function) {
    const Units units = unitsOf(src);
    if (units.planes == 0) {
        const std::logic_error composed = refusal(function); // while the target is as it was
        ImageLayout::takeShape(dst, src.format, src.width, src.height, function);
        throw composed;
    }
    ImageLayout::takeShape(dst, src.format, src.width, src.height, function);
    if (!isWhole(src))
        blacken(dst);
    return units;
}

} // namespace

void flipVer(Image<>& im) {
    const Units units = unitsInPlace(im, "flipVer");
    for (int p = 0; p < units.planes; ++p) {
        const auto rows = targetRows(im, p);
        const std::size_t n = least(im.width * units.bytes, rows.width);
        const std::size_t height = least(im.height, rows.height);
        for (std::size_t y = 0; y < height / 2; ++y)
            rowKernels().swapRows(rows[y], rows[height - 1 - y], n);
    }
}

void flipHor(Image<>& im) {
    const Units units = unitsInPlace(im, "flipHor");
    const auto mirror = units.bytes == 1 ? rowKernels().mirrorBytesInPlace : rowKernels().mirrorTriplesInPlace;
    for (int p = 0; p < units.planes; ++p) {
        const auto rows = targetRows(im, p);
        const std::size_t n = least(im.width, rows.width / units.bytes);
        const std::size_t height = least(im.height, rows.height);
        for (std::size_t y = 0; y < height; ++y)
            mirror(rows[y], n);
    }
}

void flipVer(Image<>& dst, const Image<>& src) {
    if (sharingOf(dst, src).any)
        return flipVer(dst, Image<>(src));
    const Units units = prepareTarget(dst, src, "flipVer");
    const auto copyRow = rowKernels().copyRow;
    for (int p = 0; p < units.planes; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width * units.bytes, from.width, to.width);
        const std::size_t last = src.height - std::size_t{1};
        const std::size_t end = least(src.height, from.height);
        for (std::size_t y = src.height - least(src.height, to.height); y < end; ++y)
            copyRow(to[last - y], from[y], n);
    }
}

void flipHor(Image<>& dst, const Image<>& src) {
    if (sharingOf(dst, src).any)
        return flipHor(dst, Image<>(src));
    const Units units = prepareTarget(dst, src, "flipHor");
    const auto mirror = units.bytes == 1 ? rowKernels().mirrorBytes : rowKernels().mirrorTriples;
    for (int p = 0; p < units.planes; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        // Of the source's units those that it has and whose place the target has.
        const std::size_t first = src.width - least(src.width, to.width / units.bytes);
        const std::size_t end = least(src.width, from.width / units.bytes);
        const std::size_t height = first < end ? least(src.height, from.height, to.height) : 0;
        const std::size_t skippedThere = (src.width - end) * units.bytes;
        const std::size_t skippedHere = first * units.bytes;
        for (std::size_t y = 0; y < height; ++y)
            mirror(to[y] + skippedThere, from[y] + skippedHere, end - first);
    }
}

} // namespace Ko
