// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_DEFINITION_H
#define KOVANTA_SRC_IMAGE_KERNELS_DEFINITION_H

// What the conversions give for one sample or pixel, as it is defined; every kernel gives the same. No sum leaves 32
// bits for any input. Local to the including source, as all that is compiled for several levels.

#include "image/kernels/Factors.h"

namespace Ko {
namespace {

using Byte = unsigned char;

constexpr Byte clamped(int v) {
    return static_cast<Byte>(v < 0 ? 0 : v > 255 ? 255 : v);
}

template <class Matrix>
constexpr Byte lumaOf(int r, int g, int b) {
    return static_cast<Byte>(
        ((Matrix::lumaFromRed * r + Matrix::lumaFromGreen * g + Matrix::lumaFromBlue * b + encodeRounding) >>
         encodeBits) +
        studio::lumaOffset);
}
constexpr Byte chromaOf(int sum) {
    return static_cast<Byte>(((sum + encodeRounding) >> encodeBits) + studio::chromaZero);
}
template <class Matrix>
constexpr Byte cbOf(int r, int g, int b) {
    return chromaOf(Matrix::cbFromRed * r + Matrix::cbFromGreen * g + Matrix::cbFromBlue * b);
}
template <class Matrix>
constexpr Byte crOf(int r, int g, int b) {
    return chromaOf(Matrix::crFromRed * r + Matrix::crFromGreen * g + Matrix::crFromBlue * b);
}

template <class Matrix>
constexpr int scaledLuma(int y) {
    return Matrix::fromLuma * (y - studio::lumaOffset) + decodeRounding;
}
template <class Matrix>
constexpr Byte redOf(int y, int cr) {
    return clamped((scaledLuma<Matrix>(y) + Matrix::redFromCr * (cr - studio::chromaZero)) >> decodeBits);
}
template <class Matrix>
constexpr Byte greenOf(int y, int cb, int cr) {
    return clamped((scaledLuma<Matrix>(y) + Matrix::greenFromCb * (cb - studio::chromaZero) +
                    Matrix::greenFromCr * (cr - studio::chromaZero)) >>
                   decodeBits);
}
template <class Matrix>
constexpr Byte blueOf(int y, int cb) {
    return clamped((scaledLuma<Matrix>(y) + Matrix::blueFromCb * (cb - studio::chromaZero)) >> decodeBits);
}

// Full range to studio range; chroma is scaled as it stands, not around its zero.
constexpr Byte lumaToStudio(int v) {
    return static_cast<Byte>(v * studio::lumaSpan / 255 + studio::lumaOffset);
}
constexpr Byte chromaToStudio(int v) {
    return static_cast<Byte>(v * studio::chromaSpan / 255 + studio::chromaOffset);
}
// And back, towards zero, clamped.
constexpr Byte lumaToFull(int v) {
    return clamped((v - studio::lumaOffset) * 255 / studio::lumaSpan);
}
constexpr Byte chromaToFull(int v) {
    return clamped((v - studio::chromaOffset) * 255 / studio::chromaSpan);
}

/// Of a 2x2 block.
template <int rounding>
constexpr Byte meanOf(int a, int b, int c, int d) {
    return static_cast<Byte>((a + b + c + d + rounding) >> 2);
}

} // namespace
} // namespace Ko

#endif
