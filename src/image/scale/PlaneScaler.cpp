// SPDX-License-Identifier: BSD-2-Clause
#include "image/scale/PlaneScaler.h"

#include "image/scale/ResizeAxis.h"

#include <cstring>

namespace Ko {

namespace {

using SourceRows = PlaneRows<const unsigned char*>;
using TargetRows = PlaneRows<unsigned char*>;

__extension__ using Wide = unsigned __int128;

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
void scaleByDefinition(const TargetRows& to, const SourceRows& from, const ScaleSizes& sizes) {
    const ResizeAxis rows(sizes.fromHeight, sizes.toHeight);
    const ResizeAxis columns(sizes.fromWidth, sizes.toWidth);
    const Wide total = Wide{rows.total()} * columns.total();
    for (std::uint32_t y = 0; y < sizes.toHeight; ++y) {
        const Taps above = rows.taps(y);
        const std::size_t lastRow = std::size_t{above.first} + above.count - 1;
        for (std::uint32_t x = 0; x < sizes.toWidth; ++x) {
            const Taps across = columns.taps(x);
            for (std::size_t b = 0; b < sizes.units; ++b) {
                Wide sum = total / 2 + Wide{above.firstWeight} * sumOf(from[above.first] + b, across, sizes.units);
                for (std::size_t row = above.first + std::size_t{1}; row < lastRow; ++row)
                    sum += Wide{above.innerWeight} * sumOf(from[row] + b, across, sizes.units);
                if (above.count > 1)
                    sum += Wide{above.lastWeight} * sumOf(from[lastRow] + b, across, sizes.units);
                to[y][x * sizes.units + b] = static_cast<unsigned char>(sum / total);
            }
        }
    }
}

} // namespace

PlaneScaler makePlaneScaler(const ScaleSizes& sizes) {
    if (sizes.fromWidth == sizes.toWidth && sizes.fromHeight == sizes.toHeight)
        return [sizes](const TargetRows& to, const SourceRows& from) {
            for (std::size_t y = 0; y < sizes.toHeight; ++y)
                std::memcpy(to[y], from[y], sizes.toWidth * sizes.units);
        };
    if (PlaneScaler simple = makeSimpleScaler(sizes))
        return simple;
    if (PlaneScaler blocks = makeBlockScaler(sizes))
        return blocks;
    return [sizes](const TargetRows& to, const SourceRows& from) {
        scaleByDefinition(to, from, sizes);
    };
}

} // namespace Ko
