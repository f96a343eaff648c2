// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_SCALE_RESIZEKERNELS_H
#define KOVANTA_SRC_IMAGE_SCALE_RESIZEKERNELS_H

#include <cstddef>
#include <cstdint>

namespace Ko {

/// Which samples make one of a scaled copy, as Taps, in the numbers that the kernels compute with.
struct KernelTaps {
    std::uint32_t first;
    std::uint32_t count;
    std::uint32_t firstWeight;
    std::uint32_t innerWeight;
    std::uint32_t lastWeight;
};

/// How a sum becomes a sample: (sum + offset) * factor >> (word + shift), where a word has 16 bits for sums of words
/// and else 32. Exact for what sums of bytes can be.
struct KernelDivisor {
    std::uint32_t offset; ///< Half of the divisor, and what the sums of rows left out.
    std::uint32_t factor;
    std::uint32_t shift;
    std::uint64_t total; ///< The divisor itself, for sums that pass 32 bits.
};

/// The arithmetic of scaled copies, the same at every level. Source and target never overlap.
struct ResizeKernels {
    using Byte = unsigned char;

    // For simple ratios. Rounded means of blocks of 3 x 3 and of 4 x 4 samples, n blocks.
    void (*meanOfNine)(Byte* dst, const Byte* row0, const Byte* row1, const Byte* row2, std::size_t n);
    void (*meanOfSixteen)(Byte* dst, const Byte* row0, const Byte* row1, const Byte* row2, const Byte* row3,
                          std::size_t n);
    /// Two samples of each three, n times; the heavy row counts twice.
    void (*twoOfThree)(Byte* dst, const Byte* heavy, const Byte* light, std::size_t n);
    /// Two samples of each one, n times; the near row counts three times.
    void (*twoOfOne)(Byte* dst, const Byte* near, const Byte* far, std::size_t n);

    // Packed pixels of three and four bytes taken apart and put together, n of them.
    void (*splitTriples)(Byte* const* dst, const Byte* src, std::size_t n);
    void (*joinTriples)(Byte* dst, const Byte* const* src, std::size_t n);
    void (*splitQuads)(Byte* const* dst, const Byte* src, std::size_t n);
    void (*joinQuads)(Byte* dst, const Byte* const* src, std::size_t n);

    // For any ratio. Rows first, then columns, of 16 rows at once, whose 16 sums follow one another.
    static constexpr std::size_t lanes = 16;
    /// Sums of the rows that the taps count, from column @p begin on, n of them, each with an offset.
    template <class Sum>
    using WeighRows = void(Sum* sums, const Byte* const* rows, const KernelTaps& taps, Sum offset, std::size_t begin,
                           std::size_t n);
    WeighRows<std::uint16_t>* weighRowsToWords;
    WeighRows<std::uint32_t>* weighRows;
    /// Samples of n target columns, whose taps count from column @p begin on; @p units are the bytes of a pixel.
    template <class Sum>
    using WeighColumns = void(Byte* dst, const Sum* sums, const KernelTaps* taps, std::size_t begin, std::size_t n,
                              std::size_t units, const KernelDivisor& divisor);
    WeighColumns<std::uint16_t>* weighColumnsInWords; ///< All sums are words.
    WeighColumns<std::int16_t>* weighColumnsOfWords;  ///< Those of the rows are, and the weights.
    WeighColumns<std::uint32_t>* weighColumns;
    WeighColumns<std::uint32_t>* weighColumnsWide; ///< All sums have 64 bits; less than 2^52 of them are used.
};

/// As rowKernels(): those in use.
const ResizeKernels& resizeKernels();

} // namespace Ko

#endif
