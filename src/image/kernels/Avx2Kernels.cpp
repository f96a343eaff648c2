// Compiled for AVX2; the flags are in CMakeLists.txt.
// The vectors come first: the other headers are written in them.
#include "image/kernels/Vectors256.h"

#include "image/kernels/KernelLevels.h"
#include "image/kernels/Matrices.h"
#include "image/kernels/Means.h"
#include "image/kernels/Triples.h"

namespace Ko {

const RowKernels avx2Kernels = {
    packedToYcc<3, 0, 2>,
    packedToYcc<3, 2, 0>,
    packedToYcc<4, 0, 2>,
    rgbaToYcca,
    yccToRgb,
    mapRange<LumaToStudio>,
    mapRange<LumaToFull>,
    jfifToYcc,
    yccToJfif,
    chromaToStudioDoubled,
    meanOfBlocks<2>,
    meanOfBlocks<0>,
    doubled,
    yuy2ToYcc,
    yccToYuy2,
    mirrorBytes,
    mirrorTriples,
    mirrorBytesInPlace,
    mirrorTriplesInPlace,
    swapRows,
};

} // namespace Ko
