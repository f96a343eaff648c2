// SPDX-License-Identifier: BSD-2-Clause
#include "image/turn/Transpose.h"

#include "image/turn/TransposeBlock.h"
#include "image/turn/TransposeStrip.h"

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
                const std::size_t wholeEnd = std::min(end, wholeColumns);
                std::size_t column = begin;
                for (; strip && column + 2 * block <= wholeEnd; column += 2 * block)
                    moveStrip(row, column);
                for (; column < wholeEnd; column += block)
                    moveBlock(row, column);
                moveUnits(row, row + block, std::max(begin, wholeColumns), end);
            }
            for (std::size_t row = wholeRows; row < width; row += block)
                moveUnits(row, std::min(row + block, width), begin, end);
        }
    }

private:
    unsigned char* targetRow(std::size_t column) const { return to[flipped ? height - 1 - column : column]; }

    /// Where a block's rows are in the tables, and the direction in which they follow one another.
    struct Place {
        const unsigned char* const* source;
        std::ptrdiff_t sourceStep;
        unsigned char* const* target;
        std::ptrdiff_t targetStep;
        std::size_t x;
    };
    Place placeOf(std::size_t row, std::size_t column) const {
        return {from.row + (mirrored ? row + block - 1 : row), mirrored ? -1 : 1,
                to.row + (flipped ? height - 1 - column : column), flipped ? -1 : 1,
                mirrored ? width - block - row : row};
    }

    void moveBlock(std::size_t row, std::size_t column) const {
        const Place at = placeOf(row, column);
        const auto signedIndex = [](std::size_t i) {
            return static_cast<std::ptrdiff_t>(i);
        };
        transposeBlock([=](std::size_t i) { return at.source[signedIndex(i) * at.sourceStep] + column; },
                       [=](std::size_t i) { return at.target[signedIndex(i) * at.targetStep] + at.x; });
    }

    void moveStrip(std::size_t row, std::size_t column) const {
        const Place at = placeOf(row, column);
        strip(at.target, at.targetStep, at.x, at.source, at.sourceStep, column);
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
    TransposeStrip* const strip = bytes == 1 ? transposeStripInUse() : nullptr;
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
