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
    return shiftRightWords<2>(rounding == 0 ? sum : addWords(sum, broadcastWords(rounding)));
}

template <Word rounding>
void meanOfBlocks(Byte* __restrict dst, const Byte* __restrict row0, const Byte* __restrict row1, std::size_t n) {
    for (std::size_t i = 0; n >= vectorBytes && i != n; i = nextBlock(i, n)) {
        const Vec low = means<rounding>(row0 + 2 * i, row1 + 2 * i);
        const Vec high = means<rounding>(row0 + 2 * i + vectorBytes, row1 + 2 * i + vectorBytes);
        storeVector(dst + i, deinterleave(packWords(low, high)));
    }
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i)
        dst[i] = meanOf<rounding>(row0[2 * i], row0[2 * i + 1], row1[2 * i], row1[2 * i + 1]);
}

} // namespace
} // namespace Ko

#endif
