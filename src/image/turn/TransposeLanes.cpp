// SPDX-License-Identifier: BSD-2-Clause
#include "image/turn/TransposeLanes.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Ko {

namespace {

constexpr std::size_t lanes = 16;

#ifdef __SSE2__
constexpr std::size_t words = 8; // in a vector

__m128i load(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
void store(void* p, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}

/// Three rounds of interleaving row i with row i + 4 bring each word of 8 x 8 to its place.
void transposeSquare(std::uint16_t* to, const std::uint16_t* from, std::size_t pitch) {
    __m128i rows[words];
    __m128i next[words];
    for (std::size_t i = 0; i < words; ++i)
        rows[i] = load(from + i * pitch);
    const auto interleave = [](__m128i* made, const __m128i* source) {
        for (std::size_t i = 0; i < words / 2; ++i) {
            made[2 * i] = _mm_unpacklo_epi16(source[i], source[i + words / 2]);
            made[2 * i + 1] = _mm_unpackhi_epi16(source[i], source[i + words / 2]);
        }
    };
    interleave(next, rows);
    interleave(rows, next);
    interleave(next, rows);
    for (std::size_t i = 0; i < words; ++i)
        store(to + i * lanes, next[i]);
}

void transposeSquare(std::uint32_t* to, const std::uint32_t* from, std::size_t pitch) {
    for (std::size_t x = 0; x < 8; x += 4)
        for (std::size_t y = 0; y < 8; y += 4) {
            const std::uint32_t* const corner = from + y * pitch + x;
            std::uint32_t* const made = to + x * lanes + y;
            const __m128i low02 = _mm_unpacklo_epi32(load(corner), load(corner + 2 * pitch));
            const __m128i high02 = _mm_unpackhi_epi32(load(corner), load(corner + 2 * pitch));
            const __m128i low13 = _mm_unpacklo_epi32(load(corner + pitch), load(corner + 3 * pitch));
            const __m128i high13 = _mm_unpackhi_epi32(load(corner + pitch), load(corner + 3 * pitch));
            store(made, _mm_unpacklo_epi32(low02, low13));
            store(made + lanes, _mm_unpackhi_epi32(low02, low13));
            store(made + 2 * lanes, _mm_unpacklo_epi32(high02, high13));
            store(made + 3 * lanes, _mm_unpackhi_epi32(high02, high13));
        }
}
#else
template <class T>
void transposeSquare(T* to, const T* from, std::size_t pitch) {
    for (std::size_t x = 0; x < 8; ++x)
        for (std::size_t y = 0; y < 8; ++y)
            to[x * lanes + y] = from[y * pitch + x];
}
#endif

template <class T>
void transposeAll(T* to, const T* from, std::size_t columns, std::size_t pitch) {
    for (std::size_t x = 0; x < columns; x += 8)
        for (std::size_t y = 0; y < lanes; y += 8)
            transposeSquare(to + x * lanes + y, from + y * pitch + x, pitch);
}

} // namespace

void transposeLanes(std::uint16_t* to, const std::uint16_t* from, std::size_t columns, std::size_t pitch) {
    transposeAll(to, from, columns, pitch);
}

void transposeLanes(std::uint32_t* to, const std::uint32_t* from, std::size_t columns, std::size_t pitch) {
    transposeAll(to, from, columns, pitch);
}

} // namespace Ko
