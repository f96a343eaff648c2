// SPDX-License-Identifier: BSD-2-Clause
#include "image/MissingSamples.h"

#include "image/ImageLayout.h"
#include "image/PlaneRows.h"

#include <cstring>

namespace Ko {

namespace {

/// In a plane that was filled but for its last column, row or both.
void completePlane(Array2D<>& plane, std::size_t w, std::size_t h, bool loneColumn, bool loneRow) {
    if (!plane.alloc || !plane.rows)
        return;
    if ((loneColumn && w == 1) || (loneRow && h == 1)) {
        for (std::size_t y = 0; y < h; ++y)
            std::memset(plane.view[y], 128, w);
        return;
    }
    if (loneColumn)
        for (std::size_t y = 0; y < h; ++y)
            plane.view[y][w - 1] = plane.view[y][w - 2];
    if (loneRow)
        std::memcpy(plane.view[h - 1], plane.view[h - 2], w);
}

} // namespace

bool isWhole(const Image<>& im) noexcept {
    for (int p = 0; p < ImageLayout::planeCount; ++p) {
        if (!ImageLayout::isUsed(im, p))
            continue;
        const ImageLayout::PlaneSize s = ImageLayout::planeSize(im, p, im.width, im.height);
        const auto held = sourceRows(im, p);
        if (s.width != 0 && s.height != 0 && (held.width < s.width || held.height < s.height))
            return false;
    }
    // A row length that wrapped at 32 bits is less than the width asks for.
    return im.planar || ImageLayout::planeSize(im, 0, im.width, 1).width >= im.width;
}

void blacken(Image<>& im) noexcept {
    for (int p = 0; p < ImageLayout::planeCount; ++p) {
        if (!ImageLayout::isUsed(im, p))
            continue;
        const ImageLayout::PlaneSize s = ImageLayout::planeSize(im, p, im.width, im.height);
        const auto rows = targetRows(im, p);
        for (std::size_t y = 0; y < least(s.height, rows.height); ++y)
            std::memset(rows[y], 0, least(s.width, rows.width));
    }
}

void completeLoneSamples(Image<>& dst, PIXEL_FORMAT source) noexcept {
    if (dst.format != PF_YCC444P)
        return;
    const bool oddWidth = dst.width % 2 != 0;
    const bool oddHeight = dst.height % 2 != 0;
    if (source == PF_YUY2 && oddWidth) {
        for (int p = 0; p < 3; ++p)
            completePlane(dst.plane[p], dst.width, dst.height, true, false);
    } else if (source == PF_YCC420P || (source == PF_JFIF422P && dst.width == 1)) {
        for (int p = 1; p < 3; ++p)
            completePlane(dst.plane[p], dst.width, dst.height, oddWidth, oddHeight && source == PF_YCC420P);
    }
}

} // namespace Ko
