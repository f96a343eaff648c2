// SPDX-License-Identifier: BSD-2-Clause
#include "image/ScalePlane.h"

#include "image/ResizeAxis.h"

#include <cstring>

namespace Ko {

namespace {

using SourceRows = PlaneRows<const unsigned char*>;
using TargetRows = PlaneRows<unsigned char*>;

__extension__ using Wide = unsigned __int128;

void copyRows(const TargetRows& to, const SourceRows& from, std::size_t width, std::size_t height) {
    for (std::size_t y = 0; y < height; ++y)
        std::memcpy(to[y], from[y], width);
}

/// The weighted sum along a row, of bytes that lie so far apart.
std::uint64_t sumOf(const unsigned char* row, const Taps& taps, std::size_t step) {
    const unsigned char* sample = row + taps.first * step;
    std::uint64_t sum = taps.firstWeight * *sample;
    if (taps.count == 1)
        return sum;
    std::uint64_t inner = 0;
    for (std::uint32_t i = 2; i < taps.count; ++i)
        inner += *(sample += step);
    return sum + taps.innerWeight * inner + taps.lastWeight * sample[step];
}

/// For any sizes, as the result is defined.
void scaleByDefinition(const TargetRows& to, Extent2D target, const ResizeAxis& rows, const SourceRows& from,
                       const ResizeAxis& columns, std::size_t bytes) {
    const Wide total = Wide{rows.total()} * columns.total();
    for (std::uint32_t y = 0; y < target.height; ++y) {
        const Taps above = rows.taps(y);
        const std::size_t lastRow = std::size_t{above.first} + above.count - 1;
        for (std::uint32_t x = 0; x < target.width; ++x) {
            const Taps across = columns.taps(x);
            for (std::size_t b = 0; b < bytes; ++b) {
                Wide sum = total / 2 + Wide{above.firstWeight} * sumOf(from[above.first] + b, across, bytes);
                for (std::size_t row = above.first + std::size_t{1}; row < lastRow; ++row)
                    sum += Wide{above.innerWeight} * sumOf(from[row] + b, across, bytes);
                if (above.count > 1)
                    sum += Wide{above.lastWeight} * sumOf(from[lastRow] + b, across, bytes);
                to[y][x * bytes + b] = static_cast<unsigned char>(sum / total);
            }
        }
    }
}

} // namespace

void scalePlane(const TargetRows& to, Extent2D target, const SourceRows& from, Extent2D source, std::size_t bytes) {
    if (target.width == source.width && target.height == source.height)
        return copyRows(to, from, source.width * bytes, source.height);
    const ResizeAxis rows(source.height, target.height);
    const ResizeAxis columns(source.width, target.width);
    scaleByDefinition(to, target, rows, from, columns, bytes);
}

} // namespace Ko
