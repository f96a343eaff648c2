#ifndef KOVANTA_SRC_IMAGE_KERNELS_BLOCKS_H
#define KOVANTA_SRC_IMAGE_KERNELS_BLOCKS_H

#include <cstddef>

namespace Ko {
namespace {

/// Runs block(i) for blocks that cover n pixels, the last one overlapping its neighbour if need be. False when there
/// are fewer pixels than a block.
template <class Block>
inline bool overBlocks(std::size_t n, Block block) {
    if (n < vectorBytes)
        return false;
    std::size_t i = 0;
    for (; i + vectorBytes <= n; i += vectorBytes)
        block(i);
    if (i != n)
        block(n - vectorBytes);
    return true;
}

} // namespace
} // namespace Ko

#endif
