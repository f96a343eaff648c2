// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_COPYROW_H
#define KOVANTA_SRC_IMAGE_KERNELS_COPYROW_H

#include "image/kernels/Blocks.h"

#include <cstring>

namespace Ko {
namespace {

/// Two vectors at a time: a row of a picture has hundreds of bytes, of which memcpy spends the first on choosing its
/// way.
void copyRow(unsigned char* __restrict dst, const unsigned char* __restrict src, std::size_t n) {
    constexpr std::size_t block = 2 * vectorBytes;
    if (n < block) {
        std::memcpy(dst, src, n);
        return;
    }
    forBlocks(n, block, [=](std::size_t i) {
        const Vec first = loadVector(src + i);
        const Vec second = loadVector(src + i + vectorBytes);
        storeVector(dst + i, first);
        storeVector(dst + i + vectorBytes, second);
    });
}

} // namespace
} // namespace Ko

#endif
