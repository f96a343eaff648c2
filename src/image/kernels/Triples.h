// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_TRIPLES_H
#define KOVANTA_SRC_IMAGE_KERNELS_TRIPLES_H

// Pixels of three bytes: taken apart, put together and mirrored. Compilers see no good way to do it, least of all for
// AVX2.

#include "image/kernels/Blocks.h"
#include "image/kernels/PlainLoops.h"
#include "image/kernels/Ranges.h"
#include "image/kernels/Stores.h"

namespace Ko {
namespace {

template <class Store>
void jfifToYcc(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict jfif,
               std::size_t n) {
    if (n >= vectorBytes)
        forBlocks(n, vectorBytes, [=](std::size_t i) {
            const Vec l = LumaToStudio::vector(loadComponent<0>(jfif + 3 * i));
            const Vec b = ChromaToStudio::vector(loadComponent<1>(jfif + 3 * i));
            const Vec r = ChromaToStudio::vector(loadComponent<2>(jfif + 3 * i));
            Store::store(y + i, l);
            Store::store(cb + i, b);
            Store::store(cr + i, r);
        });
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i) {
        y[i] = LumaToStudio::sample(jfif[3 * i]);
        cb[i] = ChromaToStudio::sample(jfif[3 * i + 1]);
        cr[i] = ChromaToStudio::sample(jfif[3 * i + 2]);
    }
    Store::finish();
}

template <class Store>
void yccToJfif(Byte* __restrict jfif, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
               std::size_t n) {
    if (n >= vectorBytes)
        forBlocks(n, vectorBytes, [=](std::size_t i) {
            storeTriples<Store, inOrder>(jfif + 3 * i, LumaToFull::vector(loadVector(y + i)),
                                         ChromaToFull::vector(loadVector(cb + i)),
                                         ChromaToFull::vector(loadVector(cr + i)));
        });
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i) {
        jfif[3 * i] = LumaToFull::sample(y[i]);
        jfif[3 * i + 1] = ChromaToFull::sample(cb[i]);
        jfif[3 * i + 2] = ChromaToFull::sample(cr[i]);
    }
    Store::finish();
}

/// Where mirrorSome() reads and writes a byte too many, the first pixel goes alone and so does the last one: the byte
/// never leaves the row then.
void mirrorTriples(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    const auto one = [=](std::size_t i) {
        std::memcpy(dst + 3 * i, src + 3 * (n - 1 - i), 3);
    };
    const auto some = [=](std::size_t i) {
        mirrorSome<Cached>(dst + 3 * i, src + 3 * (n - i - mirroredAtOnce));
    };
    constexpr std::size_t alone = mirrorsByteTooMany ? 1 : 0;
    if (n < mirroredAtOnce + 2 * alone) {
        for (std::size_t i = 0; i < n; ++i)
            one(i);
        return;
    }
    std::size_t i = alone;
    for (; i + mirroredAtOnce + alone <= n; i += mirroredAtOnce)
        some(i);
    if (i + alone != n)
        some(n - alone - mirroredAtOnce);
    if (alone != 0) {
        one(0);
        one(n - 1);
    }
}

void mirrorTriplesInPlace(Byte* row, std::size_t n) {
    constexpr std::size_t tile = 1024;
    Byte kept[3 * tile];
    for (std::size_t i = 0; i < n / 2; i += tile) {
        const std::size_t some = n / 2 - i < tile ? n / 2 - i : tile;
        Byte* low = row + 3 * i;
        Byte* high = row + 3 * (n - i - some);
        std::memcpy(kept, low, 3 * some);
        mirrorTriples(low, high, some);
        mirrorTriples(high, kept, some);
    }
}

} // namespace
} // namespace Ko

#endif
