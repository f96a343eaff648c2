#include "Kovanta/Image.h"

#include "image/ArrayStorage.h"
#include "image/FormatTable.h"
#include "image/ImageLayout.h"
#include "util/Errors.h"

#include <utility>

namespace Ko {

namespace {

constexpr int planeCount = 4;

} // namespace

template <class T>
Image<T>::Image(PIXEL_FORMAT f)
    : format(PF_UNKNOWN)
    , width(0)
    , height(0)
    , bytesPerPixelNum(0)
    , bytesPerPixelDen(0)
    , planar(true)
    , horDiv{0, 0, 0, 0}
    , verDiv{0, 0, 0, 0} {
    fmt(f);
}

// Not member by member: a plane whose fresh view stack is refused must not find the planes before it gone already.
template <class T>
Image<T>::Image(Image&& src) // NOLINT(performance-noexcept-move-constructor)
    : format(src.format)
    , width(src.width)
    , height(src.height)
    , bytesPerPixelNum(src.bytesPerPixelNum)
    , bytesPerPixelDen(src.bytesPerPixelDen)
    , planar(src.planar)
    , sequenceNumber(src.sequenceNumber) {
    for (int p = 0; p < planeCount; ++p) {
        horDiv[p] = src.horDiv[p];
        verDiv[p] = src.verDiv[p];
    }
    ImageLayout::swapPlanes(*this, src);
}

template <class T>
void Image<T>::fmt(PIXEL_FORMAT f) {
    format = f;
    const FormatEntry* entry = findFormat(f);
    if (!entry || entry->kind == FormatKind::none)
        throwLogicError("Image<T>::Image", "Unknown format.");
    planar = entry->kind == FormatKind::planar;
    bytesPerPixelNum = entry->bytesPerPixelNum;
    bytesPerPixelDen = entry->bytesPerPixelDen;
    for (int p = 0; p < planeCount; ++p) {
        horDiv[p] = entry->horDiv[p];
        verDiv[p] = entry->verDiv[p];
    }
}

template <class T>
void Image<T>::size(unsigned int w, unsigned int h, bool alloc) {
    if (!ImageLayout::fits(*this, w, h))
        throwTooLarge("Image<T>::size");
    ImageLayout::size(*this, w, h, alloc);
}

void ImageLayout::swapPlanes(Image<unsigned char>& a, Image<unsigned char>& b) noexcept {
    for (int p = 0; p < planeCount; ++p)
        a.plane[p].swap(b.plane[p]);
}

ImageLayout::PlaneSize ImageLayout::planeSize(const Image<unsigned char>& im, int p, std::uint32_t w, std::uint32_t h) {
    if (im.planar)
        return {w / im.horDiv[p], h / im.verDiv[p]};
    // 32-bit on purpose: the product comes first and wraps for the widest images that still fit.
    return {w * im.bytesPerPixelNum / im.bytesPerPixelDen, h};
}

bool ImageLayout::fits(const Image<unsigned char>& im, std::uint32_t w, std::uint32_t h) {
    if (im.planar)
        return fitsArray(w, h);
    return fitsArray(std::uint64_t{w} * im.bytesPerPixelNum / im.bytesPerPixelDen, h);
}

void ImageLayout::size(Image<unsigned char>& im, std::uint32_t w, std::uint32_t h, bool owning) {
    using Plane = Array2D<unsigned char>;
    Plane::Storage storage[planeCount];
    for (int p = 0; p < planeCount; ++p)
        if (im.horDiv[p] != 0) {
            const PlaneSize s = planeSize(im, p, w, h);
            storage[p] = im.plane[p].obtain(s.width, s.height, owning);
        }
    im.width = w;
    im.height = h;
    for (int p = 0; p < planeCount; ++p)
        if (im.horDiv[p] != 0) {
            const PlaneSize s = planeSize(im, p, w, h);
            im.plane[p].adopt(std::move(storage[p]), s.width, s.height, owning);
            im.plane[p].resetView();
        }
}

void ImageLayout::resizeTarget(Image<unsigned char>& im, std::uint32_t w, std::uint32_t h, const char* function) {
    using Plane = Array2D<unsigned char>;
    bool anyOwning = false;
    bool wrappedFit = true;
    for (int p = 0; p < planeCount; ++p) {
        if (im.horDiv[p] == 0)
            continue;
        const Plane& plane = im.plane[p];
        anyOwning = anyOwning || plane.alloc;
        const PlaneSize s = planeSize(im, p, w, h);
        if (!plane.alloc &&
            (s.width > plane.width || s.height > plane.height || (s.width != plane.width && s.height != plane.height)))
            wrappedFit = false;
    }
    if (!wrappedFit) {
        im.width = w;
        im.height = h;
        throwLogicError("Array2D<T>::resize", "Noalloc and trying to resize.");
    }
    if (anyOwning && !fits(im, w, h))
        throwTooLarge(function);

    Plane::Storage storage[planeCount];
    for (int p = 0; p < planeCount; ++p)
        if (im.horDiv[p] != 0 && im.plane[p].alloc) {
            const PlaneSize s = planeSize(im, p, w, h);
            storage[p] = im.plane[p].obtain(s.width, s.height, true);
        }
    im.width = w;
    im.height = h;
    for (int p = 0; p < planeCount; ++p)
        if (im.horDiv[p] != 0 && im.plane[p].alloc) {
            const PlaneSize s = planeSize(im, p, w, h);
            im.plane[p].adopt(std::move(storage[p]), s.width, s.height, true);
            im.plane[p].resetView();
        }
}

template class Image<unsigned char>;

} // namespace Ko
