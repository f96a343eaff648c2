// SPDX-License-Identifier: BSD-2-Clause
// Compiled for SSE4.1 with SSSE3; the flags are in CMakeLists.txt.
// The vectors come first: the other headers are written in them.
#include "image/kernels/Vectors128.h"

#include "image/kernels/KernelLevels.h"
#include "image/kernels/LaneShuffles.h"
#include "image/kernels/VectorKernels.h"

namespace Ko {

constexpr LevelKernels sse4Kernels = bothStores(withLaneShuffles(vectorKernels()));
static_assert(!__builtin_constant_p(isComplete(sse4Kernels.cached)) || isComplete(sse4Kernels.cached));

} // namespace Ko
