// SPDX-License-Identifier: BSD-2-Clause
#include "image/SharedMemory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Ko {

namespace {

/// A stretch of memory, as numbers, since pointers into different objects have no order.
struct Stretch {
    std::uintptr_t begin = UINTPTR_MAX;
    std::uintptr_t end = 0;

    bool meets(const Stretch& other) const { return begin < other.end && other.begin < end; }
};

Stretch stretchOf(const Array2D<>& array) {
    Stretch stretch;
    if (!array.rows)
        return stretch;
    if (array.alloc) {
        stretch.begin = reinterpret_cast<std::uintptr_t>(array.data);
        stretch.end = stretch.begin + std::size_t{array.width} * array.height;
        return stretch;
    }
    const auto shift = static_cast<std::uintptr_t>(static_cast<std::int32_t>(array.subarrays.back().x0));
    const auto row = [&](std::size_t y) {
        return reinterpret_cast<std::uintptr_t>(array.rows[y]);
    };
    const auto include = [&](std::size_t y) {
        if (!array.rows[y])
            return;
        stretch.begin = std::min(stretch.begin, row(y) - shift);
        stretch.end = std::max(stretch.end, row(y) - shift + array.width);
    };
    // Rows nearly always lie at one distance, which is found out faster than where each of them lies.
    const std::size_t height = array.height;
    std::uintptr_t irregular = 0;
    for (std::size_t y = 2; y < height; ++y)
        irregular |= (row(y) - row(y - 1)) ^ (row(1) - row(0));
    if (irregular == 0 && array.rows[0]) {
        include(0);
        include(height - 1);
        return stretch;
    }
    for (std::size_t y = 0; y < height; ++y)
        include(y);
    return stretch;
}

} // namespace

bool mayShareSamples(const Array2D<>& a, const Array2D<>& b) noexcept {
    return (!a.alloc || !b.alloc) && stretchOf(a).meets(stretchOf(b));
}

Sharing sharingOf(const Image<>& dst, const Image<>& src) noexcept {
    Sharing sharing;
    // Found out once they are asked for, and for most images they never are.
    Stretch targets[4];
    Stretch sources[4];
    for (int p = 0; p < 4; ++p)
        for (int q = 0; q < 4; ++q) {
            const Array2D<>& target = dst.plane[p];
            const Array2D<>& source = src.plane[q];
            if (target.alloc && source.alloc)
                continue;
            if (targets[p].end == 0)
                targets[p] = stretchOf(target);
            if (sources[q].end == 0)
                sources[q] = stretchOf(source);
            if (targets[p].meets(sources[q])) {
                sharing.any = true;
                sharing.sourceWrapsTarget = sharing.sourceWrapsTarget || target.alloc;
            }
        }
    return sharing;
}

} // namespace Ko
