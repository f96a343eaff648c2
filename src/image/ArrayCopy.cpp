// SPDX-License-Identifier: BSD-2-Clause
#include "image/ArrayCopy.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace Ko {

namespace {

std::int32_t viewColumn(const Array2D<>& array) {
    return static_cast<std::int32_t>(array.subarrays.back().x0);
}

void shiftRows(Array2D<>& array, std::int32_t columns) {
    if (!array.rows || columns == 0)
        return;
    for (std::size_t y = 0; y < array.height; ++y)
        if (array.rows[y])
            array.rows[y] += columns;
}

} // namespace

ArrayCopy::ArrayCopy(Array2D<>& target, const Array2D<>& source, bool fresh)
    : to(target)
    , from(source)
    , views(source.subarrays) {
    if (to.alloc)
        storage = obtainStorage(to, from.width, from.height, true, fresh);
}

void ArrayCopy::readSamples() noexcept {
    const std::size_t width = from.width;
    unsigned char* next = storage.keep ? to.data : storage.data.get();
    if (to.alloc ? !next : !to.rows)
        return;
    for (std::size_t y = 0; y < from.height; ++y) {
        unsigned char* row = to.alloc ? next + y * width : to.rows[y] ? to.rows[y] - viewColumn(to) : nullptr;
        if (!row)
            continue;
        if (from.rows && from.rows[y])
            std::memmove(row, from.rows[y] - viewColumn(from), width);
        else
            std::memset(row, 0, width);
    }
}

void ArrayCopy::commit() noexcept {
    if (to.alloc)
        adoptStorage(to, std::move(storage), from.width, from.height, true);
    else
        shiftRows(to, -viewColumn(to));
    to.subarrays.swap(views);
    shiftRows(to, viewColumn(to));
    to.view = to.rows ? to.rows + static_cast<std::int32_t>(to.subarrays.back().y0) : nullptr;
}

} // namespace Ko
