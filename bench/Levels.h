// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_BENCH_LEVELS_H
#define KOVANTA_BENCH_LEVELS_H

#include "image/kernels/KernelLevels.h"

namespace bench {

struct Level {
    const char* name;
    Ko::KernelLevel level;
};
constexpr Level levels[] = {{"portable", Ko::KernelLevel::portable},
                            {"SSE4.1", Ko::KernelLevel::sse4},
                            {"AVX2", Ko::KernelLevel::avx2},
                            {"AVX-VNNI", Ko::KernelLevel::avxVnni},
                            {"AVX-512", Ko::KernelLevel::avx512}};

} // namespace bench

#endif
