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
    for (std::size_t y = 0; y < array.height; ++y) {
        if (!array.rows[y])
            continue;
        const std::uintptr_t row = reinterpret_cast<std::uintptr_t>(array.rows[y]) - shift;
        stretch.begin = std::min(stretch.begin, row);
        stretch.end = std::max(stretch.end, row + array.width);
    }
    return stretch;
}

/// Whether planes of the two images meet, of the pairs that @p counts.
template <class Predicate>
bool anyMeet(const Image<>& a, const Image<>& b, Predicate counts) {
    // Found out once they are asked for, and for most images they never are.
    Stretch ofA[4];
    Stretch ofB[4];
    for (int p = 0; p < 4; ++p)
        for (int q = 0; q < 4; ++q) {
            if (!counts(a.plane[p], b.plane[q]))
                continue;
            if (ofA[p].end == 0)
                ofA[p] = stretchOf(a.plane[p]);
            if (ofB[q].end == 0)
                ofB[q] = stretchOf(b.plane[q]);
            if (ofA[p].meets(ofB[q]))
                return true;
        }
    return false;
}

} // namespace

bool mayShareSamples(const Array2D<>& a, const Array2D<>& b) noexcept {
    return (!a.alloc || !b.alloc) && stretchOf(a).meets(stretchOf(b));
}

bool mayShareSamples(const Image<>& dst, const Image<>& src) noexcept {
    return anyMeet(dst, src, [](const Array2D<>& a, const Array2D<>& b) { return !a.alloc || !b.alloc; });
}

bool wrapsPartOf(const Image<>& src, const Image<>& dst) noexcept {
    return anyMeet(src, dst, [](const Array2D<>& a, const Array2D<>& b) { return !a.alloc && b.alloc; });
}

} // namespace Ko
