// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_DEFINITION_H
#define KOVANTA_SRC_IMAGE_KERNELS_DEFINITION_H

// What the conversions give for one sample or pixel, as it is defined; every kernel gives the same. No sum leaves 32
// bits for any input. Local to the including source, as all that is compiled for several levels.

#include "image/kernels/Bt601.h"

namespace Ko {
namespace {

using Byte = unsigned char;

constexpr Byte clamped(int v) {
    return static_cast<Byte>(v < 0 ? 0 : v > 255 ? 255 : v);
}

constexpr Byte lumaOf(int r, int g, int b) {
    using namespace bt601;
    return static_cast<Byte>(((lumaFromRed * r + lumaFromGreen * g + lumaFromBlue * b + encodeRounding) >> encodeBits) +
                             lumaOffset);
}
constexpr Byte cbOf(int r, int g, int b) {
    using namespace bt601;
    return static_cast<Byte>(((cbFromRed * r + cbFromGreen * g + cbFromBlue * b + encodeRounding) >> encodeBits) +
                             chromaZero);
}
constexpr Byte crOf(int r, int g, int b) {
    using namespace bt601;
    return static_cast<Byte>(((crFromRed * r + crFromGreen * g + crFromBlue * b + encodeRounding) >> encodeBits) +
                             chromaZero);
}

constexpr int scaledLuma(int y) {
    return bt601::fromLuma * (y - bt601::lumaOffset) + bt601::decodeRounding;
}
constexpr Byte redOf(int y, int cr) {
    using namespace bt601;
    return clamped((scaledLuma(y) + redFromCr * (cr - chromaZero)) >> decodeBits);
}
constexpr Byte greenOf(int y, int cb, int cr) {
    using namespace bt601;
    return clamped((scaledLuma(y) + greenFromCb * (cb - chromaZero) + greenFromCr * (cr - chromaZero)) >> decodeBits);
}
constexpr Byte blueOf(int y, int cb) {
    using namespace bt601;
    return clamped((scaledLuma(y) + blueFromCb * (cb - chromaZero)) >> decodeBits);
}

// Full range to studio range; chroma is scaled as it stands, not around its zero.
constexpr Byte lumaToStudio(int v) {
    return static_cast<Byte>(v * bt601::lumaSpan / 255 + bt601::lumaOffset);
}
constexpr Byte chromaToStudio(int v) {
    return static_cast<Byte>(v * bt601::chromaSpan / 255 + bt601::chromaOffset);
}
// And back, towards zero, clamped.
constexpr Byte lumaToFull(int v) {
    return clamped((v - bt601::lumaOffset) * 255 / bt601::lumaSpan);
}
constexpr Byte chromaToFull(int v) {
    return clamped((v - bt601::chromaOffset) * 255 / bt601::chromaSpan);
}

/// Of a 2x2 block.
template <int rounding>
constexpr Byte meanOf(int a, int b, int c, int d) {
    return static_cast<Byte>((a + b + c + d + rounding) >> 2);
}

} // namespace
} // namespace Ko

#endif
