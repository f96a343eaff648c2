// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Wrap.h"

#include "image/ArrayStorage.h"
#include "image/ImageLayout.h"
#include "image/PlaneRows.h"
#include "image/SizeLimit.h"
#include "util/Errors.h"

#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace Ko {

namespace {

using ImageLayout::isIdle;
using ImageLayout::planeCount;
using ImageLayout::PlaneSize;
using ImageLayout::planeSize;

void require(bool good, int p, const char* before, const char* after) {
    if (!good)
        throwLogicError("wrapMemory", before + std::to_string(p) + after);
}

/// A noalloc plane of the size, without rows.
void leaveOut(Array2D<>& plane, PlaneSize s) {
    if (!plane.alloc && !plane.rows && plane.width == s.width && plane.height == s.height)
        return;
    plane.newData(s.width, s.height, false);
    plane.newData(0, 0, false);
    plane.view = nullptr;
}

/// Whether the image is a wrapper of that size already, whose planes have the row tables asked for.
bool isShaped(const Image<>& im, std::uint32_t w, std::uint32_t h, const bool (&given)[planeCount]) {
    if (im.width != w || im.height != h)
        return false;
    for (int p = 0; p < planeCount; ++p) {
        if (im.horDiv[p] == 0)
            continue;
        const Array2D<>& plane = im.plane[p];
        const PlaneSize s = planeSize(im, p, w, h);
        if (s.width == 0 || s.height == 0) {
            if (plane.rows)
                return false;
            continue;
        }
        if (plane.alloc || plane.width != s.width || plane.height != s.height || (given[p] && !plane.rows))
            return false;
    }
    return true;
}

void pointRows(Array2D<>& plane, const PlaneMemory& memory) {
    unsigned char* row = memory.first;
    for (std::size_t y = 0;;) {
        plane.rows[y] = row;
        if (++y == plane.height)
            break;
        row += memory.stride; // not past the last row, which may be the first of the memory
    }
    resetView(plane);
}

void point(Image<>& im, unsigned int w, unsigned int h, const PlaneMemory (&planes)[planeCount]) {
    bool given[planeCount] = {};
    for (int p = 0; p < planeCount; ++p) {
        const PlaneMemory& memory = planes[p];
        require(im.horDiv[p] != 0 || !memory.first, p, "The format has no plane ", ".");
        if (im.horDiv[p] == 0)
            continue;
        const PlaneSize s = planeSize(im, p, w, h);
        if (s.width == 0 || s.height == 0)
            continue;
        require(memory.first || isIdle(im.format, p), p, "Plane ", " has no memory.");
        require(!memory.first || s.height == 1 || std::abs(memory.stride) >= static_cast<std::ptrdiff_t>(s.width), p,
                "Plane ", " has a stride below its row's length.");
        given[p] = memory.first != nullptr;
    }
    if (!ImageLayout::fits(im, w, h))
        throwTooLarge("wrapMemory");
    if (!isShaped(im, w, h, given))
        ImageLayout::size(im, w, h, false);
    for (int p = 0; p < planeCount; ++p)
        if (given[p])
            pointRows(im.plane[p], planes[p]);
        else if (im.horDiv[p] != 0)
            leaveOut(im.plane[p], planeSize(im, p, w, h));
}

Image<> rectangleOf(const Image<>& im, unsigned int x, unsigned int y, unsigned int w, unsigned int h) {
    const auto requireInside = [](bool inside) {
        if (!inside)
            throw std::out_of_range(errorText("wrapRectangle", "The rectangle leaves the image."));
    };
    requireInside(x <= im.width && w <= im.width - x && y <= im.height && h <= im.height - y);
    requireInside(ImageLayout::fits(im, w, h));
    Image<> part(im.format);
    for (int p = 0; p < planeCount; ++p) {
        if (part.horDiv[p] == 0)
            continue;
        const bool pairs = x % part.horDiv[p] != 0 || y % part.verDiv[p] != 0 || x % part.bytesPerPixelDen != 0;
        if (pairs && !isIdle(im.format, p))
            throwLogicError("wrapRectangle", "The corner splits a pair of pixels.");
    }
    part.sequenceNumber = im.sequenceNumber;
    ImageLayout::size(part, w, h, false);
    for (int p = 0; p < planeCount; ++p) {
        Array2D<>& plane = part.plane[p];
        if (part.horDiv[p] == 0 || !plane.rows)
            continue;
        const auto from = sourceRows(im, p);
        const std::size_t column = part.planar ? x / part.horDiv[p] : planeSize(part, p, x, 1).width;
        const std::size_t row = y / part.verDiv[p];
        const bool held = column + plane.width <= from.width && row + plane.height <= from.height;
        if (!held && isIdle(im.format, p)) {
            leaveOut(plane, planeSize(part, p, w, h));
            continue;
        }
        requireInside(held);
        for (std::size_t r = 0; r < plane.height; ++r)
            plane.rows[r] = im.plane[p].view[row + r] + column;
    }
    return part;
}

} // namespace

Image<> wrapMemory(PIXEL_FORMAT format, unsigned int w, unsigned int h, const PlaneMemory (&planes)[planeCount]) {
    Image<> im(format);
    point(im, w, h, planes);
    return im;
}

ConstImage wrapConstMemory(PIXEL_FORMAT format, unsigned int w, unsigned int h,
                           const ConstPlaneMemory (&planes)[planeCount]) {
    PlaneMemory writable[planeCount];
    for (int p = 0; p < planeCount; ++p)
        writable[p] = {const_cast<unsigned char*>(planes[p].first), planes[p].stride};
    return ConstImage(wrapMemory(format, w, h, writable));
}

void rewrapMemory(Image<>& im, unsigned int w, unsigned int h, const PlaneMemory (&planes)[planeCount]) {
    point(im, w, h, planes);
}

Image<> wrapRectangle(Image<>& im, unsigned int x, unsigned int y, unsigned int w, unsigned int h) {
    return rectangleOf(im, x, y, w, h);
}

ConstImage wrapRectangle(const Image<>& im, unsigned int x, unsigned int y, unsigned int w, unsigned int h) {
    return ConstImage(rectangleOf(im, x, y, w, h));
}

} // namespace Ko
