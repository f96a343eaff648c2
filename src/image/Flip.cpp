#include "Kovanta/Flip.h"

#include "Kovanta/Image.h"
#include "image/FormatTable.h"
#include "image/ImageLayout.h"
#include "image/PlaneRows.h"
#include "image/RowKernels.h"
#include "image/SizeLimit.h"
#include "util/Errors.h"

#include <cstring>
#include <string>

namespace Ko {

namespace {

using Byte = unsigned char;
using Im = Image<unsigned char>;

/// What moves together in a format: how many planes take part, and the bytes of one unit.
struct Units {
    int planes;
    std::size_t bytes;
};

Units unitsOf(const Im& im, const char* function) {
    switch (im.format) {
    case PF_Y:
        return {1, 1};
    case PF_YCC444P:
        return {3, 1};
    case PF_RGB:
        return {1, 3};
    default:
        throwLogicError(function, "Image not planar, nor packed!");
    }
}

/// Gives @p dst the source's format and size. A size that does not fit is refused before the format changes, unless a
/// wrapped plane has its say first.
void prepareTarget(Im& dst, const Im& src, const char* function) {
    const FormatEntry* entry = findFormat(src.format);
    bool allOwning = true;
    for (int p = 0; entry && p < 4; ++p)
        allOwning = allOwning && (entry->horDiv[p] == 0 || dst.plane[p].alloc);
    if (entry && entry->kind != FormatKind::none && allOwning && !ImageLayout::fits(src, src.width, src.height))
        throwTooLarge(function);
    dst.fmt(src.format);
    ImageLayout::resizeTarget(dst, src.width, src.height, function);
}

} // namespace

void flipVer(Im& im) {
    const Units units = unitsOf(im, "flipVer");
    for (int p = 0; p < units.planes; ++p) {
        const auto rows = targetRows(im, p);
        const std::size_t n = least(im.width * units.bytes, rows.width);
        const std::size_t height = least(im.height, rows.height);
        for (std::size_t y = 0; y < height / 2; ++y)
            rowKernels().swapRows(rows[y], rows[height - 1 - y], n);
    }
}

void flipHor(Im& im) {
    const Units units = unitsOf(im, "flipHor");
    const auto mirror = units.bytes == 1 ? rowKernels().mirrorBytesInPlace : rowKernels().mirrorTriplesInPlace;
    for (int p = 0; p < units.planes; ++p) {
        const auto rows = targetRows(im, p);
        const std::size_t n = least(im.width, rows.width / units.bytes);
        const std::size_t height = least(im.height, rows.height);
        for (std::size_t y = 0; y < height; ++y)
            mirror(rows[y], n);
    }
}

void flipVer(Im& dst, const Im& src) {
    prepareTarget(dst, src, "flipVer");
    const Units units = unitsOf(src, "flipVer");
    for (int p = 0; p < units.planes; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width * units.bytes, from.width, to.width);
        const std::size_t height = least(src.height, from.height, to.height);
        for (std::size_t y = 0; y < height; ++y)
            std::memcpy(to[height - 1 - y], from[y], n);
    }
}

void flipHor(Im& dst, const Im& src) {
    prepareTarget(dst, src, "flipHor");
    const Units units = unitsOf(src, "flipHor");
    const auto mirror = units.bytes == 1 ? rowKernels().mirrorBytes : rowKernels().mirrorTriples;
    for (int p = 0; p < units.planes; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width, from.width / units.bytes, to.width / units.bytes);
        const std::size_t height = least(src.height, from.height, to.height);
        for (std::size_t y = 0; y < height; ++y)
            mirror(to[y], from[y], n);
    }
}

} // namespace Ko
