#ifndef KOVANTA_SRC_IMAGE_KERNELS_MATRICES_H
#define KOVANTA_SRC_IMAGE_KERNELS_MATRICES_H

// The two BT.601 matrices, a block of pixels at a time, in the vector operations of the level that includes this.
//
// A product of a sample and a factor of more than 16 bits comes from one addition of products of 16-bit pairs: the
// sample x stands in the pair as (x, x * scale), and the factor f as (f % scale, f / scale).

#include "image/kernels/Blocks.h"
#include "image/kernels/PlainLoops.h"

namespace Ko {
namespace {

constexpr int pairOf(int first, int second) {
    return static_cast<int>((static_cast<Dword>(second) << 16) | (static_cast<Dword>(first) & 0xFFFF));
}
template <int scale>
constexpr int split(int factor) {
    return pairOf(factor - factor / scale * scale, factor / scale);
}

/// RGB to Y'CbCr, with p = R - G and q = B - G, so that chroma needs no third factor. The sums keep their result in
/// bits 23..30 and are never negative.
template <int step, int r, int b>
inline void encodeBlock(Byte* y, Byte* cb, Byte* cr, const Byte* src) {
    constexpr int yp = 2154103, yq = 821297, yg = 7204340;
    constexpr int cbp = -1243382, cbq = 3684401, crp = 3684401, crq = -599163;
    constexpr int half = 1 << 22;
    const auto low = [](int p, int q) {
        return allDwords(pairOf(p % 128, q % 128));
    };
    const auto high = [](int p, int q) {
        return allDwords(pairOf(p / 128, q / 128));
    };
    const Vec lumaBias = allDwords(half + (16 << 23) + yg / 256 * (128 * 256));
    const Vec chromaBias = allDwords(half + (128 << 23));
    const Vec signOfUpper = allDwords(static_cast<int>(0x80000000));

    Vec luma[4];
    Vec blue[4];
    Vec red[4];
    for (int i = 0; i < 4; ++i) {
        const Vec pixels = loadPixels<step>(src, i);
        const Vec green = pick(pixels, pixelIndex<step, 1, -1, 1, -1>());
        const Vec pq = subtractWords(pick(pixels, pixelIndex<step, r, -1, b, -1>()), green);
        const Vec pq128 = shiftWordsUp<7>(pq);
        // (G, (G - 128) * 256)
        const Vec greenPair = flipBits(pick(pixels, pixelIndex<step, 1, -1, -1, 1>()), signOfUpper);
        luma[i] = addProducts(addProducts(addProducts(lumaBias, greenPair, allDwords(split<256>(yg))), pq, low(yp, yq)),
                              pq128, high(yp, yq));
        blue[i] = addProducts(addProducts(chromaBias, pq, low(cbp, cbq)), pq128, high(cbp, cbq));
        red[i] = addProducts(addProducts(chromaBias, pq, low(crp, crq)), pq128, high(crp, crq));
    }
    storeVector(y, packTopBytes(luma));
    storeVector(cb, packTopBytes(blue));
    storeVector(cr, packTopBytes(red));
}

/// Eight neighbouring samples' pairs in two halves, from words and the same words scaled.
struct Pairs {
    Vec lower;
    Vec upper;
};
inline Pairs pairsOf(Vec words, Vec scaled) {
    return {weaveWordsLow(words, scaled), weaveWordsHigh(words, scaled)};
}

/// Y'CbCr to RGB, with chroma around zero. The sums are scaled by 2^21.
inline void decodeBlock(Byte* rgb, const Byte* y, const Byte* cb, const Byte* cr) {
    const Vec bias = allDwords(-39070208 + (1 << 20));
    const Vec sign = allBytes(0x80);
    const Vec luma = loadVector(y);
    const Vec blue = flipBits(loadVector(cb), sign);
    const Vec red = flipBits(loadVector(cr), sign);
    Vec r[2];
    Vec g[2];
    Vec b[2];
    for (int half = 0; half < 2; ++half) {
        const auto weave = half == 0 ? weaveBytesLow : weaveBytesHigh;
        const Vec words = weave(luma, zero());
        const Vec u256 = weave(zero(), blue);
        const Vec v256 = weave(zero(), red);
        const Pairs t = pairsOf(words, shiftWordsUp<7>(words));
        const Pairs u = pairsOf(shiftSignedWordsDown<8>(u256), u256);
        const Pairs v = pairsOf(shiftSignedWordsDown<8>(v256), v256);
        const Vec lower = addProducts(bias, t.lower, allDwords(split<128>(2441888)));
        const Vec upper = addProducts(bias, t.upper, allDwords(split<128>(2441888)));
        const auto add = [](Vec sum, Vec pair, int factor) {
            return addProducts(sum, pair, allDwords(factor));
        };
        constexpr int rv = split<256>(3347112), gu = split<256>(-821584), gv = split<256>(-1704919),
                      bu = split<256>(4230439);
        r[half] = descale(add(lower, v.lower, rv), add(upper, v.upper, rv));
        g[half] = descale(add(add(lower, u.lower, gu), v.lower, gv), add(add(upper, u.upper, gu), v.upper, gv));
        b[half] = descale(add(lower, u.lower, bu), add(upper, u.upper, bu));
    }
    storeTriples<placeAfterDescale>(rgb, clampToBytes(r[0], r[1]), clampToBytes(g[0], g[1]), clampToBytes(b[0], b[1]));
}

// Rows shorter than a block. The compiler vectorises these too.
template <int step, int r, int b>
void encodeFew(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict src,
               std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const int red = src[step * i + r];
        const int green = src[step * i + 1];
        const int blue = src[step * i + b];
        constexpr int half = 1 << 22;
        y[i] = static_cast<Byte>(((2154103 * red + 4228940 * green + 821297 * blue + half) >> 23) + 16);
        cb[i] = static_cast<Byte>(((-1243382 * red - 2441019 * green + 3684401 * blue + half) >> 23) + 128);
        cr[i] = static_cast<Byte>(((3684401 * red - 3085238 * green - 599163 * blue + half) >> 23) + 128);
    }
}

inline Byte clamped(int v) {
    return static_cast<Byte>(v < 0 ? 0 : v > 255 ? 255 : v);
}

void decodeFew(Byte* __restrict rgb, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
               std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const int t = 2441888 * y[i] - 39070208 + (1 << 20);
        const int u = cb[i] - 128;
        const int v = cr[i] - 128;
        rgb[3 * i] = clamped((t + 3347112 * v) >> 21);
        rgb[3 * i + 1] = clamped((t - 821584 * u - 1704919 * v) >> 21);
        rgb[3 * i + 2] = clamped((t + 4230439 * u) >> 21);
    }
}

template <int step, int r, int b>
void packedToYcc(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict src,
                 std::size_t n) {
    const auto block = [=](std::size_t i) {
        encodeBlock<step, r, b>(y + i, cb + i, cr + i, src + step * i);
    };
    if (!overBlocks(n, block))
        encodeFew<step, r, b>(y, cb, cr, src, n);
}

void rgbaToYcca(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, Byte* __restrict alpha,
                const Byte* __restrict rgba, std::size_t n) {
    packedToYcc<4, 0, 2>(y, cb, cr, rgba, n);
    copyAlpha(alpha, rgba, n);
}

void yccToRgb(Byte* __restrict rgb, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
              std::size_t n) {
    if (!overBlocks(n, [=](std::size_t i) { decodeBlock(rgb + 3 * i, y + i, cb + i, cr + i); }))
        decodeFew(rgb, y, cb, cr, n);
}

} // namespace
} // namespace Ko

#endif
