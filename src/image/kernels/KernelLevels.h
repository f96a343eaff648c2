// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_KERNELLEVELS_H
#define KOVANTA_SRC_IMAGE_KERNELS_KERNELLEVELS_H

#include "image/RowKernels.h"

namespace Ko {

/// The sets of row kernels there are: the definition, and faster ones by the instructions they need.
enum class KernelLevel { portable, avx2, avx512 };

/// The kernels of a level; null when this processor or this build has no such level.
const RowKernels* kernelsOf(KernelLevel level);

/// Makes rowKernels() return the kernels of a level from now on, for tests and benchmarks.
/// @return false, and nothing changes, when kernelsOf() has none
bool useKernels(KernelLevel level);

extern const RowKernels portableKernels;
extern const RowKernels avx2Kernels;
extern const RowKernels avx512Kernels;

} // namespace Ko

#endif
