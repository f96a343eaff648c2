// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_MEANS_H
#define KOVANTA_SRC_IMAGE_KERNELS_MEANS_H

#include "image/kernels/Blocks.h"
#include "image/kernels/Definition.h"
#include "image/kernels/PlainLoops.h"

namespace Ko {
namespace {

/// The means of the 2x2 blocks that a vector of each row holds, as words.
template <Word rounding>
inline Vec means(const Byte* row0, const Byte* row1) {
    const Vec sum = addWords(addBytePairs(loadVector(row0)), addBytePairs(loadVector(row1)));
    static_assert(rounding == 0 || rounding == 2);
    return rounding == 0 ? shiftRightWords<2>(sum) : shiftRightRounded<2>(sum);
}

template <Word rounding>
void meanOfBlocks(Byte* __restrict dst, const Byte* __restrict row0, const Byte* __restrict row1, std::size_t n) {
    const auto block = [=](std::size_t i) {
        const Vec low = means<rounding>(row0 + 2 * i, row1 + 2 * i);
        const Vec high = means<rounding>(row0 + 2 * i + vectorBytes, row1 + 2 * i + vectorBytes);
        storeVector(dst + i, deinterleave(packWords(low, high)));
    };
    if (n >= vectorBytes)
        forBlocks(n, vectorBytes, block);
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i)
        dst[i] = meanOf<rounding>(row0[2 * i], row0[2 * i + 1], row1[2 * i], row1[2 * i + 1]);
}

} // namespace
} // namespace Ko

#endif
