// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_STORES_H
#define KOVANTA_SRC_IMAGE_KERNELS_STORES_H

// How kernels write: through the cache, or past it, for pictures that it cannot hold. Past it nothing is read that will
// be overwritten anyway, and what the cache holds stays there.

#include "image/kernels/Vectors.h"

#include <cstdint>

namespace Ko {
namespace {

struct Cached {
    static void store(unsigned char* p, Vec v) { storeVector(p, v); }
    static void finish() {}
};

/// Only whole vectors in their places can go past the cache. What was written becomes visible to others in the usual
/// order once finish() was called.
struct Streaming {
    static void store(unsigned char* p, Vec v) {
        if (__builtin_expect(reinterpret_cast<std::uintptr_t>(p) % vectorBytes == 0, 1))
            streamVector(p, v);
        else
            storeVector(p, v);
    }
    static void finish() { _mm_sfence(); }
};

} // namespace
} // namespace Ko

#endif
