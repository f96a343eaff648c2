// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_RANGES_H
#define KOVANTA_SRC_IMAGE_KERNELS_RANGES_H

// Full to studio range and back without a division, exact for every byte: x * 219 / 255 is x * 56284 / 2^16, and a
// full-range sample is x + x * 36 / 219 with x = v - 16, and so on.

#include "image/kernels/Blocks.h"
#include "image/kernels/Definition.h"
#include "image/kernels/PlainLoops.h"
#include "image/kernels/Stores.h"

namespace Ko {
namespace {

/// The products of bytes and a factor below 1, which is given times 2^16.
template <Dword factor>
inline Vec scaledBytes(Vec v) {
    const Vec f = broadcastWords(static_cast<Word>(factor));
    return packWords(multiplyWordsHigh(interleaveBytesLow(v, zero()), f),
                     multiplyWordsHigh(interleaveBytesHigh(v, zero()), f));
}

/// The mapping of a component, one sample and a vector at a time.
template <Dword factor>
struct ToStudio {
    static constexpr Byte sample(Byte v) { return static_cast<Byte>((v * factor >> 16) + 16); }
    static Vec vector(Vec v) { return addBytes(scaledBytes<factor>(v), broadcastBytes(16)); }
};
template <Dword factor, Byte top>
struct ToFull {
    static constexpr Byte sample(Byte v) {
        const Dword x = (v < 16 ? 16u : v > top ? Dword{top} : v) - 16u;
        return static_cast<Byte>(x + (x * factor >> 16));
    }
    static Vec vector(Vec v) {
        const Vec x = minBytes(subtractBytesSaturated(v, broadcastBytes(16)), broadcastBytes(top - 16));
        return addBytes(x, scaledBytes<factor>(x));
    }
};
using LumaToStudio = ToStudio<56284>;
using ChromaToStudio = ToStudio<57569>;
using LumaToFull = ToFull<10776, 235>;
using ChromaToFull = ToFull<9072, 240>;

template <class Range>
constexpr bool isExact(Byte (*definition)(int)) {
    for (int v = 0; v < 256; ++v)
        if (Range::sample(static_cast<Byte>(v)) != definition(v))
            return false;
    return true;
}
static_assert(isExact<LumaToStudio>(lumaToStudio) && isExact<ChromaToStudio>(chromaToStudio));
static_assert(isExact<LumaToFull>(lumaToFull) && isExact<ChromaToFull>(chromaToFull));

/// Also in place: the last block, which overlaps its neighbour, is computed before that is written.
template <class Store, class Range>
void mapRange(Byte* dst, const Byte* src, std::size_t n) {
    if (n < vectorBytes) {
        for (std::size_t i = 0; i < n; ++i)
            dst[i] = Range::sample(src[i]);
        return;
    }
    const Vec last = Range::vector(loadVector(src + n - vectorBytes));
    for (std::size_t i = 0; i + vectorBytes < n; i += vectorBytes)
        Store::store(dst + i, Range::vector(loadVector(src + i)));
    storeVector(dst + n - vectorBytes, last);
    Store::finish();
}

} // namespace
} // namespace Ko

#endif
