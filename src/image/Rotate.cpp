// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Rotate.h"

#include "Kovanta/PixelFormat.h"
#include "image/ImageLayout.h"
#include "image/MissingSamples.h"
#include "image/PlaneRows.h"
#include "image/RowKernels.h"
#include "image/SharedMemory.h"
#include "image/Transpose.h"
#include "util/Errors.h"

#include <algorithm>
#include <cstring>

namespace Ko {

namespace {

using SourceRows = PlaneRows<const unsigned char*>;
using TargetRows = PlaneRows<unsigned char*>;

/// What moves together in a format: how many planes take part, and the bytes of one unit.
struct Units {
    int planes;
    std::size_t bytes;
};

Units unitsOf(PIXEL_FORMAT format) {
    switch (format) {
    case PF_Y:
        return {1, 1};
    case PF_YCC444P:
    case PF_YCC420P:
        return {3, 1};
    case PF_RGB:
        return {1, 3};
    default:
        throwLogicError("rotate", "Don't know how to rotate " + fmt2string(format) + ".");
    }
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

/// Rows stay rows.
void moveRows(const TargetRows& to, const SourceRows& from, std::size_t width, std::size_t height, std::size_t bytes,
              Turn turn) {
    const auto mirror = bytes == 1 ? rowKernels().mirrorBytes : rowKernels().mirrorTriples;
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
    const Units units = unitsOf(src.format);
    const Turn turn = turnOf(orientation);
    if (&dst == &src || sharingOf(dst, src).any)
        return rotate(dst, Image<>(src), orientation);
    const std::uint32_t width = turn.transposes ? src.height : src.width;
    const std::uint32_t height = turn.transposes ? src.width : src.height;
    ImageLayout::takeShape(dst, src.format, width, height, "rotate");
    const bool whole = isWhole(src) && isWhole(dst);
    if (!whole)
        blacken(dst);
    for (int p = 0; p < units.planes; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t w = width / dst.horDiv[p];
        const std::size_t h = height / dst.verDiv[p];
        if (w == 0 || h == 0)
            continue; // there need be no rows
        if (!whole)
            moveUnits(to, from, w, h, units.bytes, turn);
        else if (!turn.transposes)
            moveRows(to, from, w, h, units.bytes, turn);
        else if (units.bytes == 1)
            transposeBytes(to, from, w, h, turn.mirrors, turn.flips);
        else
            transposeTriples(to, from, w, h, turn.mirrors, turn.flips);
    }
}

} // namespace Ko
