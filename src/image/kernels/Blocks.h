// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_BLOCKS_H
#define KOVANTA_SRC_IMAGE_KERNELS_BLOCKS_H

#include "image/kernels/Vectors.h"

#include <cstddef>

namespace Ko {
namespace {

/// Calls f(i) for the start i of each block in n pixels that are no fewer than a block. The last one overlaps its
/// neighbour if need be, which does no harm: it computes the same again.
template <class Function>
[[gnu::always_inline]] inline void forBlocks(std::size_t n, std::size_t block, Function f) {
    std::size_t i = 0;
    for (; i + block <= n; i += block)
        f(i);
    if (i != n)
        f(n - block);
}

} // namespace
} // namespace Ko

#endif
