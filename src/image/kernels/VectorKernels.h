// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORKERNELS_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORKERNELS_H

// The kernels that every level with vectors has, in the vectors of the including source.

#include "image/RowKernels.h"
#include "image/kernels/CopyRow.h"
#include "image/kernels/KernelLevels.h"
#include "image/kernels/Matrices.h"
#include "image/kernels/Means.h"
#include "image/kernels/PlainLoops.h"
#include "image/kernels/Ranges.h"
#include "image/kernels/ResizeVectors.h"
#include "image/kernels/SampleLoops.h"
#include "image/kernels/TransposeStrips.h"
#include "image/kernels/Triples.h"

namespace Ko {
namespace {

template <class Store, class M>
constexpr RowKernels::Matrix matrixKernels() {
    return {packedToYcc<Store, M, 3, 0, 2>, packedToYcc<Store, M, 4, 0, 2>, yccToRgb<Store, M>};
}

/// @p k with the kernels that may write past the cache. The others move video, from a decoder or to an encoder: one
/// side of that is small and wanted at once.
template <class Store>
constexpr RowKernels withStores(RowKernels k) {
    k.bt601 = matrixKernels<Store, Bt601>();
    k.bt709 = matrixKernels<Store, Bt709>();
    k.bt2020 = matrixKernels<Store, Bt2020>();
    k.bgrToYcc = packedToYcc<Store, Bt601, 3, 2, 0>;
    k.rgbaToYcca = rgbaToYcca<Store>;
    k.lumaToStudio = mapRange<Store, LumaToStudio>;
    k.lumaToFull = mapRange<Store, LumaToFull>;
    k.jfifToYcc = jfifToYcc<Store>;
    k.yccToJfif = yccToJfif<Store>;
    return k;
}

constexpr RowKernels vectorKernels() {
    RowKernels k = withStores<Cached>({});
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

/// A level made of its kernels.
constexpr LevelKernels bothStores(const RowKernels& k) {
    return {k, withStores<Streaming>(k), vectorSampleKernels(), vectorResizeKernels(), transposeStrip};
}

} // namespace
} // namespace Ko

#endif
