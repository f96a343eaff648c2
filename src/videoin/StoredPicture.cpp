// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/StoredPicture.h"

#include "image/ImageLayout.h"
#include "image/PlaneRows.h"
#include "image/RowKernels.h"
#include "image/SampleKernels.h"
#include "videoin/ComponentRows.h"
#include "videoin/RgbRows.h"

#include <cstring>

extern "C" {
#include <libavutil/frame.h>
}

namespace Ko {

namespace {

using Byte = unsigned char;
using Rows = PlaneRows<Byte*>;

/// Samples and rows of a plane that are to be written.
struct Extent {
    std::size_t n;
    std::size_t rows;
};

Extent extentOf(const Image<>& frame, int p, const Rows& to) {
    const ImageLayout::PlaneSize whole = ImageLayout::planeSize(frame, p, frame.width, frame.height);
    return {least(whole.width, to.width), least(whole.height, to.height)};
}

void repeat(Byte* dst, const Byte* src, std::size_t n) {
    sampleKernels().repeated(dst, src, n / 2);
    if (n % 2 != 0)
        dst[n - 1] = src[n / 2];
}

/// Each sample 2^shift times, n samples in all.
void widen(Byte* dst, const Byte* src, std::size_t n, int shift, RowRoom& room) {
    if (shift == 2) {
        repeat(room.row(3), src, (n + 1) / 2);
        src = room.row(3);
    }
    if (shift != 0)
        repeat(dst, src, n);
    else if (dst != src)
        std::memcpy(dst, src, n);
}

/// A plane of chroma at full resolution.
void replicate(const Rows& to, Extent all, const ComponentRows& from, const StoredFormat& format, RowRoom& room) {
    const int shift = format.chromaShiftX;
    const std::size_t block = std::size_t{1} << format.chromaShiftY;
    const std::size_t stored = ((all.n - 1) >> shift) + 1;
    for (std::size_t r = 0; r < all.rows; r += block) {
        const std::size_t some = least(block, all.rows - r);
        Byte* target = shift == 0 ? to[r] : room.row(0);
        const Byte* samples = from.at(r / block, target, stored);
        if (shift == 1 && some == 2) {
            rowKernels().doubled(to[r], to[r + 1], samples, all.n / 2);
            if (all.n % 2 != 0)
                to[r][all.n - 1] = to[r + 1][all.n - 1] = samples[stored - 1];
            continue;
        }
        widen(to[r], samples, all.n, shift, room);
        for (std::size_t more = 1; more < some; ++more)
            std::memcpy(to[r + more], to[r], all.n);
    }
}

/// A plane of chroma for blocks of 2 x 2 pixels.
void average(const Rows& to, Extent all, const ComponentRows& from, const StoredFormat& format, RowRoom& room) {
    const int shift = format.chromaShiftX;
    const std::size_t stored = shift == 0 ? 2 * all.n : ((all.n - 1) >> (shift - 1)) + 1;
    for (std::size_t r = 0; r < all.rows; ++r) {
        const std::size_t upper = 2 * r >> format.chromaShiftY;
        const std::size_t lower = (2 * r + 1) >> format.chromaShiftY;
        if (upper == lower && shift == 1) {
            from.into(to[r], upper, stored);
            continue;
        }
        const Byte* row0 = from.at(upper, room.row(0), stored);
        const Byte* row1 = upper == lower ? row0 : from.at(lower, room.row(1), stored);
        if (shift == 0) {
            rowKernels().meanOfBlocks(to[r], row0, row1, all.n);
            continue;
        }
        Byte* mean = shift == 1 ? to[r] : room.row(2);
        if (upper != lower)
            sampleKernels().meanOfRows(mean, row0, row1, stored);
        widen(to[r], upper == lower ? row0 : mean, all.n, shift - 1, room);
    }
}

void convertComponents(Image<>& frame, const AVFrame& picture, const StoredFormat& format, RowRoom& room) {
    const Rows y = targetRows(frame, 0);
    const Extent luma = extentOf(frame, 0, y);
    const ComponentRows stored(format, 0, picture, room);
    for (std::size_t r = 0; r < luma.rows; ++r)
        stored.into(y[r], r, luma.n);
    for (int p = 1; p <= 2; ++p) {
        const Rows to = targetRows(frame, p);
        const Extent chroma = extentOf(frame, p, to);
        if (chroma.n == 0)
            continue;
        if (format.kind == StoredFormat::Kind::grey)
            for (std::size_t r = 0; r < chroma.rows; ++r)
                std::memset(to[r], 128, chroma.n);
        else
            (frame.format == PF_YCC444P ? replicate : average)(to, chroma, {format, p, picture, room}, format, room);
    }
}

void convertRgb(Image<>& frame, const AVFrame& picture, const StoredFormat& format, RowRoom& room) {
    const Rows y = targetRows(frame, 0);
    const Rows cb = targetRows(frame, 1);
    const Rows cr = targetRows(frame, 2);
    const Extent luma = extentOf(frame, 0, y);
    const RgbRows stored(format, picture, room);
    if (frame.format == PF_YCC444P) {
        const std::size_t n = least(luma.n, cb.width, cr.width);
        const std::size_t rows = n == 0 ? 0 : least(luma.rows, cb.height, cr.height);
        for (std::size_t r = 0; r < rows; ++r)
            stored.into(y[r], cb[r], cr[r], r, n);
        return;
    }
    const Extent blue = extentOf(frame, 1, cb);
    const Extent red = extentOf(frame, 2, cr);
    for (std::size_t r = 0; r < luma.rows && luma.n != 0; ++r) {
        const std::size_t odd = r % 2;
        stored.into(y[r], room.row(3 + odd), room.row(5 + odd), r, luma.n);
        if (odd != 0 && r / 2 < least(blue.rows, red.rows)) {
            rowKernels().meanOfBlocks(cb[r / 2], room.row(3), room.row(4), least(blue.n, luma.n / 2));
            rowKernels().meanOfBlocks(cr[r / 2], room.row(5), room.row(6), least(red.n, luma.n / 2));
        }
    }
}

} // namespace

void convertStored(Image<>& frame, const AVFrame& picture, const StoredFormat& format, RowRoom& room) {
    const auto width = static_cast<unsigned int>(picture.width);
    const auto height = static_cast<unsigned int>(picture.height);
    room.fit(width);
    ImageLayout::resizeTarget(frame, width, height, "VideoInputVideoFile::read");
    const bool rgb = format.kind == StoredFormat::Kind::rgb || format.kind == StoredFormat::Kind::palette;
    (rgb ? convertRgb : convertComponents)(frame, picture, format, room);
}

} // namespace Ko
