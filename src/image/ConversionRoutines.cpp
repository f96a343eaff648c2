// SPDX-License-Identifier: BSD-2-Clause
#include "image/ConversionRoutines.h"

#include "Kovanta/ConvertIm.h"
#include "image/CacheSize.h"
#include "image/ImageLayout.h"
#include "image/PlaneRows.h"
#include "image/RowKernels.h"
#include "image/SharedMemory.h"
#include "image/kernels/KernelLevels.h"

#include <cstring>

using Ko::followOneAnother;
using Ko::Image;
using Ko::least;
using Ko::PlaneRows;
using Ko::RowKernels;
using Ko::rowKernels;
using Ko::sourceRows;
using Ko::targetRows;

namespace {

using Byte = unsigned char;

/// How much of all planes takes part. Rows that follow one another in every plane count as one: short rows cost more to
/// begin than to convert.
struct Extent {
    std::size_t n; ///< Units in a row.
    std::size_t rows;

    /// @param bytes what a unit takes in the plane
    template <class Pointer>
    bool joins(const PlaneRows<Pointer>& plane, std::size_t bytes) const {
        return followOneAnother(plane, n * bytes, rows);
    }
    void joinIf(bool all) {
        if (all && rows != 0) {
            n *= rows;
            rows = 1;
        }
    }
};

void copyPlane(Image<>& dst, const Image<>& src, int p, const RowKernels& kernels) {
    const auto from = sourceRows(src, p);
    const auto to = targetRows(dst, p);
    Extent all{least(src.width, from.width, to.width), least(src.height, from.height, to.height)};
    if (all.n == 0 || all.rows == 0)
        return;
    if (all.joins(from, 1) && all.joins(to, 1)) {
        std::memmove(to[0], from[0], all.n * all.rows);
        return;
    }
    for (std::size_t r = 0; r < all.rows; ++r)
        kernels.copyRow(to[r], from[r], all.n);
}

/// Packed source, planar full-resolution target.
template <class Function>
void unpack(Image<>& dst, const Image<>& src, std::size_t bytesPerPixel, Function kernel) {
    const auto from = sourceRows(src, 0);
    const auto y = targetRows(dst, 0);
    const auto cb = targetRows(dst, 1);
    const auto cr = targetRows(dst, 2);
    Extent all{least(src.width, from.width / bytesPerPixel, y.width, cb.width, cr.width),
               least(src.height, from.height, y.height, cb.height, cr.height)};
    all.joinIf(all.joins(from, bytesPerPixel) && all.joins(y, 1) && all.joins(cb, 1) && all.joins(cr, 1));
    for (std::size_t r = 0; r < all.rows; ++r)
        kernel(y[r], cb[r], cr[r], from[r], all.n);
}

/// Planar full-resolution source, packed target.
template <class Function>
void pack(Image<>& dst, const Image<>& src, std::size_t bytesPerPixel, Function kernel) {
    const auto to = targetRows(dst, 0);
    const auto y = sourceRows(src, 0);
    const auto cb = sourceRows(src, 1);
    const auto cr = sourceRows(src, 2);
    Extent all{least(src.width, to.width / bytesPerPixel, y.width, cb.width, cr.width),
               least(src.height, to.height, y.height, cb.height, cr.height)};
    all.joinIf(all.joins(to, bytesPerPixel) && all.joins(y, 1) && all.joins(cb, 1) && all.joins(cr, 1));
    for (std::size_t r = 0; r < all.rows; ++r)
        kernel(to[r], y[r], cb[r], cr[r], all.n);
}

/// One plane through a range map, which works in place too, whatever else source and target share.
template <class Function>
void mapPlane(Image<>& dst, const Image<>& src, int p, const RowKernels& kernels, Function RowKernels::*map) {
    const auto from = sourceRows(src, p);
    const auto to = targetRows(dst, p);
    Extent all{least(src.width, from.width, to.width), least(src.height, from.height, to.height)};
    all.joinIf(all.joins(from, 1) && all.joins(to, 1));
    const Function apart = kernels.*map;
    const Function inPlace = rowKernels().*map;
    for (std::size_t r = 0; r < all.rows; ++r)
        (to[r] == from[r] ? inPlace : apart)(to[r], from[r], all.n);
}

/// Those of the planes that the format uses, in bytes.
std::size_t samplesOf(const Image<>& im) {
    std::size_t sum = 0;
    for (int p = 0; p < Ko::ImageLayout::planeCount; ++p)
        if (im.horDiv[p] != 0 && im.plane[p].rows && !Ko::ImageLayout::isIdle(im.format, p))
            sum += std::size_t{im.plane[p].width} * im.plane[p].height;
    return sum;
}

} // namespace

