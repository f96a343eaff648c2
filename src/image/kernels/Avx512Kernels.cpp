// Compiled for AVX-512 with VBMI, VBMI2 and VNNI; the flags are in CMakeLists.txt.
// The vectors come first: the other headers are written in them.
#include "image/kernels/Vectors512.h"

#include "image/kernels/KernelLevels.h"
#include "image/kernels/Matrices.h"
#include "image/kernels/Means.h"
#include "image/kernels/Shuffles512.h"
#include "image/kernels/Triples.h"

namespace Ko {

const RowKernels avx512Kernels = {
    packedToYcc<3, 0, 2>,
    packedToYcc<3, 2, 0>,
    packedToYcc<4, 0, 2>,
    rgbaToYcca,
    yccToRgb,
    mapRange<LumaToStudio>,
    mapRange<LumaToFull>,
    jfifToYcc,
    yccToJfif,
    shuffleChromaToStudioDoubled,
    meanOfBlocks<2>,
    meanOfBlocks<0>,
    shuffleDoubled,
    shuffleYuy2ToYcc,
    shuffleYccToYuy2,
    shuffleMirrorBytes,
    mirrorTriples,
    mirrorBytesInPlace,
    mirrorTriplesInPlace,
    swapRows,
};

} // namespace Ko
