// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Rotate.h"

#include "Kovanta/PixelFormat.h"
#include "image/ImageLayout.h"
#include "image/MissingSamples.h"
#include "image/PlaneRows.h"
#include "image/RowKernels.h"
#include "image/SharedMemory.h"
#include "image/turn/Transpose.h"
#include "util/Errors.h"

#include <algorithm>
#include <cstring>

namespace Ko {

namespace {

using SourceRows = PlaneRows<const unsigned char*>;
using TargetRows = PlaneRows<unsigned char*>;

void requireKnown(PIXEL_FORMAT format) {
    // Of halved chroma a quarter turn would have to make doubled one.
    if (format == PF_UNKNOWN || format > PF_BGR || format == PF_JFIF422P)
        throwLogicError("rotate", "Don't know how to rotate " + fmt2string(format) + ".");
}

/// An orientation as three steps: rows become columns, then left and right are swapped, then top and bottom.
struct Turn {
    bool transposes;
    bool mirrors;
    bool flips;
};

Turn turnOf(Orientation orientation) {
    switch (orientation) {
    case OR_UPRIGHT:
        return {false, false, false};
    case OR_MIRRORED:
        return {false, true, false};
    case OR_ROTATED_180:
        return {false, true, true};
    case OR_FLIPPED:
        return {false, false, true};
    case OR_TRANSPOSED:
        return {true, false, false};
    case OR_ROTATED_90:
        return {true, true, false};
    case OR_ANTI_TRANSPOSED:
        return {true, true, true};
    case OR_ROTATED_270:
        return {true, false, true};
    }
    throwLogicError("rotate", "Unknown orientation.");
}

void mirrorQuads(unsigned char* dst, const unsigned char* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        std::memcpy(dst + 4 * i, src + 4 * (n - 1 - i), 4);
}

/// Rows stay rows.
void moveRows(const TargetRows& to, const SourceRows& from, std::size_t width, std::size_t height, std::size_t bytes,
              Turn turn) {
    const auto mirror = bytes == 1 ? rowKernels().mirrorBytes : bytes == 3 ? rowKernels().mirrorTriples : mirrorQuads;
    for (std::size_t y = 0; y < height; ++y) {
        unsigned char* const target = to[turn.flips ? height - 1 - y : y];
        if (turn.mirrors)
            mirror(target, from[y], width);
        else
            std::memcpy(target, from[y], width * bytes);
    }
}

/// Unit by unit, whatever the two hold of the w x h units that the target should have.
void moveUnits(const TargetRows& to, const SourceRows& from, std::size_t width, std::size_t height, std::size_t bytes,
               Turn turn) {
    for (std::size_t y = 0; y < least(height, to.height); ++y)
        for (std::size_t x = 0; x < least(width, to.width / bytes); ++x) {
            std::size_t column = turn.mirrors ? width - 1 - x : x;
            std::size_t row = turn.flips ? height - 1 - y : y;
            if (turn.transposes)
                std::swap(column, row);
            if (row < from.height && column < from.width / bytes)
                std::memcpy(to[y] + x * bytes, from[row] + column * bytes, bytes);
        }
}

} // namespace

void rotate(Image<>& dst, const Image<>& src, Orientation orientation) {
    requireKnown(src.format);
    const Turn turn = turnOf(orientation);
    if (&dst == &src || sharingOf(dst, src).any)
        return rotate(dst, Image<>(src), orientation);
    const std::uint32_t width = turn.transposes ? src.height : src.width;
    const std::uint32_t height = turn.transposes ? src.width : src.height;
    ImageLayout::takeShape(dst, src.format, width, height, "rotate");
    const bool whole = isWhole(src) && isWhole(dst);
    if (!whole)
        blacken(dst);
    const std::size_t bytes = ImageLayout::unitBytes(src);
    for (int p = 0; p < ImageLayout::planeCount; ++p) {
        if (!ImageLayout::isUsed(src, p))
            continue;
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t w = width / dst.horDiv[p];
        const std::size_t h = height / dst.verDiv[p];
        if (w == 0 || h == 0)
            continue; // there need be no rows
        if (!whole)
            moveUnits(to, from, w, h, bytes, turn);
        else if (!turn.transposes)
            moveRows(to, from, w, h, bytes, turn);
        else
            transposeUnits(to, from, w, h, bytes, turn.mirrors, turn.flips);
    }
}

} // namespace Ko
