// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS512_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORS512_H

// The vector operations that the kernels are written in, for AVX-512 with VBMI and VNNI. Lanes.h has the same for
// shorter vectors; where they keep pixels in different orders inside, what goes in and out of memory is in pixel order.

#include <immintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Ko {
namespace {

using Vec = __m512i;
constexpr std::size_t vectorBytes = 64;

inline Vec loadVector(const void* p) {
    return _mm512_loadu_si512(p);
}
inline void storeVector(void* p, Vec v) {
    _mm512_storeu_si512(p, v);
}
/// Past the cache, to where a vector may lie.
inline void streamVector(void* p, Vec v) {
    _mm512_stream_si512(static_cast<__m512i*>(p), v);
}
inline Vec broadcastWords(int v) {
    return _mm512_set1_epi16(static_cast<short>(v));
}
inline Vec broadcastDwords(int v) {
    return _mm512_set1_epi32(v);
}
inline Vec broadcastBytes(int v) {
    return _mm512_set1_epi8(static_cast<char>(v));
}
inline Vec zero() {
    return _mm512_setzero_si512();
}
inline Vec andBits(Vec a, Vec b) {
    return _mm512_and_si512(a, b);
}
inline Vec xorBits(Vec a, Vec b) {
    return _mm512_xor_si512(a, b);
}
inline Vec subtractWords(Vec a, Vec b) {
    return _mm512_sub_epi16(a, b);
}
template <int bits>
inline Vec shiftLeftWords(Vec v) {
    return _mm512_slli_epi16(v, bits);
}
template <int bits>
inline Vec shiftRightSignedWords(Vec v) {
    return _mm512_srai_epi16(v, bits);
}
template <int bits>
inline Vec shiftRightWords(Vec v) {
    return _mm512_srli_epi16(v, bits);
}
/// To the nearest, signed.
template <int bits>
inline Vec shiftRightRounded(Vec v) {
    return _mm512_mulhrs_epi16(v, broadcastWords(1 << (15 - bits)));
}
inline Vec addBytes(Vec a, Vec b) {
    return _mm512_add_epi8(a, b);
}
inline Vec subtractBytesSaturated(Vec a, Vec b) {
    return _mm512_subs_epu8(a, b);
}
inline Vec minBytes(Vec a, Vec b) {
    return _mm512_min_epu8(a, b);
}
inline Vec addWords(Vec a, Vec b) {
    return _mm512_add_epi16(a, b);
}
/// Halves of the sums of unsigned words, rounded up.
inline Vec averageWords(Vec a, Vec b) {
    return _mm512_avg_epu16(a, b);
}
/// The upper halves of the products of words.
inline Vec multiplyWordsHigh(Vec a, Vec b) {
    return _mm512_mulhi_epu16(a, b);
}
/// Sums of neighbouring bytes, as words.
inline Vec addBytePairs(Vec v) {
    return _mm512_maddubs_epi16(v, broadcastBytes(1));
}
/// The same with each byte times one of signed weights; no sum may pass a signed word.
inline Vec addWeightedBytePairs(Vec v, Vec weights) {
    return _mm512_maddubs_epi16(v, weights);
}
constexpr bool byteDotProducts = true; // in one instruction
/// To each 32-bit sum, its four bytes.
inline Vec addByteQuads(Vec sum, Vec v) {
    return _mm512_dpbusd_epi32(sum, v, broadcastBytes(1));
}
/// Words to bytes, clamped; undoes interleaveBytesLow() and interleaveBytesHigh().
inline Vec packWords(Vec low, Vec high) {
    return _mm512_packus_epi16(low, high);
}
/// What packWords() made of two vectors' words, in the order of the words.
inline Vec deinterleave(Vec packed) {
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), packed);
}
inline Vec interleaveBytesLow(Vec a, Vec b) {
    return _mm512_unpacklo_epi8(a, b);
}
inline Vec interleaveBytesHigh(Vec a, Vec b) {
    return _mm512_unpackhi_epi8(a, b);
}
inline Vec interleaveWordsLow(Vec a, Vec b) {
    return _mm512_unpacklo_epi16(a, b);
}
inline Vec interleaveWordsHigh(Vec a, Vec b) {
    return _mm512_unpackhi_epi16(a, b);
}

/// To each 32-bit sum, the products of the two signed 16-bit pairs.
inline Vec addDotProducts(Vec sum, Vec a, Vec b) {
    return _mm512_dpwssd_epi32(sum, a, b);
}

/// 32-bit lanes to words, as they are.
inline Vec packDwords(Vec low, Vec high) {
    return _mm512_packus_epi32(low, high);
}
/// What packs made of four vectors' 32-bit lanes, in the order of the lanes.
inline Vec orderDwords(Vec packed) {
    const Vec order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return _mm512_permutexvar_epi32(order, packed);
}
/// The same of four quarters of a block.
inline Vec orderQuarters(Vec packed) {
    return orderDwords(packed);
}
/// Two vectors of words of each two quarters, packed, in the order of the block.
inline void storeHalves(unsigned char* dst, Vec first, Vec second) {
    storeVector(dst, deinterleave(first));
    storeVector(dst + vectorBytes, deinterleave(second));
}
/// What interleaveBytesLow() and interleaveBytesHigh() gave, in order.
inline void storeInterleaved(unsigned char* dst, Vec low, Vec high) {
    const Vec first = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
    const Vec second = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
    storeVector(dst, _mm512_permutex2var_epi64(low, first, high));
    storeVector(dst + vectorBytes, _mm512_permutex2var_epi64(low, second, high));
}

/// The first products of a sum, which begins with its bias.
template <int bias>
inline Vec firstDotProducts(Vec a, Vec b) {
    return addDotProducts(broadcastDwords(bias), a, b);
}

