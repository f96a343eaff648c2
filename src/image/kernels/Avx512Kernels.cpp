// SPDX-License-Identifier: BSD-2-Clause
// Compiled for AVX-512 with VBMI, VBMI2 and VNNI; the flags are in CMakeLists.txt.
// The vectors come first: the other headers are written in them.
#include "image/kernels/Vectors512.h"

#include "image/kernels/KernelLevels.h"
#include "image/kernels/Shuffles512.h"
#include "image/kernels/VectorKernels.h"

namespace Ko {
namespace {

/// The kernels that gain from one instruction which picks any 64 of 128 bytes.
constexpr RowKernels withShuffles(RowKernels k) {
    k.chromaToStudioDoubled = shuffleChromaToStudioDoubled;
    k.doubled = shuffleDoubled;
    k.yuy2ToYcc = shuffleYuy2ToYcc;
    k.yccToYuy2 = shuffleYccToYuy2;
    k.mirrorBytes = shuffleMirrorBytes;
    return k;
}

} // namespace

constexpr LevelKernels avx512Kernels = bothStores(withShuffles(vectorKernels()));
static_assert(!__builtin_constant_p(isComplete(avx512Kernels.cached)) || isComplete(avx512Kernels.cached));

} // namespace Ko
