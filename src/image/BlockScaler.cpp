// SPDX-License-Identifier: BSD-2-Clause
#include "image/PlaneScaler.h"
#include "image/ResizeAxis.h"
#include "image/ResizeKernels.h"
#include "image/Transpose.h"
#include "image/TransposeLanes.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace Ko {

namespace {

using Byte = unsigned char;
using SourceRows = PlaneRows<const Byte*>;
using TargetRows = PlaneRows<Byte*>;

constexpr std::size_t lanes = ResizeKernels::lanes;
constexpr std::uint32_t mostTaps = 4096;     // across, so that a block stays small
constexpr std::uint32_t usualSpan = 256;     // columns of a block, so that it stays in the first cache
constexpr std::uint64_t mostTotal = 1 << 23; // sums of bytes so weighed leave room in 32 bits

KernelTaps kernelTaps(const Taps& taps) {
    return {taps.first, taps.count, static_cast<std::uint32_t>(taps.firstWeight),
            static_cast<std::uint32_t>(taps.innerWeight), static_cast<std::uint32_t>(taps.lastWeight)};
}

/// For sums of at most 255 times the total, less than 2^23.
KernelDivisor divisorFor(std::uint64_t total) {
    std::uint32_t bits = 32;
    while (std::uint64_t{1} << bits < 256 * total * total)
        ++bits;
    const std::uint64_t factor = ((std::uint64_t{1} << bits) + total - 1) / total;
    return {static_cast<std::uint32_t>(total / 2), static_cast<std::uint32_t>(factor), bits - 32};
}

template <class Sum>
class BlockScaler {
public:
    explicit BlockScaler(const ScaleSizes& s)
        : sizes(s)
        , rows(s.fromHeight, s.toHeight)
        , columns(s.fromWidth, s.toWidth)
        , divisor(divisorFor(rows.total() * columns.total())) {
        columnTaps.reserve(s.toWidth);
        for (std::uint32_t x = 0; x < s.toWidth; ++x) {
            columnTaps.push_back(kernelTaps(columns.taps(x)));
            span = std::max(span, columnTaps.back().count);
        }
        pitch = (span * s.units + lanes - 1) / lanes * lanes; // whole squares can be turned
        sums.resize(lanes * pitch);
        turned.resize(lanes * pitch);
        samples.resize(lanes * pitch);
    }

    void operator()(const TargetRows& to, const SourceRows& from) {
        for (std::uint32_t y = 0; y < sizes.toHeight; y += lanes) {
            const std::uint32_t height = std::min(static_cast<std::uint32_t>(lanes), sizes.toHeight - y);
            for (std::uint32_t i = 0; i < height; ++i)
                rowTaps[i] = kernelTaps(rows.taps(y + i));
            for (std::uint32_t x = 0; x < sizes.toWidth;)
                x = makeBlock(to, from, x, y, height);
        }
    }

private:
    /// @return the column behind the block
    std::uint32_t makeBlock(const TargetRows& to, const SourceRows& from, std::uint32_t x, std::uint32_t y,
                            std::uint32_t height) {
        const std::uint32_t begin = columnTaps[x].first;
        const auto endOf = [](const KernelTaps& taps) {
            return taps.first + taps.count;
        };
        std::uint32_t after = x + 1;
        while (after < sizes.toWidth && after - x < span && endOf(columnTaps[after]) - begin <= span)
            ++after;
        const ResizeKernels& kernels = resizeKernels();
        const std::size_t width = (endOf(columnTaps[after - 1]) - begin) * sizes.units;
        for (std::uint32_t i = 0; i < height; ++i) {
            const Byte* const* const first = from.row + rowTaps[i].first;
            if constexpr (sizeof(Sum) == 2)
                kernels.weighRowsToWords(&sums[i * pitch], first, rowTaps[i], begin * sizes.units, width);
            else
                kernels.weighRows(&sums[i * pitch], first, rowTaps[i], begin * sizes.units, width);
        }
        transposeLanes(turned.data(), sums.data(), width, pitch);
        const std::size_t n = after - x;
        if constexpr (sizeof(Sum) == 2)
            kernels.weighColumnsOfWords(samples.data(), turned.data(), &columnTaps[x], begin, n, sizes.units, divisor);
        else
            kernels.weighColumns(samples.data(), turned.data(), &columnTaps[x], begin, n, sizes.units, divisor);
        for (std::size_t c = 0; c < n * sizes.units; c += lanes)
            storeSquare(to, x * sizes.units + c, y, std::min(lanes, n * sizes.units - c), height, &samples[c * lanes]);
        return after;
    }

    /// What there is of 16 columns of samples goes to 16 rows.
    static void storeSquare(const TargetRows& to, std::size_t x, std::uint32_t y, std::size_t width,
                            std::uint32_t height, const Byte* columns) {
        Byte spare[lanes][lanes];
        Byte* target[lanes];
        const Byte* source[lanes];
        for (std::uint32_t i = 0; i < lanes; ++i) {
            target[i] = width == lanes && i < height ? to[y + i] + x : spare[i];
            source[i] = columns + i * lanes;
        }
        transposeBlock(target, source);
        for (std::uint32_t i = 0; width < lanes && i < height; ++i)
            std::memcpy(to[y + i] + x, spare[i], width);
    }

    ScaleSizes sizes;
    ResizeAxis rows;
    ResizeAxis columns;
    KernelDivisor divisor;
    std::uint32_t span = usualSpan;
    std::size_t pitch = 0;
    std::vector<KernelTaps> columnTaps;
    KernelTaps rowTaps[lanes] = {};
    std::vector<Sum> sums;     // row by row
    std::vector<Sum> turned;   // column by column
    std::vector<Byte> samples; // column by column
};

} // namespace

PlaneScaler makeBlockScaler(const ScaleSizes& sizes) {
    const ResizeAxis rows(sizes.fromHeight, sizes.toHeight);
    const ResizeAxis columns(sizes.fromWidth, sizes.toWidth);
    if (rows.total() >= mostTotal || columns.total() >= mostTotal || rows.total() * columns.total() >= mostTotal ||
        sizes.fromWidth / sizes.toWidth > mostTaps - 2)
        return nullptr;
    if (255 * rows.total() <= UINT16_MAX)
        return BlockScaler<std::uint16_t>(sizes);
    return BlockScaler<std::uint32_t>(sizes);
}

} // namespace Ko
