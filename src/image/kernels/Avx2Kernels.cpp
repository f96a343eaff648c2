// SPDX-License-Identifier: BSD-2-Clause
// Compiled for AVX2; the flags are in CMakeLists.txt.
#include "image/kernels/KernelLevels.h"
#include "image/kernels/VectorKernels.h"

namespace Ko {

constexpr RowKernels avx2Kernels = vectorKernels();
static_assert(!__builtin_constant_p(isComplete(avx2Kernels)) || isComplete(avx2Kernels));

} // namespace Ko
