// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_BLOCKS_H
#define KOVANTA_SRC_IMAGE_KERNELS_BLOCKS_H

#include "image/kernels/Vectors.h"

#include <cstddef>

namespace Ko {
namespace {

/// The start of the block after the one at i, in n pixels that are no fewer than a block; n after the last. The last
/// block overlaps its neighbour if need be, which does no harm: it computes the same again.
inline std::size_t nextBlock(std::size_t i, std::size_t n, std::size_t block = vectorBytes) {
    const std::size_t next = i + block;
    if (__builtin_expect(next + block > n && next != n, 0)) // a jump: a selection would be in every block's way
        return n - block;
    return next;
}

} // namespace
} // namespace Ko

#endif
