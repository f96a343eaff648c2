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
    const auto follows = [width](unsigned char* const* rows, std::size_t y) {
        return rows[y] && rows[y] == rows[y - 1] + width;
    };
    for (std::size_t y = 0, end = 0; y < from.height; y = end) {
        end = y + 1;
        unsigned char* row = to.alloc ? next + y * width : to.rows[y] ? to.rows[y] - viewColumn(to) : nullptr;
        if (!row)
            continue;
        if (!from.rows || !from.rows[y]) {
            std::memset(row, 0, width);
            continue;
        }
        // Rows that follow one another on both sides are copied at once.
        while (end < from.height && follows(from.rows, end) && (to.alloc || follows(to.rows, end)))
            ++end;
        std::memmove(row, from.rows[y] - viewColumn(from), width * (end - y));
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
