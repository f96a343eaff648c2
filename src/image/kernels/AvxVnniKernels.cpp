// SPDX-License-Identifier: BSD-2-Clause
// Compiled for AVX2 with AVX-VNNI, whose vectors differ from AVX2's in addDotProducts() alone; the flags are in
// CMakeLists.txt.
#include "image/kernels/KernelLevels.h"
#include "image/kernels/LaneShuffles.h"
#include "image/kernels/VectorKernels.h"

namespace Ko {

constexpr LevelKernels avxVnniKernels = bothStores(withLaneShuffles(vectorKernels()));
static_assert(!__builtin_constant_p(isComplete(avxVnniKernels.cached)) || isComplete(avxVnniKernels.cached));

} // namespace Ko
