// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_PLAINLOOPS_H
#define KOVANTA_SRC_IMAGE_KERNELS_PLAINLOOPS_H

// The kernels as loops in forms that compilers vectorise. Compiled once per instruction-set level, by the sources
// beside this header and nobody else. Everything here is local to the including source: a function shared between
// levels would leave the linker to choose whose instructions run.

#include "image/kernels/Definition.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Ko {
namespace {

using Word = std::uint16_t;
using Dword = std::uint32_t;

// Reading and writing two or four samples at once is what gets these loops vectorised.
template <class T>
inline T load(const Byte* p) {
    T value;
    std::memcpy(&value, p, sizeof(value));
    return value;
}
template <class T>
inline void store(Byte* p, T value) {
    std::memcpy(p, &value, sizeof(value));
}
inline Word both(Dword sample) {
    return static_cast<Word>(sample * 0x0101);
}

void chromaToStudioDoubled(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        store(dst + 2 * i, both((src[i] * 57569u >> 16) + 16));
}

void doubled(Byte* __restrict row0, Byte* __restrict row1, const Byte* __restrict src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Word sample = both(src[i]);
        store(row0 + 2 * i, sample);
        store(row1 + 2 * i, sample);
    }
}

void yuy2ToYcc(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict yuy2,
               std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Dword pair = load<Dword>(yuy2 + 4 * i);
        store(y + 2 * i, static_cast<Word>((pair & 0xFF) | (pair >> 8 & 0xFF00)));
        store(cb + 2 * i, both(pair >> 8 & 0xFF));
        store(cr + 2 * i, both(pair >> 24));
    }
}

inline Dword meanOfPair(Word pair) {
    return static_cast<Word>(((pair & 0xFF) + (pair >> 8)) >> 1);
}

void yccToYuy2(Byte* __restrict yuy2, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
               std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Dword luma = load<Word>(y + 2 * i);
        const Dword blue = meanOfPair(load<Word>(cb + 2 * i));
        const Dword red = meanOfPair(load<Word>(cr + 2 * i));
        store(yuy2 + 4 * i, (luma & 0xFF) | blue << 8 | (luma & 0xFF00) << 8 | red << 24);
    }
}

void copyAlpha(Byte* __restrict alpha, const Byte* __restrict rgba, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        alpha[i] = static_cast<Byte>(load<Dword>(rgba + 4 * i) >> 24);
}

void mirrorBytes(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = src[n - 1 - i];
}

inline void swapBytes(Byte& a, Byte& b) {
    const Byte kept = a;
    a = b;
    b = kept;
}

void swapMirrored(Byte* __restrict low, Byte* __restrict high, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        swapBytes(low[i], high[n - 1 - i]);
}

void mirrorBytesInPlace(Byte* row, std::size_t n) {
    swapMirrored(row, row + (n - n / 2), n / 2);
}

void swapRows(Byte* __restrict a, Byte* __restrict b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        swapBytes(a[i], b[i]);
}

} // namespace
} // namespace Ko

#endif
