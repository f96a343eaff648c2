#ifndef KOVANTA_SRC_IMAGE_KERNELS_TRIPLES_H
#define KOVANTA_SRC_IMAGE_KERNELS_TRIPLES_H

// Pixels of three bytes: taken apart, put together and mirrored, in the vector operations of the level that includes
// this. Compilers see no good way to do it, least of all for AVX2.

#include "image/kernels/Blocks.h"
#include "image/kernels/PlainLoops.h"

namespace Ko {
namespace {

void splitTriples(Byte* __restrict a, Byte* __restrict b, Byte* __restrict c, const Byte* __restrict src,
                  std::size_t n) {
    for (std::size_t i = 0; n >= vectorBytes && i != n; i = nextBlock(i, n)) {
        storeVector(a + i, loadComponent<0>(src + 3 * i));
        storeVector(b + i, loadComponent<1>(src + 3 * i));
        storeVector(c + i, loadComponent<2>(src + 3 * i));
    }
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i) {
        a[i] = src[3 * i];
        b[i] = src[3 * i + 1];
        c[i] = src[3 * i + 2];
    }
}

void mergeTriples(Byte* __restrict dst, const Byte* __restrict a, const Byte* __restrict b, const Byte* __restrict c,
                  std::size_t n) {
    for (std::size_t i = 0; n >= vectorBytes && i != n; i = nextBlock(i, n))
        storeTriples<inOrder>(dst + 3 * i, loadVector(a + i), loadVector(b + i), loadVector(c + i));
    for (std::size_t i = 0; n < vectorBytes && i < n; ++i) {
        dst[3 * i] = a[i];
        dst[3 * i + 1] = b[i];
        dst[3 * i + 2] = c[i];
    }
}

/// Pixels that are kept in the nearest cache between two steps.
constexpr std::size_t tile = 1024;

void jfifToYcc(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict jfif,
               std::size_t n) {
    Byte parts[3][tile];
    for (std::size_t i = 0; i < n; i += tile) {
        const std::size_t some = n - i < tile ? n - i : tile;
        splitTriples(parts[0], parts[1], parts[2], jfif + 3 * i, some);
        lumaToStudio(y + i, parts[0], some);
        chromaToStudio(cb + i, parts[1], some);
        chromaToStudio(cr + i, parts[2], some);
    }
}

void yccToJfif(Byte* __restrict jfif, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
               std::size_t n) {
    Byte parts[3][tile];
    for (std::size_t i = 0; i < n; i += tile) {
        const std::size_t some = n - i < tile ? n - i : tile;
        lumaToFull(parts[0], y + i, some);
        chromaToFull(parts[1], cb + i, some);
        chromaToFull(parts[2], cr + i, some);
        mergeTriples(jfif + 3 * i, parts[0], parts[1], parts[2], some);
    }
}

/// The first pixel goes alone and the last ones too, so that the byte too many never leaves the row.
void mirrorTriples(Byte* __restrict dst, const Byte* __restrict src, std::size_t n) {
    const auto one = [=](std::size_t i) {
        std::memcpy(dst + 3 * i, src + 3 * (n - 1 - i), 3);
    };
    std::size_t i = 0;
    if (n != 0)
        one(i++);
    for (; i + mirroredAtOnce < n; i += mirroredAtOnce)
        mirrorSome(dst + 3 * i, src + 3 * (n - i - mirroredAtOnce));
    for (; i < n; ++i)
        one(i);
}

void mirrorTriplesInPlace(Byte* row, std::size_t n) {
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
