#include "Kovanta/Array2D.h"

#include "image/ArrayStorage.h"
#include "image/SizeLimit.h"
#include "util/Errors.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace Ko {

namespace {

using Plane = Array2D<unsigned char>;

std::int32_t viewColumn(const Plane& array) {
    return static_cast<std::int32_t>(array.subarrays.back().x0);
}

void shiftRows(Plane& array, std::int32_t columns) {
    if (!array.rows || columns == 0)
        return;
    for (std::size_t y = 0; y < array.height; ++y)
        if (array.rows[y])
            array.rows[y] += columns;
}

/// Copies the source's rows into these (unshifted) ones and applies the view, which is the source's by now.
void takeViewFrom(Plane& array, const Plane& src) {
    const std::int32_t column = viewColumn(src);
    if (array.rows && src.rows)
        for (std::size_t y = 0; y < array.height; ++y)
            if (array.rows[y] && src.rows[y])
                std::memmove(array.rows[y], src.rows[y] - column, array.width);
    shiftRows(array, column);
    array.view = array.rows ? array.rows + static_cast<std::int32_t>(array.subarrays.back().y0) : nullptr;
}

void exchange(Plane& a, Plane& b) noexcept {
    std::swap(a.width, b.width);
    std::swap(a.height, b.height);
    a.subarrays.swap(b.subarrays);
    std::swap(a.rows, b.rows);
    std::swap(a.view, b.view);
    std::swap(a.data, b.data);
    std::swap(a.alloc, b.alloc);
}

} // namespace

template <class T>
Array2D<T>::Array2D() noexcept = default;

template <class T>
Array2D<T>::Array2D(const Array2D& src)
    : subarrays(src.subarrays) {
    adoptStorage(*this, obtainStorage(*this, src.width, src.height, true), src.width, src.height, true);
    takeViewFrom(*this, src);
}

template <class T>
Array2D<T>::Array2D(Array2D&& src) noexcept {
    exchange(*this, src);
}

template <class T>
Array2D<T>& Array2D<T>::operator=(const Array2D& src) {
    if (this == &src)
        return *this;
    if (!alloc && (width != src.width || height != src.height))
        throwLogicError("Array2D<T>::operator=", "Noalloc and trying to resize.");
    ViewStack<Subarray> views = src.subarrays;
    if (alloc)
        adoptStorage(*this, obtainStorage(*this, src.width, src.height, true), src.width, src.height, true);
    else
        shiftRows(*this, -viewColumn(*this));
    subarrays.swap(views);
    takeViewFrom(*this, src);
    return *this;
}

template <class T>
Array2D<T>& Array2D<T>::operator=(Array2D&& src) { // NOLINT(performance-noexcept-move-constructor)
    if (this == &src)
        return *this;
    if (!alloc)
        return *this = static_cast<const Array2D&>(src);
    Array2D taken(std::move(src));
    exchange(*this, taken);
    return *this;
}

template <class T>
Array2D<T>::~Array2D() {
    delete[] rows;
    FreeSamples()(data);
}

template <class T>
void Array2D<T>::newData(unsigned int w, unsigned int h, bool owning) {
    if (!fitsArray(w, h))
        throwTooLarge("Array2D<T>::newData");
    adoptStorage(*this, obtainStorage(*this, w, h, owning), w, h, owning);
}

template <class T>
void Array2D<T>::resize(unsigned int w, unsigned int h) {
    if (!alloc) {
        if (w != width && h != height)
            throwLogicError("Array2D<T>::resize", "Noalloc and trying to resize.");
        return;
    }
    if (!fitsArray(w, h))
        throwTooLarge("Array2D<T>::resize");
    adoptStorage(*this, obtainStorage(*this, w, h, true), w, h, true);
    resetView(*this);
}

template class Array2D<unsigned char>;

} // namespace Ko
