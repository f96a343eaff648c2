// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS128_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORS128_H

// The vector operations of Vectors512.h for SSE4.1 with SSSE3, as far as they are one instruction or two; Lanes.h
// makes the others of them.

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace Ko {
namespace {

using Vec = __m128i;
constexpr std::size_t vectorBytes = 16;

inline Vec loadVector(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
inline void storeVector(void* p, Vec v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}
/// Past the cache, to where a vector may lie.
inline void streamVector(void* p, Vec v) {
    _mm_stream_si128(static_cast<__m128i*>(p), v);
}
inline Vec broadcastWords(int v) {
    return _mm_set1_epi16(static_cast<short>(v));
}
inline Vec broadcastDwords(int v) {
    return _mm_set1_epi32(v);
}
inline Vec broadcastBytes(int v) {
    return _mm_set1_epi8(static_cast<char>(v));
}
inline Vec zero() {
    return _mm_setzero_si128();
}
inline Vec andBits(Vec a, Vec b) {
    return _mm_and_si128(a, b);
}
inline Vec orBits(Vec a, Vec b) {
    return _mm_or_si128(a, b);
}
inline Vec xorBits(Vec a, Vec b) {
    return _mm_xor_si128(a, b);
}
inline Vec subtractWords(Vec a, Vec b) {
    return _mm_sub_epi16(a, b);
}
template <int bits>
inline Vec shiftLeftWords(Vec v) {
    return _mm_slli_epi16(v, bits);
}
/// A multiplication, because processors shift where they shuffle, and where this is used there is enough to shuffle.
template <int bits>
inline Vec shiftRightSignedWords(Vec v) {
    return _mm_mulhi_epi16(v, broadcastWords(1 << (16 - bits)));
}
template <int bits>
inline Vec shiftRightWords(Vec v) {
    return _mm_srli_epi16(v, bits);
}
/// To the nearest, signed.
template <int bits>
inline Vec shiftRightRounded(Vec v) {
    return _mm_mulhrs_epi16(v, broadcastWords(1 << (15 - bits)));
}
inline Vec addBytes(Vec a, Vec b) {
    return _mm_add_epi8(a, b);
}
inline Vec subtractBytesSaturated(Vec a, Vec b) {
    return _mm_subs_epu8(a, b);
}
inline Vec minBytes(Vec a, Vec b) {
    return _mm_min_epu8(a, b);
}
inline Vec addWords(Vec a, Vec b) {
    return _mm_add_epi16(a, b);
}
/// Halves of the sums of unsigned words, rounded up.
inline Vec averageWords(Vec a, Vec b) {
    return _mm_avg_epu16(a, b);
}
/// The upper halves of the products of words.
inline Vec multiplyWordsHigh(Vec a, Vec b) {
    return _mm_mulhi_epu16(a, b);
}
/// Sums of neighbouring bytes, as words.
inline Vec addBytePairs(Vec v) {
    return _mm_maddubs_epi16(v, broadcastBytes(1));
}
/// The same with each byte times one of signed weights; no sum may pass a signed word.
inline Vec addWeightedBytePairs(Vec v, Vec weights) {
    return _mm_maddubs_epi16(v, weights);
}
/// Words to bytes, clamped; undoes interleaveBytesLow() and interleaveBytesHigh().
inline Vec packWords(Vec low, Vec high) {
    return _mm_packus_epi16(low, high);
}
inline Vec packSignedWords(Vec low, Vec high) {
    return _mm_packs_epi16(low, high);
}
/// What packWords() made of two vectors' words, in the order of the words: it is already.
inline Vec deinterleave(Vec packed) {
    return packed;
}
/// What packs made of four vectors' 32-bit lanes, in the order of the lanes: it is already.
inline Vec orderDwords(Vec packed) {
    return packed;
}
inline Vec interleaveBytesLow(Vec a, Vec b) {
    return _mm_unpacklo_epi8(a, b);
}
inline Vec interleaveBytesHigh(Vec a, Vec b) {
    return _mm_unpackhi_epi8(a, b);
}
inline Vec interleaveWordsLow(Vec a, Vec b) {
    return _mm_unpacklo_epi16(a, b);
}
inline Vec interleaveWordsHigh(Vec a, Vec b) {
    return _mm_unpackhi_epi16(a, b);
}
/// Sums of two products of signed words.
inline Vec multiplyPairs(Vec a, Vec b) {
    return _mm_madd_epi16(a, b);
}
constexpr bool dotProductsAdd = false; // in one instruction
inline Vec addDotProducts(Vec sum, Vec a, Vec b) {
    return _mm_add_epi32(sum, multiplyPairs(a, b));
}
constexpr bool byteDotProducts = false; // in one instruction
/// To each 32-bit sum, its four bytes.
inline Vec addByteQuads(Vec sum, Vec v) {
    return addDotProducts(sum, addBytePairs(v), broadcastWords(1));
}
inline Vec shuffleBytes(Vec v, Vec index) {
    return _mm_shuffle_epi8(v, index);
}

/// Four packed pixels, those of quarter q.
template <int step>
inline Vec loadPixels(const unsigned char* src, int q) {
    if (step == 3 && q == 3) // do not reach past the block
        return _mm_srli_si128(loadVector(src + 32), 4);
    return loadVector(src + 4 * step * q);
}

/// 32-bit lanes to words, as they are.
inline Vec packDwords(Vec low, Vec high) {
    return _mm_packus_epi32(low, high);
}
template <int bits>
inline Vec shiftRightDwords(Vec v) {
    return _mm_srli_epi32(v, bits);
}
/// The even words of a and the odd ones of b.
inline Vec wordsInTurn(Vec a, Vec b) {
    return _mm_blend_epi16(a, b, 0xAA);
}
/// Bytes of b where the mask's are set, of a elsewhere.
inline Vec select(Vec a, Vec b, Vec mask) {
    return _mm_blendv_epi8(a, b, mask);
}

/// There is one lane.
inline Vec swapHalves(Vec v) {
    return v;
}
/// What interleaveBytesLow() and interleaveBytesHigh() gave, in order.
inline void storeInterleaved(unsigned char* dst, Vec low, Vec high) {
    storeVector(dst, low);
    storeVector(dst + 16, high);
}

/// The triples of 16 pixels as three parts of 16 bytes.
struct Parts {
    Vec part[3];
};
inline Parts loadParts(const unsigned char* src) {
    return {{loadVector(src), loadVector(src + 16), loadVector(src + 32)}};
}
/// There is one run.
inline Parts loadPartsSwapped(const unsigned char* src) {
    return loadParts(src);
}
template <class Store>
inline void storeParts(unsigned char* dst, Vec part0, Vec part1, Vec part2) {
    Store::store(dst, part0);
    Store::store(dst + 16, part1);
    Store::store(dst + 32, part2);
}

} // namespace
} // namespace Ko

#endif
