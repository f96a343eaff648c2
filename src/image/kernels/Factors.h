// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_FACTORS_H
#define KOVANTA_SRC_IMAGE_KERNELS_FACTORS_H

// The matrices between R'G'B' of 0..255 and studio-range Y'CbCr, in fixed point. Local to the including source, as all
// that is compiled for several levels.

namespace Ko {
namespace {

// Studio range: luma 16..235, chroma 16..240 around 128.
namespace studio {
constexpr int lumaOffset = 16;
constexpr int lumaSpan = 219;
constexpr int chromaOffset = 16;
constexpr int chromaSpan = 224;
constexpr int chromaZero = 128;
} // namespace studio

// Factors to Y'CbCr are times 2^encodeBits, those to R'G'B' times 2^decodeBits.
constexpr int encodeBits = 23;
constexpr int encodeRounding = 1 << (encodeBits - 1);
constexpr int decodeBits = 21;
constexpr int decodeRounding = 1 << (decodeBits - 1);

/// ITU-R BT.601: 0.2568, 0.5041, 0.0979; -0.1482, -0.2910, 0.4392; 0.4392, -0.3678, -0.0714, and back 1.1644; 1.5960;
/// -0.3918, -0.8130; 2.0172. The last digits are a choice and not what the standard's fractions round to: every result
/// of the library hangs on them.
struct Bt601 {
    static constexpr int lumaFromRed = 2154103;
    static constexpr int lumaFromGreen = 4228940;
    static constexpr int lumaFromBlue = 821297;
    static constexpr int cbFromRed = -1243382;
    static constexpr int cbFromGreen = -2441019;
    static constexpr int cbFromBlue = 3684401;
    static constexpr int crFromRed = 3684401;
    static constexpr int crFromGreen = -3085238;
    static constexpr int crFromBlue = -599163;

    static constexpr int fromLuma = 2441888;
    static constexpr int redFromCr = 3347112;
    static constexpr int greenFromCb = -821584;
    static constexpr int greenFromCr = -1704919;
    static constexpr int blueFromCb = 4230439;
};

/// To the nearest; both positive.
constexpr int roundedQuotient(long long a, long long b) {
    return static_cast<int>((2 * a + b) / (2 * b));
}

/// A standard by what red and blue weigh in luma, in ten-thousandths. Each factor is the nearest to the standard's
/// fraction; green gets what the two others leave of white's luma, and of no chroma for grey.
template <long long kr, long long kb>
struct Standard {
    static constexpr long long whole = 10000;
    static constexpr long long kg = whole - kr - kb;

    static constexpr long long luma = static_cast<long long>(studio::lumaSpan) << encodeBits;
    static constexpr int lumaFromRed = roundedQuotient(kr * luma, whole * 255);
    static constexpr int lumaFromBlue = roundedQuotient(kb * luma, whole * 255);
    static constexpr int lumaFromGreen = roundedQuotient(luma, 255) - lumaFromRed - lumaFromBlue;

    // Cb is (B - Y) / (2 - 2 kb), Cr is (R - Y) / (2 - 2 kr).
    static constexpr long long chroma = static_cast<long long>(studio::chromaSpan) << encodeBits;
    static constexpr int cbFromRed = -roundedQuotient(kr * chroma, 2 * (whole - kb) * 255);
    static constexpr int cbFromBlue = roundedQuotient(chroma, 2 * 255);
    static constexpr int cbFromGreen = -cbFromRed - cbFromBlue;
    static constexpr int crFromRed = roundedQuotient(chroma, 2 * 255);
    static constexpr int crFromBlue = -roundedQuotient(kb * chroma, 2 * (whole - kr) * 255);
    static constexpr int crFromGreen = -crFromRed - crFromBlue;

    static constexpr long long white = 255LL << decodeBits;
    static constexpr int fromLuma = roundedQuotient(white, studio::lumaSpan);
    static constexpr int redFromCr = roundedQuotient(2 * (whole - kr) * white, whole* studio::chromaSpan);
    static constexpr int greenFromCb = -roundedQuotient(2 * (whole - kb) * kb * white, whole* kg* studio::chromaSpan);
    static constexpr int greenFromCr = -roundedQuotient(2 * (whole - kr) * kr * white, whole* kg* studio::chromaSpan);
    static constexpr int blueFromCb = roundedQuotient(2 * (whole - kb) * white, whole* studio::chromaSpan);
};

using Bt709 = Standard<2126, 722>;
using Bt2020 = Standard<2627, 593>; // non-constant luminance

// As docs/colour.md prints them.
static_assert(Bt709::lumaFromRed == 1531641 && Bt709::lumaFromGreen == 5152540 && Bt709::lumaFromBlue == 520153);
static_assert(Bt709::cbFromRed == -844261 && Bt709::cbFromGreen == -2840147 && Bt709::cbFromBlue == 3684408);
static_assert(Bt709::crFromRed == 3684408 && Bt709::crFromGreen == -3346569 && Bt709::crFromBlue == -337839);
static_assert(Bt709::fromLuma == 2441889 && Bt709::redFromCr == 3759651 && Bt709::greenFromCb == -447215 &&
              Bt709::greenFromCr == -1117592 && Bt709::blueFromCb == 4430028);

/// What the luma of a grey takes of it. Grey has no chroma: kernels compute with R - G and B - G.
template <class Matrix>
constexpr int lumaFromGrey = Matrix::lumaFromRed + Matrix::lumaFromGreen + Matrix::lumaFromBlue;

/// Whether a sum of samples times factors, which begins with @p first, stays from 0 to below 2^31 for all samples of
/// 0..255.
constexpr bool staysPositive(long long first, long long f0, long long f1, long long f2) {
    long long least = first;
    long long most = first;
    const long long factors[] = {f0, f1, f2};
    for (const long long f : factors)
        (f < 0 ? least : most) += 255 * f;
    return least >= 0 && most < 1LL << 31;
}

/// Whether no sum on the way leaves 32 bits for any input, every result of the encoding is a byte (bits 23..30 of its
/// sum) and white and black become white and black.
template <class M>
constexpr bool isSound() {
    using namespace studio;
    constexpr long long luma = encodeRounding + (static_cast<long long>(lumaOffset) << encodeBits);
    constexpr long long chroma = encodeRounding + (static_cast<long long>(chromaZero) << encodeBits);
    constexpr long long decodedLuma = 255LL * M::fromLuma + decodeRounding;
    constexpr long long green = -128LL * (M::greenFromCb + M::greenFromCr);
    constexpr long long most = (1LL << 31) - 1;
    return staysPositive(luma, M::lumaFromRed, M::lumaFromGreen, M::lumaFromBlue) &&
           staysPositive(chroma, M::cbFromRed, M::cbFromGreen, M::cbFromBlue) &&
           staysPositive(chroma, M::crFromRed, M::crFromGreen, M::crFromBlue) &&
           M::cbFromRed + M::cbFromGreen + M::cbFromBlue == 0 && M::crFromRed + M::crFromGreen + M::crFromBlue == 0 &&
           (lumaFromGrey<M> * 255LL + encodeRounding) >> encodeBits == lumaSpan &&
           // The least sums are smaller in amount.
           decodedLuma + 128LL * M::redFromCr <= most && decodedLuma + 128LL * M::blueFromCb <= most &&
           decodedLuma + green <= most && (M::fromLuma * 1LL * lumaSpan + decodeRounding) >> decodeBits == 255;
}
static_assert(isSound<Bt601>() && isSound<Bt709>() && isSound<Bt2020>());

} // namespace
} // namespace Ko

#endif
