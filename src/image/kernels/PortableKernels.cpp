// SPDX-License-Identifier: BSD-2-Clause
#include "image/kernels/Definition.h"
#include "image/kernels/KernelLevels.h"
#include "image/kernels/ResizeLoops.h"
#include "image/kernels/SampleDefinition.h"

#include <cstddef>
#include <cstring>

namespace Ko {

namespace {

template <class Matrix, int step, int r, int b>
void packedToYcc(Byte* y, Byte* cb, Byte* cr, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Byte* pixel = src + step * i;
        y[i] = lumaOf<Matrix>(pixel[r], pixel[1], pixel[b]);
        cb[i] = cbOf<Matrix>(pixel[r], pixel[1], pixel[b]);
        cr[i] = crOf<Matrix>(pixel[r], pixel[1], pixel[b]);
    }
}

void rgbaToYcca(Byte* y, Byte* cb, Byte* cr, Byte* alpha, const Byte* rgba, std::size_t n) {
    packedToYcc<Bt601, 4, 0, 2>(y, cb, cr, rgba, n);
    for (std::size_t i = 0; i < n; ++i)
        alpha[i] = rgba[4 * i + 3];
}

template <class Matrix>
void yccToRgb(Byte* rgb, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        rgb[3 * i] = redOf<Matrix>(y[i], cr[i]);
        rgb[3 * i + 1] = greenOf<Matrix>(y[i], cb[i], cr[i]);
        rgb[3 * i + 2] = blueOf<Matrix>(y[i], cb[i]);
    }
}

template <Byte (*map)(int)>
void mapRange(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = map(src[i]);
}

void jfifToYcc(Byte* y, Byte* cb, Byte* cr, const Byte* jfif, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        y[i] = lumaToStudio(jfif[3 * i]);
        cb[i] = chromaToStudio(jfif[3 * i + 1]);
        cr[i] = chromaToStudio(jfif[3 * i + 2]);
    }
}

void yccToJfif(Byte* jfif, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        jfif[3 * i] = lumaToFull(y[i]);
        jfif[3 * i + 1] = chromaToFull(cb[i]);
        jfif[3 * i + 2] = chromaToFull(cr[i]);
    }
}

void chromaToStudioDoubled(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[2 * i] = dst[2 * i + 1] = chromaToStudio(src[i]);
}

template <int rounding>
void meanOfBlocks(Byte* dst, const Byte* row0, const Byte* row1, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = meanOf<rounding>(row0[2 * i], row0[2 * i + 1], row1[2 * i], row1[2 * i + 1]);
}

void doubled(Byte* row0, Byte* row1, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        row0[2 * i] = row0[2 * i + 1] = src[i];
    for (std::size_t i = 0; i < 2 * n; ++i)
        row1[i] = row0[i];
}

void yuy2ToYcc(Byte* y, Byte* cb, Byte* cr, const Byte* yuy2, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Byte* pair = yuy2 + 4 * i;
        y[2 * i] = pair[0];
        y[2 * i + 1] = pair[2];
        cb[2 * i] = cb[2 * i + 1] = pair[1];
        cr[2 * i] = cr[2 * i + 1] = pair[3];
    }
}

void yccToYuy2(Byte* yuy2, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        Byte* pair = yuy2 + 4 * i;
        pair[0] = y[2 * i];
        pair[1] = static_cast<Byte>((cb[2 * i] + cb[2 * i + 1]) >> 1);
        pair[2] = y[2 * i + 1];
        pair[3] = static_cast<Byte>((cr[2 * i] + cr[2 * i + 1]) >> 1);
    }
}

inline void swapBytes(Byte& a, Byte& b) {
    const Byte kept = a;
    a = b;
    b = kept;
}

void mirrorBytes(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = src[n - 1 - i];
}

void mirrorTriples(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t b = 0; b < 3; ++b)
            dst[3 * i + b] = src[3 * (n - 1 - i) + b];
}

void mirrorBytesInPlace(Byte* row, std::size_t n) {
    for (std::size_t i = 0; i < n / 2; ++i)
        swapBytes(row[i], row[n - 1 - i]);
}

void mirrorTriplesInPlace(Byte* row, std::size_t n) {
    for (std::size_t i = 0; i < n / 2; ++i)
        for (std::size_t b = 0; b < 3; ++b)
            swapBytes(row[3 * i + b], row[3 * (n - 1 - i) + b]);
}

void swapRows(Byte* a, Byte* b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        swapBytes(a[i], b[i]);
}

void copyRow(Byte* dst, const Byte* src, std::size_t n) {
    std::memmove(dst, src, n);
}

template <class M>
constexpr RowKernels::Matrix matrixKernels() {
    return {packedToYcc<M, 3, 0, 2>, packedToYcc<M, 4, 0, 2>, yccToRgb<M>};
}

constexpr RowKernels definedKernels() {
    RowKernels k{};
    k.bt601 = matrixKernels<Bt601>();
    k.bt709 = matrixKernels<Bt709>();
    k.bt2020 = matrixKernels<Bt2020>();
    k.bgrToYcc = packedToYcc<Bt601, 3, 2, 0>;
    k.rgbaToYcca = rgbaToYcca;
    k.lumaToStudio = mapRange<lumaToStudio>;
    k.lumaToFull = mapRange<lumaToFull>;
    k.jfifToYcc = jfifToYcc;
    k.yccToJfif = yccToJfif;
    k.chromaToStudioDoubled = chromaToStudioDoubled;
    k.meanOfBlocks = meanOfBlocks<2>;
    k.meanOfBlocksTruncated = meanOfBlocks<0>;
    k.doubled = doubled;
    k.yuy2ToYcc = yuy2ToYcc;
    k.yccToYuy2 = yccToYuy2;
    k.mirrorBytes = mirrorBytes;
    k.mirrorTriples = mirrorTriples;
    k.mirrorBytesInPlace = mirrorBytesInPlace;
    k.mirrorTriplesInPlace = mirrorTriplesInPlace;
    k.swapRows = swapRows;
    k.copyRow = copyRow;
    return k;
}

constexpr SampleKernels definedSampleKernels() {
    SampleKernels k{};
    k.roundWords = roundWords;
    k.scaleWords = scaleWords;
    k.chromaToStudio = mapRange<chromaToStudio>;
    k.firstOfPairs = ofPairs<0>;
    k.secondOfPairs = ofPairs<1>;
    k.separatePairs = separatePairs;
    k.repeated = repeated;
    k.meanOfRows = meanOfRows;
    k.bgrxToYcc = packedToYcc<Bt601, 4, 2, 0>;
    k.planesToRgbx = planesToRgbx;
    return k;
}

} // namespace

constexpr LevelKernels portableKernels{definedKernels(), definedKernels(), definedSampleKernels(), plainResizeKernels(),
                                       nullptr};
static_assert(!__builtin_constant_p(isComplete(portableKernels.cached)) || isComplete(portableKernels.cached));
static_assert(!__builtin_constant_p(isComplete(portableKernels.samples)) || isComplete(portableKernels.samples));

} // namespace Ko
