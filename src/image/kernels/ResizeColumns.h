// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_RESIZECOLUMNS_H
#define KOVANTA_SRC_IMAGE_KERNELS_RESIZECOLUMNS_H

// Columns of scaled copies whose sums of rows are words: 16 are one vector of 256 bits, at every level that has them,
// or two of 128.

#include "image/kernels/ResizeLoops.h"

#include <immintrin.h>

namespace Ko {
namespace {

#ifdef __AVX2__
using Words = __m256i;

inline Words loadWords(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
inline Words repeatDword(std::uint32_t v) {
    return _mm256_set1_epi32(static_cast<int>(v));
}
inline Words repeatWord(std::uint32_t v) {
    return _mm256_set1_epi16(static_cast<short>(v));
}
inline Words addProduct(Words sum, Words a, Words b) {
    return _mm256_add_epi16(sum, _mm256_mullo_epi16(a, b));
}
inline void storeDivided(Byte* dst, Words sums, Words factor, __m128i shift) {
    const Words words = _mm256_srl_epi16(_mm256_mulhi_epu16(sums, factor), shift);
    const __m128i samples = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), samples);
}
/// Sums of pairs, of which a has the first words and b the second ones: of the lower and of the upper of each eight.
inline Words pairSumsLow(Words a, Words b, Words weights) {
    return _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), weights);
}
inline Words pairSumsHigh(Words a, Words b, Words weights) {
    return _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), weights);
}
inline Words addSums(Words a, Words b) {
    return _mm256_add_epi32(a, b);
}
/// The upper halves of products, shifted.
inline Words divided(Words sums, Words factor, __m128i shift) {
    const Words even = _mm256_srli_epi64(_mm256_mul_epu32(sums, factor), 32);
    const Words odd = _mm256_mul_epu32(_mm256_srli_epi64(sums, 32), factor);
    return _mm256_srl_epi32(_mm256_blend_epi32(even, odd, 0xAA), shift);
}
inline void storeSamples(Byte* dst, Words low, Words high) {
    const Words words = _mm256_packus_epi32(low, high);
    const __m128i samples = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), samples);
}
#else
using Words = __m128i;

inline Words loadWords(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
inline Words repeatDword(std::uint32_t v) {
    return _mm_set1_epi32(static_cast<int>(v));
}
inline Words repeatWord(std::uint32_t v) {
    return _mm_set1_epi16(static_cast<short>(v));
}
inline Words addProduct(Words sum, Words a, Words b) {
    return _mm_add_epi16(sum, _mm_mullo_epi16(a, b));
}
inline void storeDivided(Byte* dst, Words sums, Words factor, __m128i shift) {
    const Words words = _mm_srl_epi16(_mm_mulhi_epu16(sums, factor), shift);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm_packus_epi16(words, words));
}
inline Words pairSumsLow(Words a, Words b, Words weights) {
    return _mm_madd_epi16(_mm_unpacklo_epi16(a, b), weights);
}
inline Words pairSumsHigh(Words a, Words b, Words weights) {
    return _mm_madd_epi16(_mm_unpackhi_epi16(a, b), weights);
}
inline Words addSums(Words a, Words b) {
    return _mm_add_epi32(a, b);
}
inline Words divided(Words sums, Words factor, __m128i shift) {
    const Words even = _mm_srli_epi64(_mm_mul_epu32(sums, factor), 32);
    const Words odd = _mm_mul_epu32(_mm_srli_epi64(sums, 32), factor);
    return _mm_srl_epi32(_mm_blend_epi16(even, odd, 0xCC), shift);
}
inline void storeSamples(Byte* dst, Words low, Words high) {
    const Words words = _mm_packus_epi32(low, high);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm_packus_epi16(words, words));
}
#endif

void vectorColumnsInWords(Byte* __restrict dst, const std::uint16_t* __restrict sums, const KernelTaps* taps,
                          std::size_t begin, std::size_t n, std::size_t units, const KernelDivisor& divisor) {
    constexpr std::size_t lanes = ResizeKernels::lanes;
    constexpr std::size_t atOnce = sizeof(Words) / sizeof(std::uint16_t);
    const std::size_t step = units * lanes;
    const Words offset = repeatWord(divisor.offset);
    const Words factor = repeatWord(divisor.factor);
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(divisor.shift));
    for (std::size_t x = 0; x < n; ++x) {
        const KernelTaps t = taps[x];
        const Words first = repeatWord(t.firstWeight);
        const Words inner = repeatWord(t.innerWeight);
        const Words last = repeatWord(t.lastWeight);
        for (std::size_t i = 0; i < step; i += atOnce) {
            const std::uint16_t* column = sums + (t.first - begin) * step + i;
            Words all = addProduct(offset, loadWords(column), first);
            for (std::uint32_t c = 2; c < t.count; ++c)
                all = addProduct(all, loadWords(column += step), inner);
            if (t.count > 1)
                all = addProduct(all, loadWords(column + step), last);
            storeDivided(dst, all, factor, shift);
            dst += atOnce;
        }
    }
}

void vectorColumnsOfWords(Byte* __restrict dst, const std::int16_t* __restrict sums, const KernelTaps* taps,
                          std::size_t begin, std::size_t n, std::size_t units, const KernelDivisor& divisor) {
    constexpr std::size_t lanes = ResizeKernels::lanes;
    constexpr std::size_t atOnce = sizeof(Words) / sizeof(std::int16_t);
    const std::size_t step = units * lanes;
    const Words offset = repeatDword(divisor.offset);
    const Words factor = repeatDword(divisor.factor);
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(divisor.shift));
    for (std::size_t x = 0; x < n; ++x) {
        const KernelTaps t = taps[x];
        const auto weights = [](std::uint32_t first, std::uint32_t second) {
            return repeatDword(first | second << 16);
        };
        const Words inner = weights(t.innerWeight, t.innerWeight);
        const Words firstTwo = weights(t.firstWeight, t.count == 1 ? 0 : t.count == 2 ? t.lastWeight : t.innerWeight);
        const bool odd = t.count % 2 != 0;
        const Words lastTwo = odd ? weights(t.lastWeight, 0) : weights(t.innerWeight, t.lastWeight);
        const std::size_t second = t.count == 1 ? 0 : step;
        const std::size_t beyond = odd ? 0 : step; // of the last two
        const std::uint32_t pairs = (t.count + 1) / 2;
        for (std::size_t i = 0; i < step; i += atOnce) {
            const std::int16_t* column = sums + (t.first - begin) * step + i;
            Words low = offset;
            Words high = offset;
            const auto add = [&](std::size_t next, Words w) {
                const Words a = loadWords(column);
                const Words b = loadWords(column + next);
                low = addSums(low, pairSumsLow(a, b, w));
                high = addSums(high, pairSumsHigh(a, b, w));
                column += 2 * step;
            };
            add(second, firstTwo);
            for (std::uint32_t p = 2; p < pairs; ++p)
                add(step, inner);
            if (pairs > 1)
                add(beyond, lastTwo);
            storeSamples(dst, divided(low, factor, shift), divided(high, factor, shift));
            dst += atOnce;
        }
    }
}

} // namespace
} // namespace Ko

#endif
