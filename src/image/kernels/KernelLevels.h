// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_KERNELLEVELS_H
#define KOVANTA_SRC_IMAGE_KERNELS_KERNELLEVELS_H

#include "image/RowKernels.h"
#include "image/SampleKernels.h"
#include "image/scale/ResizeKernels.h"
#include "image/turn/TransposeStrip.h"

namespace Ko {

/// The sets of row kernels there are: the definition, and faster ones by the instructions they need.
enum class KernelLevel { portable, sse4, avx2, avxVnni, avx512 };

/// The kernels of a level by where they write.
struct LevelKernels {
    RowKernels cached;
    RowKernels streaming; ///< Past the cache, where that is worth it.
    SampleKernels samples;
    ResizeKernels resize;
    TransposeStrip* transposeStrip;
};

/// The kernels of a level; null when this processor or this build has no such level.
const LevelKernels* kernelsOf(KernelLevel level);

/// Makes rowKernels() return the kernels of a level from now on, for tests and benchmarks.
/// @return false, and nothing changes, when kernelsOf() has none
bool useKernels(KernelLevel level);

extern const LevelKernels portableKernels;
extern const LevelKernels sse4Kernels;
extern const LevelKernels avx2Kernels;
extern const LevelKernels avxVnniKernels;
extern const LevelKernels avx512Kernels;

} // namespace Ko

#endif