namespace Ko::routines {

template <MatrixOf matrix>
void RGB_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    if (src.format == Ko::PF_RGB)
        unpack(dst, src, 3, (kernels.*matrix).rgbToYcc);
    else
        unpack(dst, src, 4, (kernels.*matrix).rgbxToYcc);
}

template <MatrixOf matrix>
void YCC444P_2_RGB(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    pack(dst, src, 3, (kernels.*matrix).yccToRgb);
}

template void RGB_2_YCC444P<&RowKernels::bt601>(Image<>&, const Image<>&, const RowKernels&);
template void RGB_2_YCC444P<&RowKernels::bt709>(Image<>&, const Image<>&, const RowKernels&);
template void RGB_2_YCC444P<&RowKernels::bt2020>(Image<>&, const Image<>&, const RowKernels&);
template void YCC444P_2_RGB<&RowKernels::bt601>(Image<>&, const Image<>&, const RowKernels&);
template void YCC444P_2_RGB<&RowKernels::bt709>(Image<>&, const Image<>&, const RowKernels&);
template void YCC444P_2_RGB<&RowKernels::bt2020>(Image<>&, const Image<>&, const RowKernels&);

void BGR_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    unpack(dst, src, 3, kernels.bgrToYcc);
}

void RGBA_2_YCCA4444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const auto from = sourceRows(src, 0);
    const auto y = targetRows(dst, 0);
    const auto cb = targetRows(dst, 1);
    const auto cr = targetRows(dst, 2);
    const auto alpha = targetRows(dst, 3);
    Extent all{least(src.width, from.width / 4, y.width, cb.width, cr.width, alpha.width),
               least(src.height, from.height, y.height, cb.height, cr.height, alpha.height)};
    all.joinIf(all.joins(from, 4) && all.joins(y, 1) && all.joins(cb, 1) && all.joins(cr, 1) && all.joins(alpha, 1));
    for (std::size_t r = 0; r < all.rows; ++r)
        kernels.rgbaToYcca(y[r], cb[r], cr[r], alpha[r], from[r], all.n);
}

/// What is written into the tiles is read again, so it has to go through the cache.
void RGB_2_YCC420P(Image<>& dst, const Image<>& src, const RowKernels& cachedKernels) {
    constexpr std::size_t tile = 4096; // even, so that no block of four is split; rows of most pictures as a whole
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
            cachedKernels.bt601.rgbToYcc(y[r] + x, cb[0], cr[0], from[r] + 3 * x, width);
            if (r + 1 == rows)
                continue; // a lone last row has luma only
            cachedKernels.bt601.rgbToYcc(y[r + 1] + x, cb[1], cr[1], from[r + 1] + 3 * x, width);
            if (r / 2 < toCb.height && x / 2 < toCb.width)
                cachedKernels.meanOfBlocksTruncated(toCb[r / 2] + x / 2, cb[0], cb[1],
                                                    least(width / 2, toCb.width - x / 2));
            if (r / 2 < toCr.height && x / 2 < toCr.width)
                cachedKernels.meanOfBlocksTruncated(toCr[r / 2] + x / 2, cr[0], cr[1],
                                                    least(width / 2, toCr.width - x / 2));
        }
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
        Extent pairs{least(n / 2, from.width), from.width == 0 ? 0 : least(src.height, from.height, to.height)};
        // A lone last column has no chroma of its own and takes its neighbour's. Rows with one do not join.
        const bool lone = n % 2 != 0 && pairs.n == n / 2 && pairs.n != 0;
        pairs.joinIf(pairs.joins(from, 1) && pairs.joins(to, 2) && !lone);
        for (std::size_t r = 0; r < pairs.rows; ++r) {
            kernels.chromaToStudioDoubled(to[r], from[r], pairs.n);
            if (lone)
                to[r][n - 1] = to[r][n - 2];
        }
    }
}

