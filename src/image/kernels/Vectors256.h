// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS256_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORS256_H

// The vector operations of Vectors512.h for AVX2, as far as they are one instruction or two; Lanes.h makes the others
// of them. Shuffles stay within the 128-bit halves here, so a block is laid out as two runs of 16 pixels, one in each
// half.

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace Ko {
namespace {

using Vec = __m256i;
constexpr std::size_t vectorBytes = 32;

inline Vec loadVector(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
inline void storeVector(void* p, Vec v) {
    _mm256_storeu_si256(static_cast<__m256i*>(p), v);
}
/// Past the cache, to where a vector may lie.
inline void streamVector(void* p, Vec v) {
    _mm256_stream_si256(static_cast<__m256i*>(p), v);
}
inline Vec broadcastWords(int v) {
    return _mm256_set1_epi16(static_cast<short>(v));
}
inline Vec broadcastDwords(int v) {
    return _mm256_set1_epi32(v);
}
inline Vec broadcastBytes(int v) {
    return _mm256_set1_epi8(static_cast<char>(v));
}
inline Vec zero() {
    return _mm256_setzero_si256();
}
inline Vec andBits(Vec a, Vec b) {
    return _mm256_and_si256(a, b);
}
inline Vec orBits(Vec a, Vec b) {
    return _mm256_or_si256(a, b);
}
inline Vec xorBits(Vec a, Vec b) {
    return _mm256_xor_si256(a, b);
}
inline Vec subtractWords(Vec a, Vec b) {
    return _mm256_sub_epi16(a, b);
}
template <int bits>
inline Vec shiftLeftWords(Vec v) {
    return _mm256_slli_epi16(v, bits);
}
/// A multiplication, because processors shift where they shuffle, and where this is used there is enough to shuffle.
template <int bits>
inline Vec shiftRightSignedWords(Vec v) {
    return _mm256_mulhi_epi16(v, broadcastWords(1 << (16 - bits)));
}
template <int bits>
inline Vec shiftRightWords(Vec v) {
    return _mm256_srli_epi16(v, bits);
}
/// To the nearest, signed.
template <int bits>
inline Vec shiftRightRounded(Vec v) {
    return _mm256_mulhrs_epi16(v, broadcastWords(1 << (15 - bits)));
}
inline Vec addBytes(Vec a, Vec b) {
    return _mm256_add_epi8(a, b);
}
inline Vec subtractBytesSaturated(Vec a, Vec b) {
    return _mm256_subs_epu8(a, b);
}
inline Vec minBytes(Vec a, Vec b) {
    return _mm256_min_epu8(a, b);
}
inline Vec addWords(Vec a, Vec b) {
    return _mm256_add_epi16(a, b);
}
/// Halves of the sums of unsigned words, rounded up.
inline Vec averageWords(Vec a, Vec b) {
    return _mm256_avg_epu16(a, b);
}
/// The upper halves of the products of words.
inline Vec multiplyWordsHigh(Vec a, Vec b) {
    return _mm256_mulhi_epu16(a, b);
}
/// Sums of neighbouring bytes, as words.
inline Vec addBytePairs(Vec v) {
    return _mm256_maddubs_epi16(v, broadcastBytes(1));
}
/// The same with each byte times one of signed weights; no sum may pass a signed word.
inline Vec addWeightedBytePairs(Vec v, Vec weights) {
    return _mm256_maddubs_epi16(v, weights);
}
/// Words to bytes, clamped; undoes interleaveBytesLow() and interleaveBytesHigh().
inline Vec packWords(Vec low, Vec high) {
    return _mm256_packus_epi16(low, high);
}
inline Vec packSignedWords(Vec low, Vec high) {
    return _mm256_packs_epi16(low, high);
}
/// What packWords() made of two vectors' words, in the order of the words.
inline Vec deinterleave(Vec packed) {
    return _mm256_permute4x64_epi64(packed, 0xD8);
}
/// What packs made of four vectors' 32-bit lanes, in the order of the lanes.
inline Vec orderDwords(Vec packed) {
    return _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}
inline Vec interleaveBytesLow(Vec a, Vec b) {
    return _mm256_unpacklo_epi8(a, b);
}
inline Vec interleaveBytesHigh(Vec a, Vec b) {
    return _mm256_unpackhi_epi8(a, b);
}
inline Vec interleaveWordsLow(Vec a, Vec b) {
    return _mm256_unpacklo_epi16(a, b);
}
inline Vec interleaveWordsHigh(Vec a, Vec b) {
    return _mm256_unpackhi_epi16(a, b);
}
/// Sums of two products of signed words.
inline Vec multiplyPairs(Vec a, Vec b) {
    return _mm256_madd_epi16(a, b);
}
#ifdef __AVXVNNI__
constexpr bool dotProductsAdd = true; // in one instruction
inline Vec addDotProducts(Vec sum, Vec a, Vec b) {
    return _mm256_dpwssd_avx_epi32(sum, a, b);
}
constexpr bool byteDotProducts = true; // in one instruction
/// To each 32-bit sum, its four bytes.
inline Vec addByteQuads(Vec sum, Vec v) {
    return _mm256_dpbusd_avx_epi32(sum, v, broadcastBytes(1));
}
#else
constexpr bool dotProductsAdd = false;
inline Vec addDotProducts(Vec sum, Vec a, Vec b) {
    return _mm256_add_epi32(sum, multiplyPairs(a, b));
}
constexpr bool byteDotProducts = false;
inline Vec addByteQuads(Vec sum, Vec v) {
    return addDotProducts(sum, addBytePairs(v), broadcastWords(1));
}
#endif
inline Vec shuffleBytes(Vec v, Vec index) {
    return _mm256_shuffle_epi8(v, index);
}

/// Four packed pixels of quarter q in each half.
template <int step>
inline Vec loadPixels(const unsigned char* src, int q) {
    const auto load = [](const unsigned char* p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    };
    const unsigned char* low = src + 4 * step * q;
    const unsigned char* high = low + 16 * step;
    const bool last = step == 3 && q == 3; // do not reach past the block
    return _mm256_set_m128i(last ? _mm_srli_si128(load(high - 4), 4) : load(high), load(low));
}

/// 32-bit lanes to words, as they are.
inline Vec packDwords(Vec low, Vec high) {
    return _mm256_packus_epi32(low, high);
}
template <int bits>
inline Vec shiftRightDwords(Vec v) {
    return _mm256_srli_epi32(v, bits);
}
/// The even words of a and the odd ones of b.
inline Vec wordsInTurn(Vec a, Vec b) {
    return _mm256_blend_epi16(a, b, 0xAA);
}
/// Bytes of b where the mask's are set, of a elsewhere.
inline Vec select(Vec a, Vec b, Vec mask) {
    return _mm256_blendv_epi8(a, b, mask);
}

inline Vec swapHalves(Vec v) {
    return _mm256_permute4x64_epi64(v, 0x4E);
}
/// What interleaveBytesLow() and interleaveBytesHigh() gave, in order.
inline void storeInterleaved(unsigned char* dst, Vec low, Vec high) {
    storeVector(dst, _mm256_permute2x128_si256(low, high, 0x20));
    storeVector(dst + 32, _mm256_permute2x128_si256(low, high, 0x31));
}

/// The triples of each run of 16 pixels as three parts of 16 bytes.
struct Parts {
    Vec part[3];
};
inline Parts loadParts(const unsigned char* src) {
    const Vec v0 = loadVector(src);
    const Vec v1 = loadVector(src + 32);
    const Vec v2 = loadVector(src + 64);
    return {
        {_mm256_blend_epi32(v0, v1, 0xF0), _mm256_permute2x128_si256(v0, v2, 0x21), _mm256_blend_epi32(v1, v2, 0xF0)}};
}
/// The same, the upper run in the lower half.
inline Parts loadPartsSwapped(const unsigned char* src) {
    const Vec v0 = loadVector(src);
    const Vec v1 = loadVector(src + 32);
    const Vec v2 = loadVector(src + 64);
    return {{_mm256_permute2x128_si256(v1, v0, 0x21), _mm256_blend_epi32(v2, v0, 0xF0),
             _mm256_permute2x128_si256(v2, v1, 0x21)}};
}
template <class Store>
inline void storeParts(unsigned char* dst, Vec part0, Vec part1, Vec part2) {
    Store::store(dst, _mm256_permute2x128_si256(part0, part1, 0x20));
    Store::store(dst + 32, _mm256_blend_epi32(part2, part0, 0xF0));
    Store::store(dst + 64, _mm256_permute2x128_si256(part1, part2, 0x31));
}

} // namespace
} // namespace Ko

#endif