/// Bytes of v chosen by index; zero where the index is 0x80.
inline Vec shuffleBytes(Vec v, Vec index) {
    return _mm512_maskz_permutexvar_epi8(~_mm512_movepi8_mask(index), index, v);
}

/// A table of byte indices computed from the position.
template <class Function>
constexpr std::array<unsigned char, vectorBytes> table(Function f) {
    std::array<unsigned char, vectorBytes> t{};
    for (std::size_t i = 0; i < vectorBytes; ++i)
        t[i] = static_cast<unsigned char>(f(i));
    return t;
}

/// Bytes b0..b3 of each pixel, as indices for shuffleBytes(loadPixels()); zero for a negative one.
template <int step, int b0, int b1, int b2, int b3>
inline Vec pixelIndex() {
    static constexpr auto index = table([](std::size_t i) {
        constexpr int offsets[4] = {b0, b1, b2, b3};
        return offsets[i % 4] < 0 ? 0x80 : step * (static_cast<int>(i) / 4) + offsets[i % 4];
    });
    return loadVector(index.data());
}

/// The packed pixels of quarter q of a block of 64.
template <int step>
inline Vec loadPixels(const unsigned char* src, int q) {
    const unsigned char* quarter = src + 16 * step * q;
    if (step == 3 && q == 3) // do not reach past the block
        return _mm512_maskz_loadu_epi8(0xFFFFFFFFFFFF, quarter);
    return loadVector(quarter);
}

/// The upper halves of the 32-bit lanes of two vectors, in turn.
inline Vec highWords(Vec a, Vec b) {
    static constexpr auto up = table([](std::size_t i) { return i % 16 + 2; });
    return _mm512_mask_shuffle_epi8(b, 0x3333333333333333, a, loadVector(up.data()));
}

/// Bits 23..30 of the sums of two quarters, which are as far as firstDotProducts() left them from their bias, as words,
/// and the words of two halves as bytes in pixel order.
template <int /*bias*/>
inline Vec resultsOf(Vec first, Vec second) {
    return shiftRightWords<7>(highWords(first, second));
}
inline Vec packResults(Vec first, Vec second) {
    static constexpr auto order = table([](std::size_t i) { return i % 16 * 4 + i / 16 % 2 * 2 + i / 32 * 64; });
    return _mm512_permutex2var_epi8(first, loadVector(order.data()), second);
}

/// Sums scaled by 2^21, of the lower and the upper four of eight pixels, as words; placeAfterDescale() tells where
/// pixel i of a block is once the words have become bytes.
inline Vec descale(Vec lower, Vec upper) {
    return shiftRightSignedWords<5>(highWords(lower, upper));
}
constexpr std::size_t placeAfterDescale(std::size_t i) {
    return i / 8 * 8 + i % 4 * 2 + i / 4 % 2;
}
constexpr std::size_t inOrder(std::size_t i) {
    return i;
}

/// One of the three vectors of 64 interleaved triples, starting at byte `first`; pixel i lies at place(i).
template <std::size_t first, std::size_t (*place)(std::size_t)>
inline Vec triples(Vec a, Vec b, Vec c) {
    static constexpr auto fromAB = table([](std::size_t i) { return place((first + i) / 3) + (first + i) % 3 * 64; });
    static constexpr auto fromC = table([](std::size_t i) { return place((first + i) / 3); });
    constexpr std::uint64_t everyThird = 0x9249249249249249;
    constexpr std::uint64_t isC = everyThird << (2 - first % 3); // 64 % 3 == 1
    const Vec ab = _mm512_permutex2var_epi8(a, loadVector(fromAB.data()), b);
    return _mm512_mask_permutexvar_epi8(ab, isC, loadVector(fromC.data()), c);
}

template <class Store, std::size_t (*place)(std::size_t)>
inline void storeTriples(unsigned char* dst, Vec a, Vec b, Vec c) {
    Store::store(dst, triples<0, place>(a, b, c));
    Store::store(dst + 64, triples<64, place>(a, b, c));
    Store::store(dst + 128, triples<128, place>(a, b, c));
}

/// RGB from the words that descale() gave for the lower and the upper pixels.
template <class Store>
inline void storeDescaled(unsigned char* dst, Vec lowR, Vec lowG, Vec lowB, Vec highR, Vec highG, Vec highB) {
    storeTriples<Store, placeAfterDescale>(dst, packWords(lowR, highR), packWords(lowG, highG), packWords(lowB, highB));
}

/// One component of a block of triples.
template <std::size_t component>
inline Vec loadComponent(const unsigned char* src) {
    static constexpr auto index = table([](std::size_t i) { return (3 * i + component) % 128; });
    constexpr std::size_t inTwo = (128 - component + 2) / 3; // so many lie in the first two vectors
    const Vec most = _mm512_permutex2var_epi8(loadVector(src), loadVector(index.data()), loadVector(src + 64));
    return _mm512_mask_permutexvar_epi8(most, ~std::uint64_t{0} << inTwo, loadVector(index.data()),
                                        loadVector(src + 128));
}

/// Triples in reverse; one byte after them is read, and one after the target overwritten.
constexpr std::size_t mirroredAtOnce = 21;
constexpr bool mirrorsByteTooMany = true;
template <class Store>
inline void mirrorSome(unsigned char* dst, const unsigned char* src) {
    static constexpr auto order = table([](std::size_t i) { return i == 63 ? 63 : 60 - i / 3 * 3 + i % 3; });
    Store::store(dst, _mm512_permutexvar_epi8(loadVector(order.data()), loadVector(src)));
}

} // namespace
} // namespace Ko

#endif
