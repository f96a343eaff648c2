// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_TRANSPOSESTRIPS_H
#define KOVANTA_SRC_IMAGE_KERNELS_TRANSPOSESTRIPS_H

// Two blocks of 16 x 16 bytes at once, one in each half of vectors of 256 bits. Shorter ones gain nothing on what the
// baseline has, and longer ones little.

#include "image/turn/TransposeStrip.h"

#include <immintrin.h>

namespace Ko {
namespace {

#ifdef __AVX2__
void transposeBothBlocks(unsigned char* const* to, std::ptrdiff_t toStep, std::size_t x,
                         const unsigned char* const* from, std::ptrdiff_t fromStep, std::size_t column) {
    constexpr std::ptrdiff_t side = 16;
    __m256i rows[side];
    __m256i next[side];
    for (std::ptrdiff_t i = 0; i < side; ++i)
        rows[i] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from[i * fromStep] + column));
    for (int round = 0; round < 2; ++round) {
        for (std::ptrdiff_t i = 0; i < side / 2; ++i) {
            next[2 * i] = _mm256_unpacklo_epi8(rows[i], rows[i + side / 2]);
            next[2 * i + 1] = _mm256_unpackhi_epi8(rows[i], rows[i + side / 2]);
        }
        for (std::ptrdiff_t i = 0; i < side / 2; ++i) {
            rows[2 * i] = _mm256_unpacklo_epi8(next[i], next[i + side / 2]);
            rows[2 * i + 1] = _mm256_unpackhi_epi8(next[i], next[i + side / 2]);
        }
    }
    for (std::ptrdiff_t i = 0; i < side; ++i) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to[i * toStep] + x), _mm256_castsi256_si128(rows[i]));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to[(i + side) * toStep] + x), _mm256_extracti128_si256(rows[i], 1));
    }
}
constexpr TransposeStrip* transposeStrip = transposeBothBlocks;
#else
constexpr TransposeStrip* transposeStrip = nullptr;
#endif

} // namespace
} // namespace Ko

#endif
