// SPDX-License-Identifier: BSD-2-Clause
#include "image/kernels/KernelLevels.h"

#include <atomic>
#include <initializer_list>

#ifdef KOVANTA_X86_KERNELS
#include <cpuid.h>
#endif

namespace Ko {

namespace {

std::atomic<const LevelKernels*> inUse{nullptr};

const LevelKernels* best() {
    for (const KernelLevel level : {KernelLevel::avx512, KernelLevel::avxVnni, KernelLevel::avx2, KernelLevel::sse4})
        if (const LevelKernels* kernels = kernelsOf(level))
            return kernels;
    return &portableKernels;
}

const LevelKernels& levelInUse() {
    const LevelKernels* kernels = inUse.load(std::memory_order_relaxed);
    if (!kernels) {
        // Whoever comes first, every thread finds the same.
        kernels = best();
        inUse.store(kernels, std::memory_order_relaxed);
    }
    return *kernels;
}

#ifdef KOVANTA_X86_KERNELS
/// Not every compiler knows the feature by name. Asked once: in a virtual machine the question takes microseconds.
bool hasAvxVnni() {
    static const bool has = [] {
        constexpr unsigned int bit = 1U << 4;
        unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
        return __get_cpuid_count(7, 1, &eax, &ebx, &ecx, &edx) && (eax & bit) != 0;
    }();
    return has;
}
#endif

} // namespace

const LevelKernels* kernelsOf(KernelLevel level) {
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
    case KernelLevel::avxVnni:
        return kernelsOf(KernelLevel::avx2) && hasAvxVnni() ? &avxVnniKernels : nullptr;
    case KernelLevel::avx2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") ? &avx2Kernels : nullptr;
    case KernelLevel::sse4:
        return __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("sse4.1") ? &sse4Kernels : nullptr;
#endif
    case KernelLevel::portable:
        return &portableKernels;
    default:
        return nullptr;
    }
}

bool useKernels(KernelLevel level) {
    const LevelKernels* kernels = kernelsOf(level);
    if (kernels)
        inUse.store(kernels, std::memory_order_relaxed);
    return kernels != nullptr;
}

const RowKernels& rowKernels() {
    return levelInUse().cached;
}

const RowKernels& streamingKernels() {
    return levelInUse().streaming;
}

const SampleKernels& sampleKernels() {
    return levelInUse().samples;
}

TransposeStrip* transposeStripInUse() {
    return levelInUse().transposeStrip;
}

const ResizeKernels& resizeKernels() {
    return levelInUse().resize;
}

} // namespace Ko
