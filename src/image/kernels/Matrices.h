// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_MATRICES_H
#define KOVANTA_SRC_IMAGE_KERNELS_MATRICES_H

// The matrices to Y'CbCr and back, a block of pixels at a time.
//
// A product of a sample and a factor of more than 16 bits comes from one addition of products of 16-bit pairs: the
// sample x stands in the pair as (x, x * scale), and the factor f as (f % scale, f / scale).

#include "image/kernels/Blocks.h"
#include "image/kernels/Definition.h"
#include "image/kernels/Factors.h"
#include "image/kernels/PlainLoops.h"
#include "image/kernels/Stores.h"

namespace Ko {
namespace {

constexpr int pairOf(int first, int second) {
    return static_cast<int>((static_cast<Dword>(second) << 16) | (static_cast<Dword>(first) & 0xFFFF));
}
template <int scale>
constexpr int split(int factor) {
    return pairOf(factor - factor / scale * scale, factor / scale);
}

/// Whether the upper parts of all factors are words.
template <class Matrix>
constexpr bool splitsIntoWords() {
    using M = Matrix;
    const int factors[] = {M::lumaFromRed,     M::lumaFromBlue,    M::cbFromRed,     M::cbFromBlue,
                           M::crFromRed,       M::crFromBlue,      M::fromLuma,      M::redFromCr / 2,
                           M::greenFromCb / 2, M::greenFromCr / 2, M::blueFromCb / 2};
    for (const int f : factors)
        if (f / 128 < INT16_MIN || f / 128 > INT16_MAX)
            return false;
    return true;
}
static_assert(splitsIntoWords<Bt601>() && splitsIntoWords<Bt709>() && splitsIntoWords<Bt2020>());

struct YccParts {
    Vec luma;
    Vec blue;
    Vec red;
};

// What the sums of a quarter of a block have to begin with: a half for rounding, the offset, and what greenPair lacks.
// Levels that add it to words instead want the rest without the half to be whole there.
template <class Matrix>
constexpr int greenHigh = (lumaFromGrey<Matrix> + 256) / 512 * 2;
template <class Matrix>
constexpr int lumaBias = encodeRounding + (studio::lumaOffset << encodeBits) + greenHigh<Matrix>*(128 * 256);
constexpr int chromaBias = encodeRounding + (studio::chromaZero << encodeBits);

/// RGB to Y'CbCr for a quarter of a block, with p = R - G and q = B - G, so that chroma needs no third factor. With
/// their bias the sums have their results in bits 23..30 and are never negative.
template <class Matrix, int step, int r, int b>
[[gnu::always_inline]] inline YccParts encodeQuarter(const Byte* src, int quarter) {
    const auto low = [](int p, int q) {
        return broadcastDwords(pairOf(p % 128, q % 128));
    };
    const auto high = [](int p, int q) {
        return broadcastDwords(pairOf(p / 128, q / 128));
    };
    const Vec pixels = loadPixels<step>(src, quarter);
    const Vec green = shuffleBytes(pixels, pixelIndex<step, 1, -1, 1, -1>());
    constexpr bool inPlace = step == 4 && r == 0 && b == 2;
    const Vec redBlue =
        inPlace ? andBits(pixels, broadcastDwords(0x00FF00FF)) : shuffleBytes(pixels, pixelIndex<step, r, -1, b, -1>());
    const Vec pq = subtractWords(redBlue, green);
    const Vec pq128 = shiftLeftWords<7>(pq);
    // (G, (G - 128) * 256): the difference is the flipped sign.
    const Vec greenPair = xorBits(shuffleBytes(pixels, pixelIndex<step, 1, -1, -1, 1>()), broadcastDwords(INT32_MIN));
    const Vec fromGreen = firstDotProducts<lumaBias<Matrix>>(
        greenPair, broadcastDwords(pairOf(lumaFromGrey<Matrix> - greenHigh<Matrix> * 256, greenHigh<Matrix>)));
    return {addDotProducts(addDotProducts(fromGreen, pq, low(Matrix::lumaFromRed, Matrix::lumaFromBlue)), pq128,
                           high(Matrix::lumaFromRed, Matrix::lumaFromBlue)),
            addDotProducts(firstDotProducts<chromaBias>(pq, low(Matrix::cbFromRed, Matrix::cbFromBlue)), pq128,
                           high(Matrix::cbFromRed, Matrix::cbFromBlue)),
            addDotProducts(firstDotProducts<chromaBias>(pq, low(Matrix::crFromRed, Matrix::crFromBlue)), pq128,
                           high(Matrix::crFromRed, Matrix::crFromBlue))};
}

template <class Matrix, int step, int r, int b>
[[gnu::always_inline]] inline YccParts encodeHalf(const Byte* src, int half) {
    const YccParts first = encodeQuarter<Matrix, step, r, b>(src, 2 * half);
    const YccParts second = encodeQuarter<Matrix, step, r, b>(src, 2 * half + 1);
    return {resultsOf<lumaBias<Matrix>>(first.luma, second.luma), resultsOf<chromaBias>(first.blue, second.blue),
            resultsOf<chromaBias>(first.red, second.red)};
}

template <class Store, class Matrix, int step, int r, int b>
[[gnu::always_inline]] inline void encodeBlock(Byte* y, Byte* cb, Byte* cr, const Byte* src) {
    const YccParts first = encodeHalf<Matrix, step, r, b>(src, 0);
    const YccParts second = encodeHalf<Matrix, step, r, b>(src, 1);
    Store::store(y, packResults(first.luma, second.luma));
    Store::store(cb, packResults(first.blue, second.blue));
    Store::store(cr, packResults(first.red, second.red));
}

struct RgbWords {
    Vec r;
    Vec g;
    Vec b;
};

/// Y'CbCr to RGB for half a block, from luma and chroma times 256, as words; chroma is around zero. The sums are
/// scaled by 2^21.
template <class Matrix>
[[gnu::always_inline]] inline RgbWords decodeHalf(Vec y, Vec u256, Vec v256) {
    const auto add = [](Vec sum, Vec pair, int factors) {
        return addDotProducts(sum, pair, broadcastDwords(factors));
    };
    const Vec bias = broadcastDwords(decodeRounding - studio::lumaOffset * Matrix::fromLuma);
    const Vec y128 = shiftLeftWords<7>(y);
    const Vec u = shiftRightSignedWords<8>(u256);
    const Vec v = shiftRightSignedWords<8>(v256);
    const Vec uLow = interleaveWordsLow(u, u256), uHigh = interleaveWordsHigh(u, u256);
    const Vec vLow = interleaveWordsLow(v, v256), vHigh = interleaveWordsHigh(v, v256);
    constexpr int ty = split<128>(Matrix::fromLuma), rv = split<256>(Matrix::redFromCr),
                  gu = split<256>(Matrix::greenFromCb), gv = split<256>(Matrix::greenFromCr),
                  bu = split<256>(Matrix::blueFromCb);
    const Vec tLow = add(bias, interleaveWordsLow(y, y128), ty);
    const Vec tHigh = add(bias, interleaveWordsHigh(y, y128), ty);
    return {descale(add(tLow, vLow, rv), add(tHigh, vHigh, rv)),
            descale(add(add(tLow, uLow, gu), vLow, gv), add(add(tHigh, uHigh, gu), vHigh, gv)),
            descale(add(tLow, uLow, bu), add(tHigh, uHigh, bu))};
}

template <class Store, class Matrix>
[[gnu::always_inline]] inline void decodeBlock(Byte* rgb, const Byte* y, const Byte* cb, const Byte* cr) {
    const Vec luma = loadVector(y);
    const Vec blue = xorBits(loadVector(cb), broadcastBytes(0x80));
    const Vec red = xorBits(loadVector(cr), broadcastBytes(0x80));
    const RgbWords low = decodeHalf<Matrix>(interleaveBytesLow(luma, zero()), interleaveBytesLow(zero(), blue),
                                            interleaveBytesLow(zero(), red));
    const RgbWords high = decodeHalf<Matrix>(interleaveBytesHigh(luma, zero()), interleaveBytesHigh(zero(), blue),
                                             interleaveBytesHigh(zero(), red));
    storeDescaled<Store>(rgb, low.r, low.g, low.b, high.r, high.g, high.b);
}

// Rows shorter than a block. The compiler vectorises these too.
template <class Matrix, int step, int r, int b>
void encodeFew(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict src,
               std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const int red = src[step * i + r];
        const int green = src[step * i + 1];
        const int blue = src[step * i + b];
        y[i] = lumaOf<Matrix>(red, green, blue);
        cb[i] = cbOf<Matrix>(red, green, blue);
        cr[i] = crOf<Matrix>(red, green, blue);
    }
}

template <class Matrix>
void decodeFew(Byte* __restrict rgb, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
               std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        rgb[3 * i] = redOf<Matrix>(y[i], cr[i]);
        rgb[3 * i + 1] = greenOf<Matrix>(y[i], cb[i], cr[i]);
        rgb[3 * i + 2] = blueOf<Matrix>(y[i], cb[i]);
    }
}

