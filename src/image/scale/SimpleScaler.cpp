// SPDX-License-Identifier: BSD-2-Clause
#include "image/RowKernels.h"
#include "image/scale/PlaneScaler.h"
#include "image/scale/ResizeKernels.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace Ko {

namespace {

using Byte = unsigned char;
using SourceRows = PlaneRows<const Byte*>;
using TargetRows = PlaneRows<Byte*>;

constexpr std::size_t mostUnits = 4;
constexpr std::uint32_t mostRows = 4; // of the source that are looked at together

/// n samples become m, both ways.
struct Ratio {
    std::uint32_t n;
    std::uint32_t m;
};
constexpr Ratio known[] = {{2, 1}, {3, 1}, {4, 1}, {3, 2}, {1, 2}};

class SimpleScaler {
public:
    SimpleScaler(const ScaleSizes& s, Ratio r)
        : sizes(s)
        , ratio(r)
        , scratch(s.units == 1 ? 0 : s.units * (mostRows * std::size_t{s.fromWidth} + s.toWidth)) {}

    void operator()(const TargetRows& to, const SourceRows& from) {
        if (sizes.units == 1) {
            for (std::uint32_t y = 0; y < sizes.toHeight; ++y)
                makeRow(to[y], y, [&](std::uint32_t row) { return from[row]; });
            return;
        }
        const bool triples = sizes.units == 3;
        std::fill(std::begin(held), std::end(held), none);
        Byte* made[mostUnits] = {};
        for (std::size_t unit = 0; unit < sizes.units; ++unit)
            made[unit] = scratch.data() + sizes.units * mostRows * sizes.fromWidth + unit * sizes.toWidth;
        for (std::uint32_t y = 0; y < sizes.toHeight; ++y) {
            for (std::size_t unit = 0; unit < sizes.units; ++unit)
                makeRow(made[unit], y, [&](std::uint32_t row) { return splitRow(from, row, unit); });
            (triples ? kernels.joinTriples : kernels.joinQuads)(to[y], made, sizes.toWidth);
        }
    }

private:
    static constexpr std::uint32_t none = UINT32_MAX;

    /// A source row of one of the pixels' bytes. Those of the last rows are kept.
    const Byte* splitRow(const SourceRows& from, std::uint32_t y, std::size_t unit) {
        const std::uint32_t slot = y % mostRows;
        Byte* rows[mostUnits] = {};
        for (std::size_t u = 0; u < sizes.units; ++u)
            rows[u] = scratch.data() + (slot * sizes.units + u) * sizes.fromWidth;
        if (held[slot] != y)
            (sizes.units == 3 ? kernels.splitTriples : kernels.splitQuads)(rows, from[y], sizes.fromWidth);
        held[slot] = y;
        return rows[unit];
    }

    /// @param row gives a source row by its number
    template <class Row>
    void makeRow(Byte* target, std::uint32_t y, Row row) {
        if (ratio.m == 1) {
            const std::uint32_t first = y * ratio.n;
            if (ratio.n == 2)
                meanOfFour(target, row(first), row(first + 1), sizes.toWidth);
            else if (ratio.n == 3)
                kernels.meanOfNine(target, row(first), row(first + 1), row(first + 2), sizes.toWidth);
            else
                kernels.meanOfSixteen(target, row(first), row(first + 1), row(first + 2), row(first + 3),
                                      sizes.toWidth);
            return;
        }
        const bool even = y % 2 == 0;
        if (ratio.n == 3) {
            const std::uint32_t light = y / 2 * 3 + 1;
            kernels.twoOfThree(target, row(even ? light - 1 : light + 1), row(light), sizes.toWidth / 2);
            return;
        }
        const std::uint32_t near = y / 2;
        const std::uint32_t far = even ? std::max(near, 1u) - 1 : std::min(near + 1, sizes.fromHeight - 1);
        kernels.twoOfOne(target, row(near), row(far), sizes.fromWidth);
    }

    // Of when the scaler is made, which is used at once.
    const ResizeKernels& kernels = resizeKernels();
    decltype(RowKernels::meanOfBlocks) const meanOfFour = rowKernels().meanOfBlocks;
    const ScaleSizes sizes;
    const Ratio ratio;
    std::vector<Byte> scratch;
    std::uint32_t held[mostRows] = {};
};

} // namespace

PlaneScaler makeSimpleScaler(const ScaleSizes& sizes) {
    const auto has = [](std::uint64_t from, std::uint64_t to, Ratio ratio) {
        return from * ratio.m == to * ratio.n;
    };
    for (const Ratio& ratio : known)
        if (has(sizes.fromWidth, sizes.toWidth, ratio) && has(sizes.fromHeight, sizes.toHeight, ratio))
            return SimpleScaler(sizes, ratio);
    return nullptr;
}

} // namespace Ko
