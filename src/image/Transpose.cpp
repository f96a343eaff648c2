// SPDX-License-Identifier: BSD-2-Clause
#include "image/Transpose.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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
        const unsigned char* sources[block];
        unsigned char* targets[block];
        const std::size_t x = mirrored ? width - block - row : row;
        for (std::size_t i = 0; i < block; ++i) {
            sources[i] = from[mirrored ? row + block - 1 - i : row + i] + column;
            targets[i] = targetRow(column + i) + x;
        }
        transposeBlock(targets, sources);
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

void transposeBlock(unsigned char* const* to, const unsigned char* const* from) {
#ifdef __SSE2__
    // Four rounds of interleaving row i with row i + 8 bring each byte to its place.
    __m128i rows[block];
    __m128i next[block];
    for (std::size_t i = 0; i < block; ++i)
        rows[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from[i]));
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < block / 2; ++i) {
            next[2 * i] = _mm_unpacklo_epi8(rows[i], rows[i + block / 2]);
            next[2 * i + 1] = _mm_unpackhi_epi8(rows[i], rows[i + block / 2]);
        }
        for (std::size_t i = 0; i < block / 2; ++i) {
            rows[2 * i] = _mm_unpacklo_epi8(next[i], next[i + block / 2]);
            rows[2 * i + 1] = _mm_unpackhi_epi8(next[i], next[i + block / 2]);
        }
    }
    for (std::size_t i = 0; i < block; ++i)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to[i]), rows[i]);
#else
    for (std::size_t j = 0; j < block; ++j)
        for (std::size_t i = 0; i < block; ++i)
            to[j][i] = from[i][j];
#endif
}

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
