// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORS256_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORS256_H

// The vector operations of Vectors512.h for AVX2. Shuffles stay within the 128-bit halves here, so a block is laid out
// as two runs of 16 pixels, one in each half.

#include <immintrin.h>

#include <array>
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
/// Multiplications, because processors shift where they shuffle, and there is enough to shuffle.
template <int bits>
inline Vec shiftRightSignedWords(Vec v) {
    return _mm256_mulhi_epi16(v, broadcastWords(1 << (16 - bits)));
}
template <int bits>
inline Vec shiftRightWords(Vec v) {
    return _mm256_mulhi_epu16(v, broadcastWords(1 << (16 - bits)));
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
/// The upper halves of the products of words.
inline Vec multiplyWordsHigh(Vec a, Vec b) {
    return _mm256_mulhi_epu16(a, b);
}
/// Sums of neighbouring bytes, as words.
inline Vec addBytePairs(Vec v) {
    return _mm256_maddubs_epi16(v, broadcastBytes(1));
}
/// Words to bytes, clamped; undoes interleaveBytesLow() and interleaveBytesHigh().
inline Vec packWords(Vec low, Vec high) {
    return _mm256_packus_epi16(low, high);
}
/// What packWords() made of two vectors' words, in the order of the words.
inline Vec deinterleave(Vec packed) {
    return _mm256_permute4x64_epi64(packed, 0xD8);
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
inline Vec addDotProducts(Vec sum, Vec a, Vec b) {
    return _mm256_add_epi32(sum, _mm256_madd_epi16(a, b));
}
inline Vec shuffleBytes(Vec v, Vec index) {
    return _mm256_shuffle_epi8(v, index);
}

template <class Function>
constexpr std::array<unsigned char, vectorBytes> table(Function f) {
    std::array<unsigned char, vectorBytes> t{};
    for (std::size_t i = 0; i < vectorBytes; ++i)
        t[i] = static_cast<unsigned char>(f(i));
    return t;
}

template <int step, int b0, int b1, int b2, int b3>
inline Vec pixelIndex() {
    static constexpr auto index = table([](std::size_t i) {
        constexpr int offsets[4] = {b0, b1, b2, b3};
        return offsets[i % 4] < 0 ? 0x80 : step * (static_cast<int>(i) / 4 % 4) + offsets[i % 4];
    });
    return loadVector(index.data());
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

inline Vec resultsOf(Vec first, Vec second) {
    return _mm256_packus_epi32(_mm256_srli_epi32(first, 23), _mm256_srli_epi32(second, 23));
}
inline Vec packResults(Vec first, Vec second) {
    return _mm256_packus_epi16(first, second);
}

inline Vec descale(Vec lower, Vec upper) {
    return shiftRightSignedWords<5>(_mm256_blend_epi16(_mm256_srli_epi32(lower, 16), upper, 0xAA));
}
constexpr std::size_t placeAfterDescale(std::size_t i) {
    return i / 8 * 8 + i % 4 * 2 + i / 4 % 2;
}
constexpr std::size_t inOrder(std::size_t i) {
    return i;
}

// The triples of a run of 16 pixels are three parts of 16 bytes. Byte j of part p belongs to component (p + j) % 3, so
// in each byte the three parts hold one component each, and a part is chosen from them by a blend.

template <std::size_t remainder>
inline Vec everyThird() {
    static constexpr auto mask = table([](std::size_t i) { return i % 16 % 3 == remainder ? 0xFF : 0; });
    return loadVector(mask.data());
}
/// Byte j from the one of three vectors with number (shift - j) mod 3.
template <std::size_t shift>
inline Vec blendInTurn(Vec v0, Vec v1, Vec v2) {
    return _mm256_blendv_epi8(_mm256_blendv_epi8(v0, v1, everyThird<(shift + 2) % 3>()), v2,
                              everyThird<(shift + 1) % 3>());
}

/// The samples of a component, pixel i of a run at place(i), where the parts of the triples have them.
template <std::size_t component, std::size_t (*place)(std::size_t)>
inline Vec distribute(Vec v) {
    static constexpr auto index = table([](std::size_t i) {
        const std::size_t j = i % 16;
        const std::size_t part = (component + 15 - j) % 3;
        return place((16 * part + j) / 3);
    });
    return shuffleBytes(v, loadVector(index.data()));
}

/// Interleaves three vectors; pixel i of a run lies at place(i) in its half.
template <std::size_t (*place)(std::size_t)>
inline void storeTriples(unsigned char* dst, Vec a, Vec b, Vec c) {
    const Vec a3 = distribute<0, place>(a);
    const Vec b3 = distribute<1, place>(b);
    const Vec c3 = distribute<2, place>(c);
    const Vec part0 = blendInTurn<0>(a3, c3, b3);
    const Vec part1 = blendInTurn<2>(a3, c3, b3);
    const Vec part2 = blendInTurn<1>(a3, c3, b3);
    storeVector(dst, _mm256_permute2x128_si256(part0, part1, 0x20));
    storeVector(dst + 32, _mm256_blend_epi32(part2, part0, 0xF0));
    storeVector(dst + 64, _mm256_permute2x128_si256(part1, part2, 0x31));
}

/// One component of a block of triples.
template <std::size_t component>
inline Vec loadComponent(const unsigned char* src) {
    const Vec v0 = loadVector(src);
    const Vec v1 = loadVector(src + 32);
    const Vec v2 = loadVector(src + 64);
    static constexpr auto index = table([](std::size_t i) { return (i % 16 * 3 + component) % 16; });
    const Vec together = blendInTurn<component>(
        _mm256_blend_epi32(v0, v1, 0xF0), _mm256_permute2x128_si256(v0, v2, 0x21), _mm256_blend_epi32(v1, v2, 0xF0));
    return shuffleBytes(together, loadVector(index.data()));
}

/// Five triples in reverse; one byte after them is read, and one after the target overwritten.
constexpr std::size_t mirroredAtOnce = 5;
inline void mirrorSome(unsigned char* dst, const unsigned char* src) {
    const __m128i order = _mm_setr_epi8(12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2, 15);
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_shuffle_epi8(v, order));
}

} // namespace
} // namespace Ko

#endif
