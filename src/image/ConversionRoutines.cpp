// SPDX-License-Identifier: BSD-2-Clause
#include "image/ConversionRoutines.h"

#include "Kovanta/ConvertIm.h"
#include "image/PlaneRows.h"
#include "image/RowKernels.h"
#include "image/SharedMemory.h"
#include "image/kernels/KernelLevels.h"

#include <cstring>

using Ko::Image;
using Ko::least;
using Ko::RowKernels;
using Ko::rowKernels;
using Ko::sourceRows;
using Ko::targetRows;

namespace {

using Byte = unsigned char;

void copyPlane(Image<>& dst, const Image<>& src, int p) {
    const auto from = sourceRows(src, p);
    const auto to = targetRows(dst, p);
    const std::size_t n = least(src.width, from.width, to.width);
    const std::size_t rows = least(src.height, from.height, to.height);
    if (n == 0)
        return;
    for (std::size_t r = 0, end = 0; r < rows; r = end) {
        // Rows that follow one another in memory are copied at once.
        for (end = r + 1; end < rows && from[end] == from[end - 1] + n && to[end] == to[end - 1] + n;)
            ++end;
        std::memmove(to[r], from[r], n * (end - r));
    }
}

/// Packed source, planar full-resolution target.
template <class Function>
void unpack(Image<>& dst, const Image<>& src, std::size_t bytesPerPixel, Function kernel) {
    const auto from = sourceRows(src, 0);
    const auto y = targetRows(dst, 0);
    const auto cb = targetRows(dst, 1);
    const auto cr = targetRows(dst, 2);
    const std::size_t n = least(src.width, from.width / bytesPerPixel, y.width, cb.width, cr.width);
    const std::size_t rows = least(src.height, from.height, y.height, cb.height, cr.height);
    for (std::size_t r = 0; r < rows; ++r)
        kernel(y[r], cb[r], cr[r], from[r], n);
}

/// Planar full-resolution source, packed target.
template <class Function>
void pack(Image<>& dst, const Image<>& src, std::size_t bytesPerPixel, Function kernel) {
    const auto to = targetRows(dst, 0);
    const auto y = sourceRows(src, 0);
    const auto cb = sourceRows(src, 1);
    const auto cr = sourceRows(src, 2);
    const std::size_t n = least(src.width, to.width / bytesPerPixel, y.width, cb.width, cr.width);
    const std::size_t rows = least(src.height, to.height, y.height, cb.height, cr.height);
    for (std::size_t r = 0; r < rows; ++r)
        kernel(to[r], y[r], cb[r], cr[r], n);
}

/// One plane through a range map, which works in place too, whatever else source and target share.
template <class Function>
void mapPlane(Image<>& dst, const Image<>& src, int p, const RowKernels& kernels, Function RowKernels::*map) {
    const auto from = sourceRows(src, p);
    const auto to = targetRows(dst, p);
    const std::size_t n = least(src.width, from.width, to.width);
    const std::size_t rows = least(src.height, from.height, to.height);
    const Function apart = kernels.*map;
    const Function inPlace = rowKernels().*map;
    for (std::size_t r = 0; r < rows; ++r)
        (to[r] == from[r] ? inPlace : apart)(to[r], from[r], n);
}

} // namespace

namespace Ko::routines {

void RGB_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    if (src.format == Ko::PF_RGB)
        unpack(dst, src, 3, kernels.rgbToYcc);
    else
        unpack(dst, src, 4, kernels.rgbxToYcc);
}

void BGR_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    unpack(dst, src, 3, kernels.bgrToYcc);
}

void RGBA_2_YCCA4444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const auto from = sourceRows(src, 0);
    const auto y = targetRows(dst, 0);
    const auto cb = targetRows(dst, 1);
    const auto cr = targetRows(dst, 2);
    const auto alpha = targetRows(dst, 3);
    const std::size_t n = least(src.width, from.width / 4, y.width, cb.width, cr.width, alpha.width);
    const std::size_t rows = least(src.height, from.height, y.height, cb.height, cr.height, alpha.height);
    for (std::size_t r = 0; r < rows; ++r)
        kernels.rgbaToYcca(y[r], cb[r], cr[r], alpha[r], from[r], n);
}

void RGB_2_YCC420P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    constexpr std::size_t tile = 512; // even, so that no block of four is split between tiles
    Byte cb[2][tile];
    Byte cr[2][tile];
    const auto from = sourceRows(src, 0);
    const auto y = targetRows(dst, 0);
    const auto toCb = targetRows(dst, 1);
    const auto toCr = targetRows(dst, 2);
    const std::size_t n = least(src.width, from.width / 3, y.width);
    const std::size_t rows = least(src.height, from.height, y.height);
    for (std::size_t r = 0; r < rows; r += 2)
        for (std::size_t x = 0; x < n; x += tile) {
            const std::size_t width = least(tile, n - x);
            kernels.rgbToYcc(y[r] + x, cb[0], cr[0], from[r] + 3 * x, width);
            if (r + 1 == rows)
                continue; // a lone last row has luma only
            kernels.rgbToYcc(y[r + 1] + x, cb[1], cr[1], from[r + 1] + 3 * x, width);
            if (r / 2 < toCb.height && x / 2 < toCb.width)
                kernels.meanOfBlocksTruncated(toCb[r / 2] + x / 2, cb[0], cb[1], least(width / 2, toCb.width - x / 2));
            if (r / 2 < toCr.height && x / 2 < toCr.width)
                kernels.meanOfBlocksTruncated(toCr[r / 2] + x / 2, cr[0], cr[1], least(width / 2, toCr.width - x / 2));
        }
}

