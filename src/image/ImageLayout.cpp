// SPDX-License-Identifier: BSD-2-Clause
#include "image/ImageLayout.h"

#include "image/ArrayStorage.h"
#include "image/SizeLimit.h"
#include "util/Errors.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace Ko::ImageLayout {

void copyDescription(Image<>& to, const Image<>& from) noexcept {
    to.format = from.format;
    to.width = from.width;
    to.height = from.height;
    to.bytesPerPixelNum = from.bytesPerPixelNum;
    to.bytesPerPixelDen = from.bytesPerPixelDen;
    to.planar = from.planar;
    std::copy(std::begin(from.horDiv), std::end(from.horDiv), to.horDiv);
    std::copy(std::begin(from.verDiv), std::end(from.verDiv), to.verDiv);
    to.sequenceNumber = from.sequenceNumber;
}

PlaneSize planeSize(const Image<>& im, int p, std::uint32_t w, std::uint32_t h) {
    if (im.planar)
        return {w / im.horDiv[p], h / im.verDiv[p]};
    // 32-bit on purpose: the product comes first and wraps for the widest images that still fit.
    return {w * im.bytesPerPixelNum / im.bytesPerPixelDen, h};
}

bool fits(const Image<>& im, std::uint32_t w, std::uint32_t h) {
    if (im.planar)
        return fitsArray(w, h);
    return fitsArray(std::uint64_t{w} * im.bytesPerPixelNum / im.bytesPerPixelDen, h);
}

namespace {

/// Gives the planes that @p takesPart names their memory and the image its size.
template <class Predicate>
void sizePlanes(Image<>& im, std::uint32_t w, std::uint32_t h, bool owning, Predicate takesPart) {
    ArrayStorage storage[planeCount];
    for (int p = 0; p < planeCount; ++p)
        if (takesPart(p)) {
            const PlaneSize s = planeSize(im, p, w, h);
            storage[p] = obtainStorage(im.plane[p], s.width, s.height, owning);
        }
    im.width = w;
    im.height = h;
    for (int p = 0; p < planeCount; ++p)
        if (takesPart(p)) {
            const PlaneSize s = planeSize(im, p, w, h);
            adoptStorage(im.plane[p], std::move(storage[p]), s.width, s.height, owning);
            resetView(im.plane[p]);
        }
}

} // namespace

void size(Image<>& im, std::uint32_t w, std::uint32_t h, bool owning) {
    sizePlanes(im, w, h, owning, [&](int p) { return im.horDiv[p] != 0; });
}

void checkTarget(Image<>& im, std::uint32_t w, std::uint32_t h, const char* function) {
    bool anyOwning = false;
    bool wrappedFit = true;
    for (int p = 0; p < planeCount; ++p) {
        if (im.horDiv[p] == 0)
            continue;
        const Array2D<>& plane = im.plane[p];
        anyOwning = anyOwning || plane.alloc;
        const PlaneSize s = planeSize(im, p, w, h);
        if (!plane.alloc &&
            (s.width > plane.width || s.height > plane.height || (s.width != plane.width && s.height != plane.height)))
            wrappedFit = false;
    }
    if (!wrappedFit) {
        const std::logic_error refusal(errorText("Array2D<T>::resize", "Noalloc and trying to resize."));
        im.width = w;
        im.height = h;
        throw refusal;
    }
    if (anyOwning && !fits(im, w, h))
        throwTooLarge(function);
}

void resizeTarget(Image<>& im, std::uint32_t w, std::uint32_t h, const char* function) {
    checkTarget(im, w, h, function);
    sizePlanes(im, w, h, true, [&](int p) { return im.horDiv[p] != 0 && im.plane[p].alloc; });
}

void takeShape(Image<>& dst, PIXEL_FORMAT format, std::uint32_t w, std::uint32_t h, const char* function) {
    Image<> before(PF_Y);
    copyDescription(before, dst);
    dst.fmt(format);
    try {
        resizeTarget(dst, w, h, function);
    } catch (const std::logic_error&) {
        throw;
    } catch (...) {
        copyDescription(dst, before);
        throw;
    }
}

} // namespace Ko::ImageLayout
