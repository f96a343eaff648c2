// SPDX-License-Identifier: BSD-2-Clause
#include "image/Transpose.h"

#include "image/TransposeBlock.h"

#include <cstring>

namespace Ko {

namespace {

constexpr std::size_t block = transposedAtOnce;
/// Columns of the source that are worked on together: a cache line, so that none is fetched twice.
constexpr std::size_t stripe = 64;

/// The transpose with its rows and columns in the order asked for.
template <std::size_t bytes>
class Transposition {
public:
    Transposition(const PlaneRows<unsigned char*>& t, const PlaneRows<const unsigned char*>& f, std::size_t w,
                  std::size_t h, bool mirrors, bool flips)
        : to(t)
        , from(f)
        , width(w)
        , height(h)
        , mirrored(mirrors)
        , flipped(flips) {}

    void run() const {
        const std::size_t wholeRows = bytes == 1 ? width / block * block : 0; // of the source
        const std::size_t wholeColumns = height / block * block;
        for (std::size_t begin = 0; begin < height; begin += stripe) {
            const std::size_t end = std::min(begin + stripe, height);
            for (std::size_t row = 0; row < wholeRows; row += block) {
                for (std::size_t column = begin; column < std::min(end, wholeColumns); column += block)
                    moveBlock(row, column);
                moveUnits(row, row + block, std::max(begin, wholeColumns), end);
            }
            for (std::size_t row = wholeRows; row < width; row += block)
                moveUnits(row, std::min(row + block, width), begin, end);
        }
    }

private:
    unsigned char* targetRow(std::size_t column) const { return to[flipped ? height - 1 - column : column]; }

    void moveBlock(std::size_t row, std::size_t column) const {
        const std::size_t x = mirrored ? width - block - row : row;
        const unsigned char* const* const firstSource = from.row + (mirrored ? row + block - 1 : row);
        unsigned char* const* const firstTarget = to.row + (flipped ? height - 1 - column : column);
        const std::ptrdiff_t down = mirrored ? -1 : 1;
        const std::ptrdiff_t on = flipped ? -1 : 1;
        transposeBlock([=](std::size_t i) { return firstSource[static_cast<std::ptrdiff_t>(i) * down] + column; },
                       [=](std::size_t i) { return firstTarget[static_cast<std::ptrdiff_t>(i) * on] + x; });
    }

    /// Of the source, rows and columns.
    void moveUnits(std::size_t firstRow, std::size_t endRow, std::size_t firstColumn, std::size_t endColumn) const {
        for (std::size_t column = firstColumn; column < endColumn; ++column) {
            unsigned char* const target = targetRow(column);
            for (std::size_t row = firstRow; row < endRow; ++row)
                std::memcpy(target + (mirrored ? width - 1 - row : row) * bytes, from[row] + column * bytes, bytes);
        }
    }

    const PlaneRows<unsigned char*>& to;
    const PlaneRows<const unsigned char*>& from;
    const std::size_t width;
    const std::size_t height;
    const bool mirrored;
    const bool flipped;
};

} // namespace

void transposeUnits(const PlaneRows<unsigned char*>& to, const PlaneRows<const unsigned char*>& from, std::size_t w,
                    std::size_t h, std::size_t bytes, bool mirrors, bool flips) {
    if (bytes == 1)
        Transposition<1>(to, from, w, h, mirrors, flips).run();
    else if (bytes == 3)
        Transposition<3>(to, from, w, h, mirrors, flips).run();
    else
        Transposition<4>(to, from, w, h, mirrors, flips).run();
}

} // namespace Ko