void Y_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const int shift = dst.format == Ko::PF_YCC444P ? 0 : 1;
    mapPlane(dst, src, 0, kernels, &RowKernels::lumaToStudio);
    for (int p = 1; p <= 2; ++p) {
        const auto to = targetRows(dst, p);
        Extent all{least(src.width >> shift, to.width), least(src.height >> shift, to.height)};
        if (all.n == 0)
            continue;
        all.joinIf(all.joins(to, 1));
        for (std::size_t r = 0; r < all.rows; ++r)
            std::memset(to[r], 128, all.n);
    }
}

void YCC444P_2_YCC420P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    copyPlane(dst, src, 0, kernels);
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
    copyPlane(dst, src, 0, kernels);
    for (int p = 1; p <= 2; ++p) {
        const auto from = sourceRows(src, p);
        const auto to = targetRows(dst, p);
        const std::size_t n = least(src.width / 2, from.width, to.width / 2);
        const std::size_t rows = least(src.height / 2, from.height, to.height / 2);
        if (n == 0)
            continue;
        for (std::size_t r = 0; r < rows; ++r)
            kernels.doubled(to[2 * r], to[2 * r + 1], from[r], n);
    }
}

void YUY2_2_YCC444P(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const auto from = sourceRows(src, 0);
    const auto y = targetRows(dst, 0);
    const auto cb = targetRows(dst, 1);
    const auto cr = targetRows(dst, 2);
    Extent pairs{least(src.width / 2, from.width / 4, y.width / 2, cb.width / 2, cr.width / 2),
                 least(src.height, from.height, y.height, cb.height, cr.height)};
    pairs.joinIf(pairs.joins(from, 4) && pairs.joins(y, 2) && pairs.joins(cb, 2) && pairs.joins(cr, 2));
    for (std::size_t r = 0; r < pairs.rows; ++r)
        kernels.yuy2ToYcc(y[r], cb[r], cr[r], from[r], pairs.n);
}

void YCC444P_2_YUY2(Image<>& dst, const Image<>& src, const RowKernels& kernels) {
    const auto to = targetRows(dst, 0);
    const auto y = sourceRows(src, 0);
    const auto cb = sourceRows(src, 1);
    const auto cr = sourceRows(src, 2);
    Extent pairs{least(src.width / 2, to.width / 4, y.width / 2, cb.width / 2, cr.width / 2),
                 least(src.height, to.height, y.height, cb.height, cr.height)};
    pairs.joinIf(pairs.joins(to, 4) && pairs.joins(y, 2) && pairs.joins(cb, 2) && pairs.joins(cr, 2));
    for (std::size_t r = 0; r < pairs.rows; ++r)
        kernels.yccToYuy2(to[r], y[r], cb[r], cr[r], pairs.n);
}

const RowKernels& kernelsFor(const Image<>& dst, const Image<>& src, const Sharing& sharing) {
    if (sharing.any)
        return portableKernels.cached;
    return samplesOf(dst) + samplesOf(src) > largestCache() ? streamingKernels() : rowKernels();
}

} // namespace Ko::routines

namespace {

using Routine = void (*)(Image<>& dst, const Image<>& src, const RowKernels& kernels);

template <Routine routine>
void runAlone(Image<>& dst, const Image<>& src) {
    routine(dst, src, Ko::routines::kernelsFor(dst, src, Ko::sharingOf(dst, src)));
}

} // namespace

void RGB_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::RGB_2_YCC444P<&RowKernels::bt601>>(dst, src);
}

void BGR_2_YCC444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::BGR_2_YCC444P>(dst, src);
}

void RGBA_2_YCCA4444P(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::RGBA_2_YCCA4444P>(dst, src);
}

void RGB_2_YCC420P(Image<>& dst, const Image<>& src) {
    const bool shares = Ko::sharingOf(dst, src).any;
    Ko::routines::RGB_2_YCC420P(dst, src, shares ? Ko::portableKernels.cached : rowKernels());
}

void YCC444P_2_RGB(Image<>& dst, const Image<>& src) {
    runAlone<Ko::routines::YCC444P_2_RGB<&RowKernels::bt601>>(dst, src);
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
