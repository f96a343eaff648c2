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

struct YccParts {
    Vec luma;
    Vec blue;
    Vec red;
};

/// RGB to Y'CbCr for a quarter of a block, with p = R - G and q = B - G, so that chroma needs no third factor. The
/// sums keep their results in bits 23..30 and are never negative.
template <int step, int r, int b>
[[gnu::always_inline]] inline YccParts encodeQuarter(const Byte* src, int quarter) {
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

    const Vec pixels = loadPixels<step>(src, quarter);
    const Vec green = pick(pixels, pixelIndex<step, 1, -1, 1, -1>());
    constexpr bool inPlace = step == 4 && r == 0 && b == 2;
    const Vec redBlue =
        inPlace ? commonBits(pixels, allDwords(0x00FF00FF)) : pick(pixels, pixelIndex<step, r, -1, b, -1>());
    const Vec pq = subtractWords(redBlue, green);
    const Vec pq128 = shiftWordsUp<7>(pq);
    // (G, (G - 128) * 256): the difference is the flipped sign.
    const Vec greenPair = flipBits(pick(pixels, pixelIndex<step, 1, -1, -1, 1>()), allDwords(INT32_MIN));
    const Vec fromGreen = addProducts(lumaBias, greenPair, allDwords(split<256>(yg)));
    return {addProducts(addProducts(fromGreen, pq, low(yp, yq)), pq128, high(yp, yq)),
            addProducts(addProducts(chromaBias, pq, low(cbp, cbq)), pq128, high(cbp, cbq)),
            addProducts(addProducts(chromaBias, pq, low(crp, crq)), pq128, high(crp, crq))};
}

template <int step, int r, int b>
[[gnu::always_inline]] inline YccParts encodeHalf(const Byte* src, int half) {
    const YccParts first = encodeQuarter<step, r, b>(src, 2 * half);
    const YccParts second = encodeQuarter<step, r, b>(src, 2 * half + 1);
    return {resultsOf(first.luma, second.luma), resultsOf(first.blue, second.blue), resultsOf(first.red, second.red)};
}

template <int step, int r, int b>
[[gnu::always_inline]] inline void encodeBlock(Byte* y, Byte* cb, Byte* cr, const Byte* src) {
    const YccParts first = encodeHalf<step, r, b>(src, 0);
    const YccParts second = encodeHalf<step, r, b>(src, 1);
    storeVector(y, packResults(first.luma, second.luma));
    storeVector(cb, packResults(first.blue, second.blue));
    storeVector(cr, packResults(first.red, second.red));
}

struct RgbWords {
    Vec r;
    Vec g;
    Vec b;
};

/// Y'CbCr to RGB for half a block, from luma and chroma times 256, as words; chroma is around zero. The sums are
/// scaled by 2^21.
[[gnu::always_inline]] inline RgbWords decodeHalf(Vec y, Vec u256, Vec v256) {
    const auto add = [](Vec sum, Vec pair, int factors) {
        return addProducts(sum, pair, allDwords(factors));
    };
    const Vec bias = allDwords(-39070208 + (1 << 20));
    const Vec y128 = shiftWordsUp<7>(y);
    const Vec u = shiftSignedWordsDown<8>(u256);
    const Vec v = shiftSignedWordsDown<8>(v256);
    const Vec uLow = weaveWordsLow(u, u256), uHigh = weaveWordsHigh(u, u256);
    const Vec vLow = weaveWordsLow(v, v256), vHigh = weaveWordsHigh(v, v256);
    constexpr int ty = split<128>(2441888), rv = split<256>(3347112), gu = split<256>(-821584),
                  gv = split<256>(-1704919), bu = split<256>(4230439);
    const Vec tLow = add(bias, weaveWordsLow(y, y128), ty);
    const Vec tHigh = add(bias, weaveWordsHigh(y, y128), ty);
    return {descale(add(tLow, vLow, rv), add(tHigh, vHigh, rv)),
            descale(add(add(tLow, uLow, gu), vLow, gv), add(add(tHigh, uHigh, gu), vHigh, gv)),
            descale(add(tLow, uLow, bu), add(tHigh, uHigh, bu))};
}

[[gnu::always_inline]] inline void decodeBlock(Byte* rgb, const Byte* y, const Byte* cb, const Byte* cr) {
    const Vec luma = loadVector(y);
    const Vec blue = flipBits(loadVector(cb), allBytes(0x80));
    const Vec red = flipBits(loadVector(cr), allBytes(0x80));
    const RgbWords low =
        decodeHalf(weaveBytesLow(luma, zero()), weaveBytesLow(zero(), blue), weaveBytesLow(zero(), red));
    const RgbWords high =
        decodeHalf(weaveBytesHigh(luma, zero()), weaveBytesHigh(zero(), blue), weaveBytesHigh(zero(), red));
    storeTriples<placeAfterDescale>(rgb, packWords(low.r, high.r), packWords(low.g, high.g), packWords(low.b, high.b));
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
    if (n < vectorBytes)
        return encodeFew<step, r, b>(y, cb, cr, src, n);
    for (std::size_t i = 0; i != n; i = nextBlock(i, n))
        encodeBlock<step, r, b>(y + i, cb + i, cr + i, src + step * i);
}

void rgbaToYcca(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, Byte* __restrict alpha,
                const Byte* __restrict rgba, std::size_t n) {
    packedToYcc<4, 0, 2>(y, cb, cr, rgba, n);
    copyAlpha(alpha, rgba, n);
}

void yccToRgb(Byte* __restrict rgb, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
              std::size_t n) {
    if (n < vectorBytes)
        return decodeFew(rgb, y, cb, cr, n);
    for (std::size_t i = 0; i != n; i = nextBlock(i, n))
        decodeBlock(rgb + 3 * i, y + i, cb + i, cr + i);
}

} // namespace
} // namespace Ko

#endif
