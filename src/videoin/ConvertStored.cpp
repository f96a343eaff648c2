// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/ConvertStored.h"

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
        repeat(room.row(5), src, (n + 1) / 2);
        src = room.row(5);
    }
    if (shift != 0)
        repeat(dst, src, n);
    else if (dst != src)
        std::memcpy(dst, src, n);
}

/// Cb and Cr, which many formats have in turn.
class ChromaRows {
public:
    ChromaRows(const StoredFormat& format, const AVFrame& picture, RowRoom& room)
        : component{{format, 1, picture, room}, {format, 2, picture, room}}
        , inTurn(component[0].isBeside(component[1])) {}

    struct Samples {
        const Byte* of[2];
    };
    /// The first n samples of a row each, in @p cb and @p cr unless the picture has them as they should be.
    Samples at(std::size_t row, Byte* cb, Byte* cr, std::size_t n) const {
        if (!inTurn)
            return {component[0].at(row, cb, n), component[1].at(row, cr, n)};
        component[0].both(cb, cr, row, n);
        return {cb, cr};
    }

    bool joins(std::size_t n) const { return component[0].joins(n, inTurn) && component[1].joins(n, inTurn); }

private:
    ComponentRows component[2];
    bool inTurn;
};

/// At full resolution.
void replicate(const Rows (&to)[2], Extent all, const ChromaRows& from, const StoredFormat& format, RowRoom& room) {
    const int shift = format.chromaShiftX;
    const std::size_t block = std::size_t{1} << format.chromaShiftY;
    const std::size_t stored = ((all.n - 1) >> shift) + 1;
    for (std::size_t r = 0; r < all.rows; r += block) {
        const std::size_t some = least(block, all.rows - r);
        const bool whole = shift == 0;
        const ChromaRows::Samples samples =
            from.at(r / block, whole ? to[0][r] : room.row(0), whole ? to[1][r] : room.row(2), stored);
        for (int p = 0; p < 2; ++p) {
            Byte* row = to[p][r];
            if (shift == 1 && some == 2) {
                rowKernels().doubled(row, to[p][r + 1], samples.of[p], all.n / 2);
                if (all.n % 2 != 0)
                    row[all.n - 1] = to[p][r + 1][all.n - 1] = samples.of[p][stored - 1];
                continue;
            }
            widen(row, samples.of[p], all.n, shift, room);
            for (std::size_t more = 1; more < some; ++more)
                std::memcpy(to[p][r + more], row, all.n);
        }
    }
}

/// For blocks of 2 x 2 pixels.
void average(const Rows (&to)[2], Extent all, const ChromaRows& from, const StoredFormat& format, RowRoom& room) {
    const int shift = format.chromaShiftX;
    if (shift == 1 && format.chromaShiftY == 1 && from.joins(all.n) && followOneAnother(to[0], all.n, all.rows) &&
        followOneAnother(to[1], all.n, all.rows))
        all = {all.n * all.rows, 1};
    const std::size_t stored = shift == 0 ? 2 * all.n : ((all.n - 1) >> (shift - 1)) + 1;
    for (std::size_t r = 0; r < all.rows; ++r) {
        const std::size_t upper = 2 * r >> format.chromaShiftY;
        const std::size_t lower = (2 * r + 1) >> format.chromaShiftY;
        const bool asStored = upper == lower && shift == 1;
        const ChromaRows::Samples above =
            from.at(upper, asStored ? to[0][r] : room.row(0), asStored ? to[1][r] : room.row(2), stored);
        const ChromaRows::Samples below = upper == lower ? above : from.at(lower, room.row(1), room.row(3), stored);
        for (int p = 0; p < 2; ++p) {
            const Byte* row = above.of[p];
            if (shift == 0) {
                rowKernels().meanOfBlocks(to[p][r], row, below.of[p], all.n);
                continue;
            }
            if (upper != lower) {
                Byte* mean = shift == 1 ? to[p][r] : room.row(4);
                sampleKernels().meanOfRows(mean, row, below.of[p], stored);
                row = mean;
            }
            widen(to[p][r], row, all.n, shift - 1, room);
        }
    }
}

void convertComponents(Image<>& frame, const AVFrame& picture, const StoredFormat& format, RowRoom& room) {
    const Rows y = targetRows(frame, 0);
    Extent luma = extentOf(frame, 0, y);
    const ComponentRows stored(format, 0, picture, room);
    if (stored.joins(luma.n) && followOneAnother(y, luma.n, luma.rows))
        luma = {luma.n * luma.rows, luma.rows == 0 ? 0 : std::size_t{1}};
    for (std::size_t r = 0; r < luma.rows; ++r)
        stored.into(y[r], r, luma.n);

    const Rows to[2] = {targetRows(frame, 1), targetRows(frame, 2)};
    const Extent blue = extentOf(frame, 1, to[0]);
    const Extent red = extentOf(frame, 2, to[1]);
    const Extent chroma{least(blue.n, red.n), least(blue.rows, red.rows)};
    if (chroma.n == 0)
        return;
    if (format.kind == StoredFormat::Kind::grey)
        for (std::size_t r = 0; r < chroma.rows; ++r)
            for (const Rows& plane : to)
                std::memset(plane[r], 128, chroma.n);
    else
        (frame.format == PF_YCC444P ? replicate : average)(to, chroma, {format, picture, room}, format, room);
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
