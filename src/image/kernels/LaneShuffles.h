// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_LANESHUFFLES_H
#define KOVANTA_SRC_IMAGE_KERNELS_LANESHUFFLES_H

// What compilers make too much of where shuffles stay within lanes. Rows shorter than a vector are left to the plain
// loops.

#include "image/kernels/Lanes.h"

#include "image/RowKernels.h"
#include "image/kernels/Blocks.h"
#include "image/kernels/PlainLoops.h"

namespace Ko {
namespace {

/// The even bytes of a vector of pairs twice, or the odd ones.
template <std::size_t first>
inline Vec twiceOfPairs(Vec v) {
    static constexpr auto index = table([](std::size_t i) { return i % 16 / 2 * 2 + first; });
    return shuffleBytes(v, loadVector(index.data()));
}

void laneYuy2ToYcc(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict yuy2,
                   std::size_t n) {
    constexpr std::size_t block = vectorBytes / 2;
    if (n < block)
        return yuy2ToYcc(y, cb, cr, yuy2, n);
    forBlocks(n, block, [=](std::size_t i) {
        const Vec low = loadVector(yuy2 + 4 * i);
        const Vec high = loadVector(yuy2 + 4 * i + vectorBytes);
        const Vec mask = broadcastWords(0xFF);
        const Vec chroma = deinterleave(packWords(shiftRightWords<8>(low), shiftRightWords<8>(high)));
        storeVector(y + 2 * i, deinterleave(packWords(andBits(low, mask), andBits(high, mask))));
        storeVector(cb + 2 * i, twiceOfPairs<0>(chroma));
        storeVector(cr + 2 * i, twiceOfPairs<1>(chroma));
    });
}

void laneYccToYuy2(Byte* __restrict yuy2, const Byte* __restrict y, const Byte* __restrict cb,
                   const Byte* __restrict cr, std::size_t n) {
    constexpr std::size_t block = vectorBytes / 2;
    if (n < block)
        return yccToYuy2(yuy2, y, cb, cr, n);
    forBlocks(n, block, [=](std::size_t i) {
        const Vec luma = loadVector(y + 2 * i);
        const Vec blue = shiftRightWords<1>(addBytePairs(loadVector(cb + 2 * i)));
        const Vec red = shiftRightWords<1>(addBytePairs(loadVector(cr + 2 * i)));
        const Vec chroma = orBits(blue, shiftLeftWords<8>(red));
        storeInterleaved(yuy2 + 4 * i, interleaveBytesLow(luma, chroma), interleaveBytesHigh(luma, chroma));
    });
}

inline Vec backwards(Vec v) {
    static constexpr auto index = table([](std::size_t i) { return 15 - i % 16; });
    return swapHalves(shuffleBytes(v, loadVector(index.data())));
}

/// Two vectors at a time, beside which the loop counts less.
void laneMirrorBytes(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    constexpr std::size_t block = 2 * vectorBytes;
    if (n < block)
        return mirrorBytes(dst, src, n);
    forBlocks(n, block, [=](std::size_t i) {
        const Vec first = loadVector(src + (n - i - vectorBytes));
        const Vec second = loadVector(src + (n - i - block));
        storeVector(dst + i, backwards(first));
        storeVector(dst + i + vectorBytes, backwards(second));
    });
}

constexpr RowKernels withLaneShuffles(RowKernels k) {
    k.yuy2ToYcc = laneYuy2ToYcc;
    k.yccToYuy2 = laneYccToYuy2;
    k.mirrorBytes = laneMirrorBytes;
    return k;
}

} // namespace
} // namespace Ko

#endif
