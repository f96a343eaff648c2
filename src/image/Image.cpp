// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Image.h"

#include "image/ArrayCopy.h"
#include "image/FormatTable.h"
#include "image/ImageLayout.h"
#include "image/SharedMemory.h"
#include "image/SizeLimit.h"
#include "util/Errors.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Ko {

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

template <class T>
Image<T>::Image(Image&& src) noexcept
    : plane{std::move(src.plane[0]), std::move(src.plane[1]), std::move(src.plane[2]), std::move(src.plane[3])} {
    ImageLayout::copyDescription(*this, src);
    src.width = 0;
    src.height = 0;
}

template <class T>
Image<T>& Image<T>::operator=(const Image& src) {
    if (this == &src)
        return *this;
    for (int p = 0; p < ImageLayout::planeCount; ++p)
        if (refusesSize(plane[p], src.plane[p]))
            throwLogicError("Array2D<T>::operator=", "Noalloc and trying to resize.");
    const bool fresh = sharingOf(*this, src).sourceWrapsTarget;
    ArrayCopy copies[] = {{plane[0], src.plane[0], fresh},
                          {plane[1], src.plane[1], fresh},
                          {plane[2], src.plane[2], fresh},
                          {plane[3], src.plane[3], fresh}};
    for (ArrayCopy& copy : copies)
        copy.readSamples();
    for (ArrayCopy& copy : copies)
        copy.commit();
    ImageLayout::copyDescription(*this, src);
    return *this;
}

template <class T>
Image<T>& Image<T>::operator=(Image&& src) { // NOLINT(performance-noexcept-move-constructor)
    if (this == &src)
        return *this;
    if (std::any_of(std::begin(plane), std::end(plane), [](const auto& p) { return !p.alloc; }) ||
        sharingOf(*this, src).sourceWrapsTarget)
        return *this = static_cast<const Image&>(src);
    for (int p = 0; p < ImageLayout::planeCount; ++p)
        plane[p] = std::move(src.plane[p]);
    ImageLayout::copyDescription(*this, src);
    src.width = 0;
    src.height = 0;
    return *this;
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
    std::copy(std::begin(entry->horDiv), std::end(entry->horDiv), horDiv);
    std::copy(std::begin(entry->verDiv), std::end(entry->verDiv), verDiv);
}

template <class T>
void Image<T>::size(unsigned int w, unsigned int h, bool alloc) {
    if (!ImageLayout::fits(*this, w, h))
        throwTooLarge("Image<T>::size");
    ImageLayout::size(*this, w, h, alloc);
}

template class Image<unsigned char>;

} // namespace Ko
