// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_RESIZEVECTORS_H
#define KOVANTA_SRC_IMAGE_KERNELS_RESIZEVECTORS_H

// Scaled copies by simple ratios. Rows shorter than a block are left to the plain loops.

#include "image/kernels/Blocks.h"
#include "image/kernels/ResizeColumns.h"
#include "image/kernels/ResizeLoops.h"
#include "image/kernels/Stores.h"

namespace Ko {
namespace {

/// The sums of four bytes each over some rows, as 32-bit lanes.
template <class... Rows>
inline Vec sumsOfQuads(Vec first, Rows... others) {
    if constexpr (byteDotProducts) {
        Vec sum = addByteQuads(zero(), first);
        ((sum = addByteQuads(sum, others)), ...);
        return sum;
    } else {
        Vec pairs = addBytePairs(first);
        ((pairs = addWords(pairs, addBytePairs(others))), ...);
        return addDotProducts(zero(), pairs, broadcastWords(1));
    }
}

/// Rounded means of words that are sums of 9 or 16 bytes.
inline Vec ninth(Vec sums) {
    return multiplyWordsHigh(addWords(sums, broadcastWords(4)), broadcastWords(7282)); // exact up to 2299
}
inline Vec sixteenth(Vec sums) {
    return shiftRightRounded<4>(sums);
}

void vectorMeanOfNine(Byte* __restrict dst, const Byte* __restrict row0, const Byte* __restrict row1,
                      const Byte* __restrict row2, std::size_t n) {
    if (n < vectorBytes)
        return plainMeanOfNine(dst, row0, row1, row2, n);
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        const auto quarter = [=](int q) {
            const auto triples = [=](const Byte* row) {
                return shuffleBytes(loadPixels<3>(row + 3 * i, q), pixelIndex<3, 0, 1, 2, -1>());
            };
            return sumsOfQuads(triples(row0), triples(row1), triples(row2));
        };
        const Vec low = ninth(packDwords(quarter(0), quarter(1)));
        storeVector(dst + i, orderQuarters(packWords(low, ninth(packDwords(quarter(2), quarter(3))))));
    });
}

void vectorMeanOfSixteen(Byte* __restrict dst, const Byte* __restrict row0, const Byte* __restrict row1,
                         const Byte* __restrict row2, const Byte* __restrict row3, std::size_t n) {
    if (n < vectorBytes)
        return plainMeanOfSixteen(dst, row0, row1, row2, row3, n);
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        const auto some = [=](std::size_t v) {
            const std::size_t at = 4 * i + v * vectorBytes;
            return sumsOfQuads(loadVector(row0 + at), loadVector(row1 + at), loadVector(row2 + at),
                               loadVector(row3 + at));
        };
        const Vec low = sixteenth(packDwords(some(0), some(1)));
        storeVector(dst + i, orderDwords(packWords(low, sixteenth(packDwords(some(2), some(3))))));
    });
}

/// Signed bytes a, b, c, d over and over.
inline Vec broadcastQuad(int a, int b, int c, int d) {
    return broadcastDwords(a | b << 8 | c << 16 | d << 24);
}

/// A triple (a, b, c) is laid out as (a, b, b, c): the pairs make its two samples.
void vectorTwoOfThree(Byte* __restrict dst, const Byte* __restrict heavy, const Byte* __restrict light, std::size_t n) {
    if (n < vectorBytes)
        return plainTwoOfThree(dst, heavy, light, n);
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        const auto quarter = [=](int q) {
            const auto laidOut = [=](const Byte* row) {
                return shuffleBytes(loadPixels<3>(row + 3 * i, q), pixelIndex<3, 0, 1, 1, 2>());
            };
            const Vec above = addWeightedBytePairs(laidOut(heavy), broadcastQuad(4, 2, 2, 4));
            const Vec below = addWeightedBytePairs(laidOut(light), broadcastQuad(2, 1, 1, 2));
            return ninth(addWords(above, below));
        };
        const Vec first = packWords(quarter(0), quarter(1));
        storeHalves(dst + 2 * i, first, packWords(quarter(2), quarter(3)));
    });
}

void vectorTwoOfOne(Byte* __restrict dst, const Byte* __restrict near, const Byte* __restrict far, std::size_t n) {
    if (n <= vectorBytes)
        return plainTwoOfOne(dst, near, far, n);
    beyondCentres(dst, near, far, n);
    forBlocks(n - 1, vectorBytes, [=](std::size_t i) {
        const Vec nearLeft = loadVector(near + i);
        const Vec nearRight = loadVector(near + i + 1);
        const Vec farLeft = loadVector(far + i);
        const Vec farRight = loadVector(far + i + 1);
        const auto samples = [](Vec nearPairs, Vec farPairs) {
            const auto means = [=](int left, int right) {
                const Vec nearSum =
                    addWeightedBytePairs(nearPairs, broadcastQuad(3 * left, 3 * right, 3 * left, 3 * right));
                const Vec farSum = addWeightedBytePairs(farPairs, broadcastQuad(left, right, left, right));
                return sixteenth(addWords(nearSum, farSum));
            };
            return xorBits(means(3, 1), shiftLeftWords<8>(means(1, 3))); // no bit is in both
        };
        storeInterleaved(dst + 2 * i + 1,
                         samples(interleaveBytesLow(nearLeft, nearRight), interleaveBytesLow(farLeft, farRight)),
                         samples(interleaveBytesHigh(nearLeft, nearRight), interleaveBytesHigh(farLeft, farRight)));
    });
}

void vectorSplitTriples(Byte* const* dst, const Byte* __restrict src, std::size_t n) {
    if (n < vectorBytes)
        return plainSplit<3>(dst, src, n);
    Byte* __restrict const first = dst[0];
    Byte* __restrict const second = dst[1];
    Byte* __restrict const third = dst[2];
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        storeVector(first + i, loadComponent<0>(src + 3 * i));
        storeVector(second + i, loadComponent<1>(src + 3 * i));
        storeVector(third + i, loadComponent<2>(src + 3 * i));
    });
}

void vectorJoinTriples(Byte* __restrict dst, const Byte* const* src, std::size_t n) {
    if (n < vectorBytes)
        return plainJoin<3>(dst, src, n);
    const Byte* __restrict const first = src[0];
    const Byte* __restrict const second = src[1];
    const Byte* __restrict const third = src[2];
    forBlocks(n, vectorBytes, [=](std::size_t i) {
        storeTriples<Cached, inOrder>(dst + 3 * i, loadVector(first + i), loadVector(second + i),
                                      loadVector(third + i));
    });
}

constexpr ResizeKernels vectorResizeKernels() {
    ResizeKernels k = plainResizeKernels();
    k.meanOfNine = vectorMeanOfNine;
    k.meanOfSixteen = vectorMeanOfSixteen;
    k.twoOfThree = vectorTwoOfThree;
    k.twoOfOne = vectorTwoOfOne;
    k.splitTriples = vectorSplitTriples;
    k.joinTriples = vectorJoinTriples;
    k.weighColumnsInWords = vectorColumnsInWords;
    k.weighColumnsOfWords = vectorColumnsOfWords;
    return k;
}

} // namespace
} // namespace Ko

#endif
