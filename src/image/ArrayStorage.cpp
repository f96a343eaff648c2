// SPDX-License-Identifier: BSD-2-Clause
#include "image/ArrayStorage.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace Ko {

ArrayStorage obtainStorage(const Array2D<>& array, std::uint32_t w, std::uint32_t h, bool owning, bool fresh) {
    ArrayStorage storage;
    if (w == 0 || h == 0)
        return storage;
    // Fresh pages are faulted in one by one, which costs as much as a conversion; the contents are undefined anyway.
    storage.keep = !fresh && owning && array.alloc && array.rows && array.data && w == array.width && h == array.height;
    if (storage.keep)
        return storage;
    storage.rows.reset(new unsigned char*[h]);
    if (owning)
        storage.data.reset(new (sampleAlignment) unsigned char[static_cast<std::size_t>(w) * h]);
    return storage;
}

namespace {

/// Whether all rows of an owning array are where adoptStorage() would point them. That is found out faster than done,
/// and leaves the table's memory clean.
bool areInPlace(const Array2D<>& array) noexcept {
    const std::size_t height = array.height;
    const std::size_t step = array.width;
    unsigned char* const* const table = array.rows;
    std::uintptr_t expected = reinterpret_cast<std::uintptr_t>(array.data);
    std::uintptr_t elsewhere = 0; // without a jump in the loop
    for (std::size_t y = 0; y < height; ++y, expected += step)
        elsewhere |= reinterpret_cast<std::uintptr_t>(table[y]) ^ expected;
    return elsewhere == 0;
}

} // namespace

void adoptStorage(Array2D<>& array, ArrayStorage&& storage, std::uint32_t w, std::uint32_t h, bool owning) noexcept {
    if (!storage.keep) {
        delete[] array.rows;
        FreeSamples()(array.data);
        array.rows = storage.rows.release();
        array.data = storage.data.release();
    }
    if (w == 0 || h == 0 || (storage.keep && areInPlace(array)))
        return;
    // Through locals: a row pointer could alias the members, and every conversion comes by here.
    unsigned char* row = owning ? array.data : nullptr;
    const std::size_t step = owning ? w : 0;
    unsigned char** const table = array.rows;
    for (std::size_t y = 0; y < h; ++y, row += step)
        table[y] = row;
    array.width = w;
    array.height = h;
    array.alloc = owning;
}

void resetView(Array2D<>& array) noexcept {
    array.subarrays.reset({array.width, array.height, 0, 0});
    array.view = array.rows;
}

void exchange(Array2D<>& a, Array2D<>& b) noexcept {
    std::swap(a.width, b.width);
    std::swap(a.height, b.height);
    a.subarrays.swap(b.subarrays);
    std::swap(a.rows, b.rows);
    std::swap(a.view, b.view);
    std::swap(a.data, b.data);
    std::swap(a.alloc, b.alloc);
}

} // namespace Ko
