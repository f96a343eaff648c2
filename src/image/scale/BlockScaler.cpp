// SPDX-License-Identifier: BSD-2-Clause
#include "image/scale/PlaneScaler.h"
#include "image/scale/ResizeAxis.h"
#include "image/scale/ResizeKernels.h"
#include "image/turn/TransposeBlock.h"
#include "image/turn/TransposeLanes.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <vector>

namespace Ko {

namespace {

using Byte = unsigned char;
using SourceRows = PlaneRows<const Byte*>;
using TargetRows = PlaneRows<Byte*>;

constexpr std::size_t lanes = ResizeKernels::lanes;
constexpr std::uint32_t mostTaps = 4096; // across, so that a block stays small
constexpr std::uint32_t usualSpan = 256; // columns of a block, so that it stays in the first cache
// Totals of weights: sums of bytes so weighed leave room in 32 bits, one less than a row's, and whole in a double.
constexpr std::uint64_t mostNarrow = 1 << 23;
constexpr std::uint64_t mostOfRows = 1 << 24;
constexpr std::uint64_t mostWide = std::uint64_t{1} << 44;

KernelTaps kernelTaps(const Taps& taps) {
    return {taps.first, taps.count, static_cast<std::uint32_t>(taps.firstWeight),
            static_cast<std::uint32_t>(taps.innerWeight), static_cast<std::uint32_t>(taps.lastWeight)};
}

/// The division of sums of bytes that weigh @p total together, with a factor of so many bits.
/// @return a factor of 0 where none is exact
KernelDivisor divisorFor(std::uint64_t total, unsigned int bits) {
    for (std::uint32_t shift = 0; shift <= bits; ++shift) {
        const std::uint64_t scale = std::uint64_t{1} << (bits + shift);
        const std::uint64_t factor = (scale + total - 1) / total;
        if (factor >> bits != 0)
            break;
        // By what the factor is too large, times what a sum can be, must not make a whole.
        if ((factor * total - scale) * 256 * total < scale)
            return {static_cast<std::uint32_t>(total / 2), static_cast<std::uint32_t>(factor), shift, total};
    }
    return {};
}

/// The numbers that the sums of rows are kept in, and the kernels that use them.
struct InWords {
    using Sum = std::uint16_t;
    static constexpr auto weighRows = &ResizeKernels::weighRowsToWords;
    static constexpr auto weighColumns = &ResizeKernels::weighColumnsInWords;
    static std::uint32_t leftOut(std::uint64_t) { return 0; }
};
/// As signed words, without the middle of what bytes can be.
struct OfWords {
    using Sum = std::uint16_t;
    static constexpr auto weighRows = &ResizeKernels::weighRowsToWords;
    static constexpr auto weighColumns = &ResizeKernels::weighColumnsOfWords;
    static std::uint32_t leftOut(std::uint64_t total) { return static_cast<std::uint32_t>(128 * total); }
};
struct OfDwords {
    using Sum = std::uint32_t;
    static constexpr auto weighRows = &ResizeKernels::weighRows;
    static constexpr auto weighColumns = &ResizeKernels::weighColumns;
    static std::uint32_t leftOut(std::uint64_t) { return 0; }
};
struct Wide {
    using Sum = std::uint32_t;
    static constexpr auto weighRows = &ResizeKernels::weighRows;
    static constexpr auto weighColumns = &ResizeKernels::weighColumnsWide;
    static std::uint32_t leftOut(std::uint64_t) { return 0; }
};

template <class Numbers>
class BlockScaler {
    using Sum = typename Numbers::Sum;

public:
    BlockScaler(const ScaleSizes& s, const KernelDivisor& d)
        : sizes(s)
        , rows(s.fromHeight, s.toHeight)
        , columns(s.fromWidth, s.toWidth)
        , divisor(d)
        , leftOut(static_cast<Sum>(0 - Numbers::leftOut(rows.total()))) {
        divisor.offset += Numbers::leftOut(rows.total() * columns.total());
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
            (kernels.*Numbers::weighRows)(&sums[i * pitch], first, rowTaps[i], leftOut, begin * sizes.units, width);
        }
        transposeLanes(turned.data(), sums.data(), width, pitch);
        const std::size_t n = after - x;
        // Signed or not, words are words.
        using Turned = std::conditional_t<std::is_same_v<Numbers, OfWords>, std::int16_t, Sum>;
        (kernels.*Numbers::weighColumns)(samples.data(), reinterpret_cast<const Turned*>(turned.data()), &columnTaps[x],
                                         begin, n, sizes.units, divisor);
        for (std::size_t c = 0; c < n * sizes.units; c += lanes)
            storeSquare(to, x * sizes.units + c, y, std::min(lanes, n * sizes.units - c), height, &samples[c * lanes]);
        return after;
    }

    /// What there is of 16 columns of samples goes to 16 rows.
    static void storeSquare(const TargetRows& to, std::size_t x, std::uint32_t y, std::size_t width,
                            std::uint32_t height, const Byte* columns) {
        const auto column = [=](std::size_t i) {
            return columns + i * lanes;
        };
        if (width == lanes && height == lanes)
            return transposeBlock(column, [&](std::size_t i) { return to[y + i] + x; });
        Byte square[lanes][lanes];
        transposeBlock(column, [&](std::size_t i) { return square[i]; });
        for (std::uint32_t i = 0; i < height; ++i)
            std::memcpy(to[y + i] + x, square[i], width);
    }

    ScaleSizes sizes;
    ResizeAxis rows;
    ResizeAxis columns;
    KernelDivisor divisor;
    Sum leftOut;
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
    if (rows.total() >= mostOfRows || columns.total() > UINT32_MAX || rows.total() * columns.total() >= mostWide ||
        sizes.fromWidth / sizes.toWidth > mostTaps - 2)
        return nullptr;
    const std::uint64_t total = rows.total() * columns.total();
    const KernelDivisor inWords = total <= 256 ? divisorFor(total, 16) : KernelDivisor{};
    if (inWords.factor != 0)
        return BlockScaler<InWords>(sizes, inWords);
    const KernelDivisor inDwords = total < mostNarrow ? divisorFor(total, 32) : KernelDivisor{};
    if (inDwords.factor == 0)
        return BlockScaler<Wide>(sizes, {0, 0, 0, total});
    if (rows.total() <= 255 && columns.total() <= INT16_MAX)
        return BlockScaler<OfWords>(sizes, inDwords);
    return BlockScaler<OfDwords>(sizes, inDwords);
}

} // namespace Ko
