// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_BT601_H
#define KOVANTA_SRC_IMAGE_KERNELS_BT601_H

// The matrices of ITU-R BT.601 between R'G'B' of 0..255 and studio-range Y'CbCr, in fixed point: 0.2568, 0.5041,
// 0.0979; -0.1482, -0.2910, 0.4392; 0.4392, -0.3678, -0.0714, and back 1.1644; 1.5960; -0.3918, -0.8130; 2.0172. The
// last digits are a choice and not what the standard's fractions round to: every result of the library hangs on them.

namespace Ko {
namespace bt601 {

// Studio range: luma 16..235, chroma 16..240 around 128.
constexpr int lumaOffset = 16;
constexpr int lumaSpan = 219;
constexpr int chromaOffset = 16;
constexpr int chromaSpan = 224;
constexpr int chromaZero = 128;

// To Y'CbCr, times 2^encodeBits.
constexpr int encodeBits = 23;
constexpr int encodeRounding = 1 << (encodeBits - 1);
constexpr int lumaFromRed = 2154103;
constexpr int lumaFromGreen = 4228940;
constexpr int lumaFromBlue = 821297;
constexpr int cbFromRed = -1243382;
constexpr int cbFromGreen = -2441019;
constexpr int cbFromBlue = 3684401;
constexpr int crFromRed = 3684401;
constexpr int crFromGreen = -3085238;
constexpr int crFromBlue = -599163;

// Grey has no chroma. Kernels that compute with R - G and B - G rely on it.
static_assert(cbFromRed + cbFromGreen + cbFromBlue == 0 && crFromRed + crFromGreen + crFromBlue == 0);
constexpr int lumaFromGrey = lumaFromRed + lumaFromGreen + lumaFromBlue;
static_assert((lumaFromGrey * 255LL + encodeRounding) >> encodeBits == lumaSpan, "white is 235");

// To R'G'B', times 2^decodeBits.
constexpr int decodeBits = 21;
constexpr int decodeRounding = 1 << (decodeBits - 1);
constexpr int fromLuma = 2441888;
constexpr int redFromCr = 3347112;
constexpr int greenFromCb = -821584;
constexpr int greenFromCr = -1704919;
constexpr int blueFromCb = 4230439;
static_assert((fromLuma * 1LL * lumaSpan + decodeRounding) >> decodeBits == 255, "235 is white");

} // namespace bt601
} // namespace Ko

#endif
