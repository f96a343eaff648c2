#include "image/kernels/KernelLevels.h"

#include <cstdint>

namespace Ko {

namespace {

using Byte = unsigned char;

constexpr int halfOf23 = 1 << 22;

// BT.601 factors times 2^23; no sum leaves 32 bits for any input.
inline Byte lumaOf(int r, int g, int b) {
    return static_cast<Byte>((static_cast<std::uint32_t>(2154103 * r + 4228940 * g + 821297 * b + halfOf23) >> 23) +
                             16);
}
inline Byte cbOf(int r, int g, int b) {
    return static_cast<Byte>(((-1243382 * r - 2441019 * g + 3684401 * b + halfOf23) >> 23) + 128);
}
inline Byte crOf(int r, int g, int b) {
    return static_cast<Byte>(((3684401 * r - 3085238 * g - 599163 * b + halfOf23) >> 23) + 128);
}
inline Byte clamped(int v) {
    return static_cast<Byte>(v < 0 ? 0 : v > 255 ? 255 : v);
}
inline Byte lumaStudio(int v) {
    return static_cast<Byte>(v * 219 / 255 + 16);
}
inline Byte chromaStudio(int v) {
    return static_cast<Byte>(v * 224 / 255 + 16);
}
inline Byte lumaFull(int v) {
    return clamped((v * 255 - 4080) / 219);
}
inline Byte chromaFull(int v) {
    return clamped((v * 255 - 4080) / 224);
}

template <int step, int r, int b>
void packedToYcc(Byte* y, Byte* cb, Byte* cr, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Byte* pixel = src + step * i;
        y[i] = lumaOf(pixel[r], pixel[1], pixel[b]);
        cb[i] = cbOf(pixel[r], pixel[1], pixel[b]);
        cr[i] = crOf(pixel[r], pixel[1], pixel[b]);
    }
}

void rgbaToYcca(Byte* y, Byte* cb, Byte* cr, Byte* alpha, const Byte* rgba, std::size_t n) {
    packedToYcc<4, 0, 2>(y, cb, cr, rgba, n);
    for (std::size_t i = 0; i < n; ++i)
        alpha[i] = rgba[4 * i + 3];
}

// The inverse matrix times 2^21; chroma offset and rounding are folded into the constants.
void yccToRgb(Byte* rgb, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const int t = 2441888 * y[i] - 39070208;
        rgb[3 * i] = clamped((t + 3347112 * cr[i] - 427381760) >> 21);
        rgb[3 * i + 1] = clamped((t - 821584 * cb[i] - 1704919 * cr[i] + 324440960) >> 21);
        rgb[3 * i + 2] = clamped((t + 4230439 * cb[i] - 540447616) >> 21);
    }
}

void lumaToStudio(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = lumaStudio(src[i]);
}

void lumaToFull(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = lumaFull(src[i]);
}

void jfifToYcc(Byte* y, Byte* cb, Byte* cr, const Byte* jfif, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        y[i] = lumaStudio(jfif[3 * i]);
        cb[i] = chromaStudio(jfif[3 * i + 1]);
        cr[i] = chromaStudio(jfif[3 * i + 2]);
    }
}

void yccToJfif(Byte* jfif, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        jfif[3 * i] = lumaFull(y[i]);
        jfif[3 * i + 1] = chromaFull(cb[i]);
        jfif[3 * i + 2] = chromaFull(cr[i]);
    }
}

void chromaToStudioDoubled(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[2 * i] = dst[2 * i + 1] = chromaStudio(src[i]);
}

template <int rounding>
void meanOfBlocks(Byte* dst, const Byte* row0, const Byte* row1, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = static_cast<Byte>((row0[2 * i] + row0[2 * i + 1] + row1[2 * i] + row1[2 * i + 1] + rounding) >> 2);
}

void doubled(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[2 * i] = dst[2 * i + 1] = src[i];
}

void yuy2ToYcc(Byte* y, Byte* cb, Byte* cr, const Byte* yuy2, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const Byte* pair = yuy2 + 4 * i;
        y[2 * i] = pair[0];
        y[2 * i + 1] = pair[2];
        cb[2 * i] = cb[2 * i + 1] = pair[1];
        cr[2 * i] = cr[2 * i + 1] = pair[3];
    }
}

void yccToYuy2(Byte* yuy2, const Byte* y, const Byte* cb, const Byte* cr, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        Byte* pair = yuy2 + 4 * i;
        pair[0] = y[2 * i];
        pair[1] = static_cast<Byte>((cb[2 * i] + cb[2 * i + 1]) >> 1);
        pair[2] = y[2 * i + 1];
        pair[3] = static_cast<Byte>((cr[2 * i] + cr[2 * i + 1]) >> 1);
    }
}

inline void swapBytes(Byte& a, Byte& b) {
    const Byte kept = a;
    a = b;
    b = kept;
}

void mirrorBytes(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = src[n - 1 - i];
}

void mirrorTriples(Byte* dst, const Byte* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t b = 0; b < 3; ++b)
            dst[3 * i + b] = src[3 * (n - 1 - i) + b];
}

void mirrorBytesInPlace(Byte* row, std::size_t n) {
    for (std::size_t i = 0; i < n / 2; ++i)
        swapBytes(row[i], row[n - 1 - i]);
}

void mirrorTriplesInPlace(Byte* row, std::size_t n) {
    for (std::size_t i = 0; i < n / 2; ++i)
        for (std::size_t b = 0; b < 3; ++b)
            swapBytes(row[3 * i + b], row[3 * (n - 1 - i) + b]);
}

void swapRows(Byte* a, Byte* b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        swapBytes(a[i], b[i]);
}

} // namespace

const RowKernels portableKernels = {
    packedToYcc<3, 0, 2>,
    packedToYcc<3, 2, 0>,
    packedToYcc<4, 0, 2>,
    rgbaToYcca,
    yccToRgb,
    lumaToStudio,
    lumaToFull,
    jfifToYcc,
    yccToJfif,
    chromaToStudioDoubled,
    meanOfBlocks<2>,
    meanOfBlocks<0>,
    doubled,
    yuy2ToYcc,
    yccToYuy2,
    mirrorBytes,
    mirrorTriples,
    mirrorBytesInPlace,
    mirrorTriplesInPlace,
    swapRows,
};

} // namespace Ko
