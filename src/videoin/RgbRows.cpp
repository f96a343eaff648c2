// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/RgbRows.h"

#include "image/RowKernels.h"
#include "image/SampleKernels.h"
#include "util/Errors.h"
#include "videoin/ComponentRows.h"

#include <cstring>

extern "C" {
#include <libavutil/frame.h>
}

namespace Ko {

namespace {

using Byte = unsigned char;

} // namespace

RgbRows::RgbRows(const StoredFormat& f, const AVFrame& p, RowRoom& r)
    : format(f)
    , picture(p)
    , room(r) {
    const bool indexed = format.kind == StoredFormat::Kind::palette;
    if (!picture.data[0] || (indexed && !picture.data[1]))
        throwRuntimeError("VideoInputVideoFile::read", "The decoder's picture has no samples.");
    if (indexed)
        fillPalette();
    else
        findKernel();
}

/// A palette's colours are 32-bit numbers, which processors that put the low byte first have as blue, green, red.
void RgbRows::fillPalette() {
    sampleKernels().bgrxToYcc(palette[0], palette[1], palette[2], picture.data[1], 256);
}

void RgbRows::findKernel() {
    const StoredComponent& red = format.component[0];
    const StoredComponent& green = format.component[1];
    const StoredComponent& blue = format.component[2];
    for (const StoredComponent& c : format.component)
        if (c.depth != 8 || c.shift != 0 || c.plane != 0 || c.step != red.step)
            return;
    const bool redFirst = green.offset == red.offset + 1 && blue.offset == red.offset + 2;
    const bool blueFirst = green.offset == blue.offset + 1 && red.offset == blue.offset + 2;
    if (!redFirst && !blueFirst)
        return;
    offset = static_cast<std::size_t>(redFirst ? red.offset : blue.offset);
    if (red.step == 3)
        kernel = redFirst ? rowKernels().bt601.rgbToYcc : rowKernels().bgrToYcc;
    else if (red.step == 4)
        kernel = redFirst ? rowKernels().bt601.rgbxToYcc : sampleKernels().bgrxToYcc;
}

/// Where a pixel's fourth byte comes first, that of the last pixel would lie behind the row.
void RgbRows::convertPacked(Byte* y, Byte* cb, Byte* cr, const Byte* src, std::size_t n) const {
    if (offset == 0)
        return kernel(y, cb, cr, src, n);
    kernel(y, cb, cr, src + offset, n - 1);
    Byte last[4] = {};
    std::memcpy(last, src + 4 * (n - 1) + offset, 3);
    kernel(y + n - 1, cb + n - 1, cr + n - 1, last, 1);
}

void RgbRows::into(Byte* y, Byte* cb, Byte* cr, std::size_t row, std::size_t n) const {
    const Byte* src = picture.data[0] + static_cast<std::ptrdiff_t>(row) * picture.linesize[0];
    if (kernel)
        return convertPacked(y, cb, cr, src, n);
    if (format.kind == StoredFormat::Kind::palette) {
        for (std::size_t i = 0; i < n; ++i) {
            y[i] = palette[0][src[i]];
            cb[i] = palette[1][src[i]];
            cr[i] = palette[2][src[i]];
        }
        return;
    }
    const Byte* components[3];
    for (int c = 0; c < 3; ++c)
        components[c] = ComponentRows(format, c, picture, room).at(row, room.row(static_cast<std::size_t>(c)), n);
    sampleKernels().planesToRgbx(room.pixels(), components[0], components[1], components[2], n);
    rowKernels().bt601.rgbxToYcc(y, cb, cr, room.pixels(), n);
}

} // namespace Ko
