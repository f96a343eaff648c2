// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_PLANEROWS_H
#define KOVANTA_SRC_IMAGE_PLANEROWS_H

#include "Kovanta/Image.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Ko {

/// The rows of one plane's current view and how much of it exists, so that no routine leaves the memory.
template <class Pointer>
struct PlaneRows {
    Pointer const* row;
    std::size_t width;
    std::size_t height;

    Pointer operator[](std::size_t y) const { return row[y]; } // NOLINT(clang-analyzer-core.NullDereference)
};

template <class Pointer>
PlaneRows<Pointer> viewOf(const Array2D<>& plane) {
    if (!plane.rows)
        return {nullptr, 0, 0};
    const auto left = [](std::uint32_t full, std::uint32_t offset) -> std::size_t {
        return offset < full ? full - offset : 0;
    };
    const auto& current = plane.subarrays.back();
    return {plane.view, left(plane.width, current.x0), left(plane.height, current.y0)};
}

inline PlaneRows<const unsigned char*> sourceRows(const Image<>& im, int p) {
    const auto rows = viewOf<unsigned char*>(im.plane[p]);
    return {const_cast<const unsigned char* const*>(rows.row), rows.width, rows.height};
}

inline PlaneRows<unsigned char*> targetRows(Image<>& im, int p) {
    return viewOf<unsigned char*>(im.plane[p]);
}

/// Whether each of the first rows begins where the one before it ends, after so many bytes: one long row then.
template <class Pointer>
bool followOneAnother(const PlaneRows<Pointer>& plane, std::size_t bytes, std::size_t rows) {
    std::uintptr_t elsewhere = 0; // without a jump in the loop, which is many rows long and seldom ends early
    for (std::size_t y = 1; y < rows; ++y)
        elsewhere |=
            reinterpret_cast<std::uintptr_t>(plane[y]) - reinterpret_cast<std::uintptr_t>(plane[y - 1]) - bytes;
    return elsewhere == 0;
}

template <class... Sizes>
std::size_t least(std::size_t first, Sizes... more) {
    return std::min({first, static_cast<std::size_t>(more)...});
}

} // namespace Ko

#endif