void YCC444P_2_RGB(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    pack(dst, src, 3, kernels.yccToRgb);
}

void JFIF_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    unpack(dst, src, 3, kernels.jfifToYcc);
}

void YCC444P_2_JFIF(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    pack(dst, src, 3, kernels.yccToJfif);
}

void YCC444P_2_Y(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    mapPlane(dst, src, 0, kernels, &RowKernels::lumaToFull);
}

void JFIF422P_2_PF_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    mapPlane(dst, src, 0, kernels, &RowKernels::lumaToStudio);
    for (int p = 1; p <= 2; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width, to.width);
        const std::size_t pairs = least(n / 2, from.width);
        const std::size_t rows = from.width == 0 ? 0 : least(src.height, from.height, to.height);
        for (std::size_t r = 0; r < rows; ++r) {
            kernels.chromaToStudioDoubled(to[r], from[r], pairs);
            // A lone last column has no chroma of its own and takes its neighbour's.
            if (n % 2 != 0 && pairs == n / 2 && pairs != 0)
                to[r][n - 1] = to[r][n - 2];
        }
    }
}

void Y_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const int shift = dst.format == Ko::PF_YCC444P ? 0 : 1;
    mapPlane(dst, src, 0, kernels, &RowKernels::lumaToStudio);
    for (int p = 1; p <= 2; ++p) {
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width >> shift, to.width);
        const std::size_t rows = n == 0 ? 0 : least(src.height >> shift, to.height);
        for (std::size_t r = 0; r < rows; ++r)
            std::memset(to[r], 128, n);
    }
}

void YCC444P_2_YCC420P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    copyPlane(dst, src, 0);
    for (int p = 1; p <= 2; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width / 2, from.width / 2, to.width);
        const std::size_t rows = least(src.height / 2, from.height / 2, to.height);
        for (std::size_t r = 0; r < rows; ++r)
            kernels.meanOfBlocks(to[r], from[2 * r], from[2 * r + 1], n);
    }
}

void YCC420P_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    copyPlane(dst, src, 0);
    for (int p = 1; p <= 2; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width / 2, from.width, to.width / 2);
        const std::size_t rows = least(src.height / 2, from.height, to.height / 2);
        if (n == 0)
            continue;
        for (std::size_t r = 0; r < rows; ++r) {
            kernels.doubled(to[2 * r], from[r], n);
            std::memcpy(to[2 * r + 1], to[2 * r], 2 * n);
        }
    }
}

void YUY2_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const auto from = sourceRows(src, 0);
    const auto y = targetRows(dst, 0);
    const auto cb = targetRows(dst, 1);
    const auto cr = targetRows(dst, 2);
    const std::size_t n = least(src.width / 2, from.width / 4, y.width / 2, cb.width / 2, cr.width / 2);
    const std::size_t rows = least(src.height, from.height, y.height, cb.height, cr.height);
    for (std::size_t r = 0; r < rows; ++r)
        kernels.yuy2ToYcc(y[r], cb[r], cr[r], from[r], n);
}

void YCC444P_2_YUY2(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const auto to = targetRows(dst, 0);
    const auto y = sourceRows(src, 0);
    const auto cb = sourceRows(src, 1);
    const auto cr = sourceRows(src, 2);
    const std::size_t n = least(src.width / 2, to.width / 4, y.width / 2, cb.width / 2, cr.width / 2);
    const std::size_t rows = least(src.height, to.height, y.height, cb.height, cr.height);
    for (std::size_t r = 0; r < rows; ++r)
        kernels.yccToYuy2(to[r], y[r], cb[r], cr[r], n);
}

const RowKernels& kernelsFor(const Sharing& sharing) {
    return sharing.any ? portableKernels : rowKernels();
}

} // namespace Ko::routines

namespace {

using Routine = void (*)(Image<>& dst, const Image<>& src, const RowKernels& kernels);

template <Routine routine>
void runAlone(Image<>& dst, const Image<>& src) {
    routine(dst, src, Ko::routines::kernelsFor(Ko::sharingOf(dst, src)));
}

} // namespace

void RGB_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::RGB_2_YCC444P>(dst, src);
}

void BGR_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::BGR_2_YCC444P>(dst, src);
}

void RGBA_2_YCCA4444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::RGBA_2_YCCA4444P>(dst, src);
}

void RGB_2_YCC420P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::RGB_2_YCC420P>(dst, src);
}

void YCC444P_2_RGB(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YCC444P_2_RGB>(dst, src);
}

void JFIF_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::JFIF_2_YCC444P>(dst, src);
}

void YCC444P_2_JFIF(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YCC444P_2_JFIF>(dst, src);
}

void YCC444P_2_Y(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YCC444P_2_Y>(dst, src);
}

void JFIF422P_2_PF_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::JFIF422P_2_PF_YCC444P>(dst, src);
}

void Y_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::Y_2_YCC444P>(dst, src);
}

void YCC444P_2_YCC420P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YCC444P_2_YCC420P>(dst, src);
}

void YCC420P_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YCC420P_2_YCC444P>(dst, src);
}

void YUY2_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YUY2_2_YCC444P>(dst, src);
}

void YCC444P_2_YUY2(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YCC444P_2_YUY2>(dst, src);
}
