// SPDX-License-Identifier: BSD-2-Clause
#include "image/kernels/KernelLevels.h"

#include <atomic>
#include <initializer_list>

namespace Ko {

namespace {

std::atomic<const RowKernels*> inUse{nullptr};

const RowKernels* best() {
    for (const KernelLevel level : {KernelLevel::avx512, KernelLevel::avx2})
        if (const RowKernels* kernels = kernelsOf(level))
            return kernels;
    return &portableKernels;
}

} // namespace

const RowKernels* kernelsOf(KernelLevel level) {
    switch (level) {
#ifdef KOVANTA_X86_KERNELS
    // What the sources of the levels are compiled for. These tests include the operating system's support.
    case KernelLevel::avx512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                       __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                       __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
                       __builtin_cpu_supports("avx512vnni") && __builtin_cpu_supports("bmi2")
                   ? &avx512Kernels
                   : nullptr;
    case KernelLevel::avx2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") ? &avx2Kernels : nullptr;
#endif
    case KernelLevel::portable:
        return &portableKernels;
    default:
        return nullptr;
    }
}

bool useKernels(KernelLevel level) {
    const RowKernels* kernels = kernelsOf(level);
    if (kernels)
        inUse.store(kernels, std::memory_order_relaxed);
    return kernels != nullptr;
}

const RowKernels& rowKernels() {
    const RowKernels* kernels = inUse.load(std::memory_order_relaxed);
    if (!kernels) {
        // Whoever comes first, every thread finds the same.
        kernels = best();
        inUse.store(kernels, std::memory_order_relaxed);
    }
    return *kernels;
}

} // namespace Ko
