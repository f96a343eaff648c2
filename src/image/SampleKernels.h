// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_SAMPLEKERNELS_H
#define KOVANTA_SRC_IMAGE_SAMPLEKERNELS_H

#include <cstddef>

namespace Ko {

/// What becomes of the sample v in a word: (v * span + bias) / (2^depth - 1) + offset, truncated.
struct WordScale {
    int shift; ///< Bits of the word below the sample.
    int depth; ///< Bits of the sample, 8 to 16; those above are ignored.
    int span;  ///< Up to 255.
    int bias;  ///< Not negative, below 2^depth.
    int offset;
};

/// The arithmetic on samples as decoders store them, one row at a time, beside that of RowKernels. Words are of 16
/// bits, the low byte first. `n` counts samples written unless the comment says otherwise; source and target never
/// overlap, but that chromaToStudio works in place too.
struct SampleKernels {
    using Byte = unsigned char;

    /// Studio range of 9 to 16 bits to eight, to the nearest, at most 255: (v + 2^(depth - 9)) >> (depth - 8). So are
    /// words above 2^depth.
    void (*roundWords)(Byte* dst, const Byte* words, std::size_t n, int depth);
    /// Any other range.
    void (*scaleWords)(Byte* dst, const Byte* words, std::size_t n, WordScale scale);
    /// Full-range chroma of eight bits, as RowKernels::lumaToStudio for luma.
    void (*chromaToStudio)(Byte* dst, const Byte* src, std::size_t n);

    // The first or the second bytes of n pairs.
    void (*firstOfPairs)(Byte* dst, const Byte* pairs, std::size_t n);
    void (*secondOfPairs)(Byte* dst, const Byte* pairs, std::size_t n);
    /// Both.
    void (*separatePairs)(Byte* first, Byte* second, const Byte* pairs, std::size_t n);

    /// Each of n samples written twice.
    void (*repeated)(Byte* dst, const Byte* src, std::size_t n);
    /// Rounded up from the half.
    void (*meanOfRows)(Byte* dst, const Byte* row0, const Byte* row1, std::size_t n);

    /// RGB to studio Y'CbCr as RowKernels::rgbxToYcc, n pixels.
    void (*bgrxToYcc)(Byte* y, Byte* cb, Byte* cr, const Byte* bgrx, std::size_t n);
    /// n pixels, the fourth byte 0.
    void (*planesToRgbx)(Byte* rgbx, const Byte* r, const Byte* g, const Byte* b, std::size_t n);
};

/// Whether every kernel is there, as of RowKernels.
constexpr bool isComplete(const SampleKernels& k) {
    const auto& [k0, k1, k2, k3, k4, k5, k6, k7, k8, k9] = k;
    const auto all = [](const auto&... kernel) {
        return (... && (kernel != nullptr));
    };
    return all(k0, k1, k2, k3, k4, k5, k6, k7, k8, k9);
}

/// The kernels in use, of the same level as rowKernels().
const SampleKernels& sampleKernels();

} // namespace Ko

#endif
