// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_SAMPLEDEFINITION_H
#define KOVANTA_SRC_IMAGE_KERNELS_SAMPLEDEFINITION_H

// The portable kernels for samples as decoders store them, which are the definition. For PortableKernels.cpp alone.

#include "image/SampleKernels.h"
#include "image/kernels/Definition.h"

#include <cstddef>

namespace Ko {
namespace {

inline int wordAt(const Byte* p) {
    return p[0] | p[1] << 8;
}

void roundWords(Byte* dst, const Byte* words, std::size_t n, int depth) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = clamped((wordAt(words + 2 * i) + (1 << (depth - 9))) >> (depth - 8));
}

void scaleWords(Byte* dst, const Byte* words, std::size_t n, WordScale scale) {
    for (std::size_t i = 0; i < n; ++i) {
        const int v = (wordAt(words + 2 * i) >> scale.shift) & ((1 << scale.depth) - 1);
        dst[i] = static_cast<Byte>((v * scale.span + scale.bias) / ((1 << scale.depth) - 1) + scale.offset);
    }
}

template <std::size_t which>
void ofPairs(Byte* dst, const Byte* pairs, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = pairs[2 * i + which];
}

void separatePairs(Byte* first, Byte* second, const Byte* pairs, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        first[i] = pairs[2 * i];
        second[i] = pairs[2 * i + 1];
    }
}

void repeated(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[2 * i] = dst[2 * i + 1] = src[i];
}

void meanOfRows(Byte* dst, const Byte* row0, const Byte* row1, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = static_cast<Byte>((row0[i] + row1[i] + 1) >> 1);
}

void planesToRgbx(Byte* rgbx, const Byte* r, const Byte* g, const Byte* b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        Byte* pixel = rgbx + 4 * i;
        pixel[0] = r[i];
        pixel[1] = g[i];
        pixel[2] = b[i];
        pixel[3] = 0;
    }
}

} // namespace
} // namespace Ko

#endif
