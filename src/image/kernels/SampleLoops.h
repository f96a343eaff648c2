// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_SAMPLELOOPS_H
#define KOVANTA_SRC_IMAGE_KERNELS_SAMPLELOOPS_H

// The kernels for samples as decoders store them, as loops in forms that compilers vectorise.

#include "image/SampleKernels.h"
#include "image/kernels/Blocks.h"
#include "image/kernels/Matrices.h"
#include "image/kernels/PlainLoops.h"
#include "image/kernels/Ranges.h"

namespace Ko {
namespace {

/// Half of a sum of two is rounded in one instruction, and packing stops at 255.
template <int depth>
void roundWordsOf(Byte* __restrict dst, const Byte* __restrict words, std::size_t n) {
    const auto half = [=](std::size_t i) {
        return averageWords(shiftRightWords<depth - 9>(loadVector(words + 2 * i)), zero());
    };
    if (n >= vectorBytes)
        forBlocks(n, vectorBytes, [=](std::size_t i) {
            storeVector(dst + i, deinterleave(packWords(half(i), half(i + vectorBytes / 2))));
        });
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i)
        dst[i] = clamped((load<Word>(words + 2 * i) + (1 << (depth - 9))) >> (depth - 8));
}

/// Halves of the largest words would not be packed as what they are.
template <>
void roundWordsOf<9>(Byte* __restrict dst, const Byte* __restrict words, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Dword rounded = (load<Word>(words + 2 * i) + 1U) >> 1;
        dst[i] = static_cast<Byte>(rounded > 255 ? 255 : rounded);
    }
}

void roundWords(Byte* dst, const Byte* words, std::size_t n, int depth) {
    constexpr void (*byDepth[])(Byte*, const Byte*,
                                std::size_t) = {roundWordsOf<9>,  roundWordsOf<10>, roundWordsOf<11>, roundWordsOf<12>,
                                                roundWordsOf<13>, roundWordsOf<14>, roundWordsOf<15>, roundWordsOf<16>};
    byDepth[depth - 9](dst, words, n);
}

/// x / (2^d - 1) is (x + 1 + x / 2^d) / 2^d for every quotient up to 2^d.
void scaleWords(Byte* __restrict dst, const Byte* __restrict words, std::size_t n, WordScale scale) {
    const Dword all = (1U << scale.depth) - 1;
    const auto span = static_cast<Dword>(scale.span);
    const auto bias = static_cast<Dword>(scale.bias);
    const auto offset = static_cast<Dword>(scale.offset);
    for (std::size_t i = 0; i < n; ++i) {
        const Dword v = (Dword{load<Word>(words + 2 * i)} >> scale.shift) & all;
        const Dword x = v * span + bias;
        dst[i] = static_cast<Byte>(((x + 1 + (x >> scale.depth)) >> scale.depth) + offset);
    }
}

void firstOfPairs(Byte* __restrict dst, const Byte* __restrict pairs, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = static_cast<Byte>(load<Word>(pairs + 2 * i));
}

void secondOfPairs(Byte* __restrict dst, const Byte* __restrict pairs, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = static_cast<Byte>(load<Word>(pairs + 2 * i) >> 8);
}

void separatePairs(Byte* __restrict first, Byte* __restrict second, const Byte* __restrict pairs, std::size_t n) {
    if (n >= vectorBytes)
        forBlocks(n, vectorBytes, [=](std::size_t i) {
            const Vec low = broadcastWords(0xFF);
            const Vec a = loadVector(pairs + 2 * i);
            const Vec b = loadVector(pairs + 2 * i + vectorBytes);
            storeVector(first + i, deinterleave(packWords(andBits(a, low), andBits(b, low))));
            storeVector(second + i, deinterleave(packWords(shiftRightWords<8>(a), shiftRightWords<8>(b))));
        });
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i) {
        first[i] = pairs[2 * i];
        second[i] = pairs[2 * i + 1];
    }
}

void repeated(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        store(dst + 2 * i, both(src[i]));
}

void meanOfRows(Byte* __restrict dst, const Byte* __restrict row0, const Byte* __restrict row1, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = static_cast<Byte>((row0[i] + row1[i] + 1) >> 1);
}

void planesToRgbx(Byte* __restrict rgbx, const Byte* __restrict r, const Byte* __restrict g, const Byte* __restrict b,
                  std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        store(rgbx + 4 * i, Dword{r[i]} | Dword{g[i]} << 8 | Dword{b[i]} << 16);
}

constexpr SampleKernels vectorSampleKernels() {
    SampleKernels k{};
    k.roundWords = roundWords;
    k.scaleWords = scaleWords;
    k.chromaToStudio = mapRange<Cached, ChromaToStudio>;
    k.firstOfPairs = firstOfPairs;
    k.secondOfPairs = secondOfPairs;
    k.separatePairs = separatePairs;
    k.repeated = repeated;
    k.meanOfRows = meanOfRows;
    k.bgrxToYcc = packedToYcc<Cached, Bt601, 4, 2, 0>;
    k.planesToRgbx = planesToRgbx;
    return k;
}
static_assert(!__builtin_constant_p(isComplete(vectorSampleKernels())) || isComplete(vectorSampleKernels()));

} // namespace
} // namespace Ko

#endif
