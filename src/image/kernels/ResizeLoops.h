// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_RESIZELOOPS_H
#define KOVANTA_SRC_IMAGE_KERNELS_RESIZELOOPS_H

// Scaled copies as loops. For any ratio they are in a form that compilers vectorise, for simple ratios they are the
// definition. Local to the including source, as all that is compiled for several levels.

#include "image/kernels/Definition.h"
#include "image/scale/ResizeKernels.h"

#include <cstddef>
#include <cstdint>

namespace Ko {
namespace {

void plainMeanOfNine(Byte* __restrict dst, const Byte* __restrict row0, const Byte* __restrict row1,
                     const Byte* __restrict row2, std::size_t n) {
    const auto column = [=](std::size_t i) {
        return row0[i] + row1[i] + row2[i];
    };
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = static_cast<Byte>((column(3 * i) + column(3 * i + 1) + column(3 * i + 2) + 4) / 9);
}

void plainMeanOfSixteen(Byte* __restrict dst, const Byte* __restrict row0, const Byte* __restrict row1,
                        const Byte* __restrict row2, const Byte* __restrict row3, std::size_t n) {
    const auto column = [=](std::size_t i) {
        return row0[i] + row1[i] + row2[i] + row3[i];
    };
    for (std::size_t i = 0; i < n; ++i)
        dst[i] =
            static_cast<Byte>((column(4 * i) + column(4 * i + 1) + column(4 * i + 2) + column(4 * i + 3) + 8) / 16);
}

void plainTwoOfThree(Byte* __restrict dst, const Byte* __restrict heavy, const Byte* __restrict light, std::size_t n) {
    const auto above = [=](std::size_t i) {
        return 2 * heavy[i] + light[i];
    };
    for (std::size_t i = 0; i < n; ++i) {
        dst[2 * i] = static_cast<Byte>((2 * above(3 * i) + above(3 * i + 1) + 4) / 9);
        dst[2 * i + 1] = static_cast<Byte>((above(3 * i + 1) + 2 * above(3 * i + 2) + 4) / 9);
    }
}

/// The two samples between the centres i and i + 1.
inline void betweenCentres(Byte* dst, const Byte* near, const Byte* far, std::size_t i) {
    const int left = 3 * near[i] + far[i];
    const int right = 3 * near[i + 1] + far[i + 1];
    dst[2 * i + 1] = static_cast<Byte>((3 * left + right + 8) / 16);
    dst[2 * i + 2] = static_cast<Byte>((left + 3 * right + 8) / 16);
}
/// The first and the last sample, beyond the centres.
inline void beyondCentres(Byte* dst, const Byte* near, const Byte* far, std::size_t n) {
    if (n == 0)
        return;
    dst[0] = static_cast<Byte>((3 * near[0] + far[0] + 2) / 4);
    dst[2 * n - 1] = static_cast<Byte>((3 * near[n - 1] + far[n - 1] + 2) / 4);
}

void plainTwoOfOne(Byte* __restrict dst, const Byte* __restrict near, const Byte* __restrict far, std::size_t n) {
    beyondCentres(dst, near, far, n);
    for (std::size_t i = 0; i + 1 < n; ++i)
        betweenCentres(dst, near, far, i);
}

template <std::size_t units>
void plainSplit(Byte* const* dst, const Byte* __restrict src, std::size_t n) {
    for (std::size_t b = 0; b < units; ++b) {
        Byte* __restrict plane = dst[b];
        for (std::size_t i = 0; i < n; ++i)
            plane[i] = src[units * i + b];
    }
}

template <std::size_t units>
void plainJoin(Byte* __restrict dst, const Byte* const* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t b = 0; b < units; ++b)
            dst[units * i + b] = src[b][i];
}

template <class Sum>
void weighRowsTo(Sum* __restrict sums, const Byte* const* rows, const KernelTaps& taps, Sum offset, std::size_t begin,
                 std::size_t n) {
    const auto firstWeight = static_cast<Sum>(taps.firstWeight);
    const auto innerWeight = static_cast<Sum>(taps.innerWeight);
    const auto lastWeight = static_cast<Sum>(taps.lastWeight);
    const Byte* __restrict const first = rows[0] + begin;
    const Byte* __restrict const last = rows[taps.count - 1] + begin;
    if (taps.count == 1) {
        for (std::size_t i = 0; i < n; ++i)
            sums[i] = static_cast<Sum>(offset + first[i] * firstWeight);
        return;
    }
    if (taps.count == 3) {
        const Byte* __restrict const inner = rows[1] + begin;
        for (std::size_t i = 0; i < n; ++i)
            sums[i] = static_cast<Sum>(offset + first[i] * firstWeight + inner[i] * innerWeight + last[i] * lastWeight);
        return;
    }
    for (std::size_t i = 0; i < n; ++i)
        sums[i] = static_cast<Sum>(offset + first[i] * firstWeight + last[i] * lastWeight);
    for (std::uint32_t r = 1; r + 1 < taps.count; ++r) {
        const Byte* __restrict const inner = rows[r] + begin;
        for (std::size_t i = 0; i < n; ++i)
            sums[i] = static_cast<Sum>(sums[i] + inner[i] * innerWeight);
    }
}

inline std::uint32_t weightOf(const KernelTaps& taps, std::uint32_t i) {
    return i == 0 ? taps.firstWeight : i + 1 == taps.count ? taps.lastWeight : taps.innerWeight;
}

/// @tparam All holds the sum of a sample, @tparam Product half of that many bits more
template <class Sum, class All, class Product>
void weighColumnsTo(Byte* __restrict dst, const Sum* __restrict sums, const KernelTaps* taps, std::size_t begin,
                    std::size_t n, std::size_t units, const KernelDivisor& divisor) {
    constexpr std::size_t lanes = ResizeKernels::lanes;
    const std::size_t step = units * lanes;
    const auto offset = static_cast<All>(divisor.offset);
    const auto factor = static_cast<All>(divisor.factor);
    const std::uint32_t shift = divisor.shift;
    for (std::size_t x = 0; x < n; ++x) {
        const KernelTaps t = taps[x];
        for (std::size_t unit = 0; unit < units; ++unit) {
            const Sum* column = sums + (t.first - begin) * step + unit * lanes;
            All all[lanes];
            for (std::size_t i = 0; i < lanes; ++i)
                all[i] = offset;
            for (std::uint32_t c = 0; c < t.count; ++c, column += step) {
                const auto weight = static_cast<All>(weightOf(t, c));
                for (std::size_t i = 0; i < lanes; ++i)
                    all[i] = static_cast<All>(all[i] + weight * static_cast<All>(column[i]));
            }
            for (std::size_t i = 0; i < lanes; ++i)
                dst[i] = static_cast<Byte>(static_cast<All>(Product{all[i]} * factor >> (8 * sizeof(All))) >> shift);
            dst += lanes;
        }
    }
}

void weighColumnsWide(Byte* __restrict dst, const std::uint32_t* __restrict sums, const KernelTaps* taps,
                      std::size_t begin, std::size_t n, std::size_t units, const KernelDivisor& divisor) {
    constexpr std::size_t lanes = ResizeKernels::lanes;
    const std::size_t step = units * lanes;
    const std::uint64_t total = divisor.total;
    const double part = 1 / static_cast<double>(total);
    for (std::size_t x = 0; x < n; ++x) {
        const KernelTaps t = taps[x];
        for (std::size_t unit = 0; unit < units; ++unit) {
            const std::uint32_t* column = sums + (t.first - begin) * step + unit * lanes;
            std::uint64_t all[lanes];
            for (std::size_t i = 0; i < lanes; ++i)
                all[i] = total / 2;
            for (std::uint32_t c = 0; c < t.count; ++c, column += step) {
                const std::uint64_t weight = weightOf(t, c);
                for (std::size_t i = 0; i < lanes; ++i)
                    all[i] += weight * column[i];
            }
            for (std::size_t i = 0; i < lanes; ++i) {
                // Next to the right one at the worst.
                auto sample = static_cast<std::uint64_t>(static_cast<double>(all[i]) * part);
                sample += (sample + 1) * total <= all[i];
                sample -= sample * total > all[i];
                dst[i] = static_cast<Byte>(sample);
            }
            dst += lanes;
        }
    }
}

constexpr ResizeKernels plainResizeKernels() {
    return {plainMeanOfNine,
            plainMeanOfSixteen,
            plainTwoOfThree,
            plainTwoOfOne,
            plainSplit<3>,
            plainJoin<3>,
            plainSplit<4>,
            plainJoin<4>,
            weighRowsTo<std::uint16_t>,
            weighRowsTo<std::uint32_t>,
            weighColumnsTo<std::uint16_t, std::uint16_t, std::uint32_t>,
            weighColumnsTo<std::int16_t, std::uint32_t, std::uint64_t>,
            weighColumnsTo<std::uint32_t, std::uint32_t, std::uint64_t>,
            weighColumnsWide};
}

} // namespace
} // namespace Ko

#endif