template <class Store, class Matrix, int step, int r, int b>
void packedToYcc(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, const Byte* __restrict src,
                 std::size_t n) {
    if (n < vectorBytes)
        return encodeFew<Matrix, step, r, b>(y, cb, cr, src, n);
    forBlocks(n, vectorBytes,
              [=](std::size_t i) { encodeBlock<Store, Matrix, step, r, b>(y + i, cb + i, cr + i, src + step * i); });
    Store::finish();
}

/// In tiles, so that the pixels are still at hand when it comes to alpha.
template <class Store>
void rgbaToYcca(Byte* __restrict y, Byte* __restrict cb, Byte* __restrict cr, Byte* __restrict alpha,
                const Byte* __restrict rgba, std::size_t n) {
    constexpr std::size_t tile = 2048;
    for (std::size_t i = 0; i < n; i += tile) {
        const std::size_t some = n - i < tile ? n - i : tile;
        packedToYcc<Store, Bt601, 4, 0, 2>(y + i, cb + i, cr + i, rgba + 4 * i, some);
        copyAlpha(alpha + i, rgba + 4 * i, some);
    }
}

template <class Store, class Matrix>
void yccToRgb(Byte* __restrict rgb, const Byte* __restrict y, const Byte* __restrict cb, const Byte* __restrict cr,
              std::size_t n) {
    if (n < vectorBytes)
        return decodeFew<Matrix>(rgb, y, cb, cr, n);
    forBlocks(n, vectorBytes, [=](std::size_t i) { decodeBlock<Store, Matrix>(rgb + 3 * i, y + i, cb + i, cr + i); });
    Store::finish();
}

} // namespace
} // namespace Ko

#endif
