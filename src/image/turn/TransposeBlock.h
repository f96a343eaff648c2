// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_TURN_TRANSPOSEBLOCK_H
#define KOVANTA_SRC_IMAGE_TURN_TRANSPOSEBLOCK_H

#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Ko {

constexpr std::size_t transposedAtOnce = 16;

/// A block of 16 x 16 bytes: column j of the source rows becomes target row j.
/// @param from, to give a row's first byte in the block
template <class Source, class Target>
inline void transposeBlock(Source from, Target to) {
    constexpr std::size_t block = transposedAtOnce;
#ifdef __SSE2__
    // Four rounds of interleaving row i with row i + 8 bring each byte to its place.
    __m128i rows[block];
    __m128i next[block];
    for (std::size_t i = 0; i < block; ++i)
        rows[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from(i)));
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
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to(i)), rows[i]);
#else
    for (std::size_t j = 0; j < block; ++j)
        for (std::size_t i = 0; i < block; ++i)
            to(j)[i] = from(i)[j];
#endif
}

} // namespace Ko

#endif
