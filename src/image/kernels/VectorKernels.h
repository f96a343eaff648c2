// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_VECTORKERNELS_H
#define KOVANTA_SRC_IMAGE_KERNELS_VECTORKERNELS_H

// The kernels that every level with vectors has, in the vectors of the including source.

#include "image/RowKernels.h"
#include "image/kernels/Matrices.h"
#include "image/kernels/Means.h"
#include "image/kernels/PlainLoops.h"
#include "image/kernels/Ranges.h"
#include "image/kernels/Triples.h"

namespace Ko {
namespace {

constexpr RowKernels vectorKernels() {
    RowKernels k{};
    k.rgbToYcc = packedToYcc<3, 0, 2>;
    k.bgrToYcc = packedToYcc<3, 2, 0>;
    k.rgbxToYcc = packedToYcc<4, 0, 2>;
    k.rgbaToYcca = rgbaToYcca;
    k.yccToRgb = yccToRgb;
    k.lumaToStudio = mapRange<LumaToStudio>;
    k.lumaToFull = mapRange<LumaToFull>;
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
    return k;
}

} // namespace
} // namespace Ko

#endif
