#include "Kovanta/Array2D.h"

#include "image/ArrayStorage.h"
#include "util/Errors.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace Ko {

void throwTooLarge(const char* function) {
    throwRuntimeError(function, "Image too large.");
}

template <class T>
Array2D<T>::Array2D()
    : subarrays{{0, 0, 0, 0}} {}

template <class T>
Array2D<T>::Array2D(const Array2D& src)
    : subarrays(src.subarrays) {
    adopt(obtain(src.width, src.height, true), src.width, src.height, true);
    takeViewFrom(src);
}

template <class T>
Array2D<T>::Array2D(Array2D&& src) // NOLINT(performance-noexcept-move-constructor)
    : Array2D() {
    swap(src);
}

template <class T>
Array2D<T>& Array2D<T>::operator=(const Array2D& src) {
    if (this == &src)
        return *this;
    if (!alloc && (width != src.width || height != src.height))
        throwLogicError("Array2D<T>::operator=", "Noalloc and trying to resize.");
    std::vector<Subarray> views = src.subarrays;
    if (alloc)
        adopt(obtain(src.width, src.height, true), src.width, src.height, true);
    else
        shiftRows(-viewColumn());
    subarrays.swap(views);
    takeViewFrom(src);
    return *this;
}

template <class T>
Array2D<T>& Array2D<T>::operator=(Array2D&& src) { // NOLINT(performance-noexcept-move-constructor)
    if (this == &src)
        return *this;
    if (!alloc)
        return *this = static_cast<const Array2D&>(src);
    Array2D taken(std::move(src));
    swap(taken);
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
    adopt(obtain(w, h, owning), w, h, owning);
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
    adopt(obtain(w, h, true), w, h, true);
    resetView();
}

template <class T>
typename Array2D<T>::Storage Array2D<T>::obtain(unsigned int w, unsigned int h, bool owning) const {
    Storage storage;
    if (w == 0 || h == 0)
        return storage;
    // Fresh pages are faulted in one by one, which costs as much as a conversion; the contents are undefined anyway.
    storage.keep = owning && alloc && rows && data && w == width && h == height;
    if (storage.keep)
        return storage;
    storage.rows.reset(new T*[h]);
    if (owning)
        storage.data.reset(new (sampleAlignment) T[static_cast<std::size_t>(w) * h]);
    return storage;
}

template <class T>
void Array2D<T>::adopt(Storage&& storage, unsigned int w, unsigned int h, bool owning) noexcept {
    if (!storage.keep) {
        delete[] rows;
        FreeSamples()(data);
        rows = storage.rows.release();
        data = storage.data.release();
    }
    if (w == 0 || h == 0)
        return;
    // Through locals: a row pointer could alias the members, and every conversion comes by here.
    T* row = owning ? data : nullptr;
    const std::size_t step = owning ? w : 0;
    T** const table = rows;
    for (std::size_t y = 0; y < h; ++y, row += step)
        table[y] = row;
    width = w;
    height = h;
    alloc = owning;
}

template <class T>
void Array2D<T>::resetView() noexcept {
    subarrays.resize(1);
    subarrays[0] = {width, height, 0, 0};
    view = rows;
}

template <class T>
void Array2D<T>::swap(Array2D& other) noexcept {
    std::swap(width, other.width);
    std::swap(height, other.height);
    subarrays.swap(other.subarrays);
    std::swap(rows, other.rows);
    std::swap(view, other.view);
    std::swap(data, other.data);
    std::swap(alloc, other.alloc);
}

template <class T>
std::int32_t Array2D<T>::viewColumn() const noexcept {
    return static_cast<std::int32_t>(subarrays.back().x0);
}

template <class T>
void Array2D<T>::shiftRows(std::int32_t columns) noexcept {
    if (!rows || columns == 0)
        return;
    for (std::size_t y = 0; y < height; ++y)
        if (rows[y])
            rows[y] += columns;
}

/// Copies the source's rows into these (unshifted) ones and applies the view, which is the source's by now.
template <class T>
void Array2D<T>::takeViewFrom(const Array2D& src) noexcept {
    const std::int32_t column = src.viewColumn();
    if (rows && src.rows)
        for (std::size_t y = 0; y < height; ++y)
            if (rows[y] && src.rows[y])
                std::memmove(rows[y], src.rows[y] - column, width * sizeof(T));
    shiftRows(column);
    view = rows ? rows + static_cast<std::int32_t>(subarrays.back().y0) : nullptr;
}

template class Array2D<unsigned char>;

} // namespace Ko
