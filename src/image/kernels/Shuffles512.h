// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_SHUFFLES512_H
#define KOVANTA_SRC_IMAGE_KERNELS_SHUFFLES512_H

// What only moves samples: with VBMI one instruction takes any 64 of 128 bytes, which the compiler does not see. Rows
// shorter than a block are left to the plain loops.

#include "image/kernels/Vectors512.h"

#include "image/kernels/Blocks.h"
#include "image/kernels/PlainLoops.h"
#include "image/kernels/Ranges.h"

namespace Ko {
namespace {

/// The bytes of a (0..63) and b (64..127) that index(i) names.
template <std::size_t (*index)(std::size_t)>
inline Vec permuteBytes(Vec a, Vec b) {
    static constexpr auto indices = table(index);
    return _mm512_permutex2var_epi8(a, loadVector(indices.data()), b);
}

constexpr std::size_t even(std::size_t i) {
    return 2 * i;
}
constexpr std::size_t everyCb(std::size_t i) {
    return i / 2 * 4 + 1;
}
constexpr std::size_t everyCr(std::size_t i) {
    return i / 2 * 4 + 3;
}

void shuffleYuy2ToYcc(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict yuy2,
                      std::size_t n) {
    constexpr std::size_t block = vectorBytes / 2;
    if (n < block)
        return yuy2ToYcc(y, cb, cr, yuy2, n);
    forBlocks(n, block, [=](std::size_t i) {
        const Vec low = loadVector(yuy2 + 4 * i);
        const Vec high = loadVector(yuy2 + 4 * i + vectorBytes);
        storeVector(y + 2 * i, permuteBytes<even>(low, high));
        storeVector(cb + 2 * i, permuteBytes<everyCb>(low, high));
        storeVector(cr + 2 * i, permuteBytes<everyCr>(low, high));
    });
}

constexpr std::size_t inTurnLow(std::size_t i) {
    return i / 2 + i % 2 * vectorBytes;
}
constexpr std::size_t inTurnHigh(std::size_t i) {
    return inTurnLow(i) + vectorBytes / 2;
}

void shuffleYccToYuy2(Byte* __restrict yuy2, const Byte* __restrict y, const Byte* __restrict cb,
                      const Byte* __restrict cr, std::size_t n) {
    constexpr std::size_t block = vectorBytes / 2;
    if (n < block)
        return yccToYuy2(yuy2, y, cb, cr, n);
    forBlocks(n, block, [=](std::size_t i) {
        const Vec luma = loadVector(y + 2 * i);
        const Vec blue = shiftRightWords<1>(addBytePairs(loadVector(cb + 2 * i)));
        const Vec red = shiftRightWords<1>(addBytePairs(loadVector(cr + 2 * i)));
        const Vec chroma = xorBits(blue, shiftLeftWords<8>(red)); // no bit is in both
        storeVector(yuy2 + 4 * i, permuteBytes<inTurnLow>(luma, chroma));
        storeVector(yuy2 + 4 * i + vectorBytes, permuteBytes<inTurnHigh>(luma, chroma));
    });
}

constexpr std::size_t twiceLow(std::size_t i) {
    return i / 2;
}
constexpr std::size_t twiceHigh(std::size_t i) {
    return (vectorBytes + i) / 2;
}

void shuffleDoubled(Byte* __restrict row0, Byte* __restrict row1, const Byte* __restrict src, std::size_t n) {
    if (n < vectorBytes)
        return doubled(row0, row1, src, n);
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        const Vec v = loadVector(src + i);
        const Vec low = permuteBytes<twiceLow>(v, v);
        const Vec high = permuteBytes<twiceHigh>(v, v);
        storeVector(row0 + 2 * i, low);
        storeVector(row0 + 2 * i + vectorBytes, high);
        storeVector(row1 + 2 * i, low);
        storeVector(row1 + 2 * i + vectorBytes, high);
    });
}

void shuffleChromaToStudioDoubled(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    if (n < vectorBytes)
        return chromaToStudioDoubled(dst, src, n);
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        const Vec v = ChromaToStudio::vector(loadVector(src + i));
        storeVector(dst + 2 * i, permuteBytes<twiceLow>(v, v));
        storeVector(dst + 2 * i + vectorBytes, permuteBytes<twiceHigh>(v, v));
    });
}

constexpr std::size_t backwards(std::size_t i) {
    return vectorBytes - 1 - i;
}

void shuffleMirrorBytes(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    if (n < vectorBytes)
        return mirrorBytes(dst, src, n);
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        const Vec v = loadVector(src + (n - i - vectorBytes));
        storeVector(dst + i, permuteBytes<backwards>(v, v));
    });
}

} // namespace
} // namespace Ko

#endif
