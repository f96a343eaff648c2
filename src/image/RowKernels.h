// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_ROWKERNELS_H
#define KOVANTA_SRC_IMAGE_ROWKERNELS_H

#include <cstddef>

namespace Ko {

/// The arithmetic of the conversions, one row (or row pair) at a time. `n` counts what the comment names; source and
/// target never overlap, but that lumaToStudio and lumaToFull work in place too. Only the portable kernels go one
/// sample after the other wherever rows lie, so rows that share memory go through these. They are the definition; any
/// other set must give the same bytes.
struct RowKernels {
    using Byte = unsigned char;

    /// Between RGB and studio Y'CbCr by one standard's factors, n pixels; RGB is clamped.
    struct Matrix {
        void (*rgbToYcc)(Byte* y, Byte* cb, Byte* cr, const Byte* rgb, std::size_t n);
        void (*rgbxToYcc)(Byte* y, Byte* cb, Byte* cr, const Byte* rgbx, std::size_t n);
        void (*yccToRgb)(Byte* rgb, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n);
    };
    Matrix bt601;
    Matrix bt709;
    Matrix bt2020;
    // Orders that have BT.601 only.
    void (*bgrToYcc)(Byte* y, Byte* cb, Byte* cr, const Byte* bgr, std::size_t n);
    void (*rgbaToYcca)(Byte* y, Byte* cb, Byte* cr, Byte* alpha, const Byte* rgba, std::size_t n);

    // Full range to studio range and back, n samples.
    void (*lumaToStudio)(Byte* dst, const Byte* src, std::size_t n);
    void (*lumaToFull)(Byte* dst, const Byte* src, std::size_t n);
    // The same, with packed full-range Y'CbCr on one side, n pixels.
    void (*jfifToYcc)(Byte* y, Byte* cb, Byte* cr, const Byte* jfif, std::size_t n);
    void (*yccToJfif)(Byte* jfif, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n);
    // Chroma to studio range, each of n samples written twice.
    void (*chromaToStudioDoubled)(Byte* dst, const Byte* src, std::size_t n);

    // Means of 2x2 blocks of two rows, n blocks: rounded, and truncated.
    void (*meanOfBlocks)(Byte* dst, const Byte* row0, const Byte* row1, std::size_t n);
    void (*meanOfBlocksTruncated)(Byte* dst, const Byte* row0, const Byte* row1, std::size_t n);
    // Each of n samples written twice in each of two rows.
    void (*doubled)(Byte* row0, Byte* row1, const Byte* src, std::size_t n);

    // Packed 4:2:2, n pairs of pixels.
    void (*yuy2ToYcc)(Byte* y, Byte* cb, Byte* cr, const Byte* yuy2, std::size_t n);
    void (*yccToYuy2)(Byte* yuy2, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n);

    // Mirroring: n samples, or n pixels of three bytes, into another row and in place.
    void (*mirrorBytes)(Byte* dst, const Byte* src, std::size_t n);
    void (*mirrorTriples)(Byte* dst, const Byte* src, std::size_t n);
    void (*mirrorBytesInPlace)(Byte* row, std::size_t n);
    void (*mirrorTriplesInPlace)(Byte* row, std::size_t n);
    // Exchanges n bytes of two rows.
    void (*swapRows)(Byte* a, Byte* b, std::size_t n);
    // Copies n bytes.
    void (*copyRow)(Byte* dst, const Byte* src, std::size_t n);
};

/// Whether every kernel is there. One more of them does not compile before it is named here.
/// Not a constant for gcc while its undefined-behaviour sanitizer watches null pointers.
constexpr bool isComplete(const RowKernels& k) {
    const auto& [m0, m1, m2, k0, k1, k2, k3, k4, k5, k6, k7, k8, k9, k10, k11, k12, k13, k14, k15, k16, k17] = k;
    const auto all = [](const auto&... kernel) {
        return (... && (kernel != nullptr));
    };
    const auto both = [all](const RowKernels::Matrix& m) {
        const auto& [toYcc, xToYcc, toRgb] = m;
        return all(toYcc, xToYcc, toRgb);
    };
    return both(m0) && both(m1) && both(m2) &&
           all(k0, k1, k2, k3, k4, k5, k6, k7, k8, k9, k10, k11, k12, k13, k14, k15, k16, k17);
}

/// The kernels in use: the best that this processor runs.
const RowKernels& rowKernels();
/// The same, but where that is worth it they write past the cache, for pictures that it cannot hold.
const RowKernels& streamingKernels();

} // namespace Ko

#endif
