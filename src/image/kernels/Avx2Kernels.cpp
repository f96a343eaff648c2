// SPDX-License-Identifier: BSD-2-Clause
// Compiled for AVX2; the flags are in CMakeLists.txt.
#include "image/kernels/KernelLevels.h"
#include "image/kernels/LaneShuffles.h"
#include "image/kernels/VectorKernels.h"

namespace Ko {

constexpr LevelKernels avx2Kernels = bothStores(withLaneShuffles(vectorKernels()));
static_assert(!__builtin_constant_p(isComplete(avx2Kernels.cached)) || isComplete(avx2Kernels.cached));

} // namespace Ko
