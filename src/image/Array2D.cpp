// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Array2D.h"

#include "image/ArrayCopy.h"
#include "image/ArrayStorage.h"
#include "image/SharedMemory.h"
#include "image/SizeLimit.h"
#include "util/Errors.h"

#include <utility>

namespace Ko {

namespace {

using Plane = Array2D<>;

void assign(Plane& to, const Plane& from, bool fresh) {
    ArrayCopy copy(to, from, fresh);
    copy.readSamples();
    copy.commit();
}

} // namespace

template <class T>
Array2D<T>::Array2D() noexcept = default;

template <class T>
Array2D<T>::Array2D(const Array2D& src) {
    assign(*this, src, true);
}

template <class T>
Array2D<T>::Array2D(Array2D&& src) noexcept {
    exchange(*this, src);
}

template <class T>
Array2D<T>& Array2D<T>::operator=(const Array2D& src) {
    if (this == &src)
        return *this;
    if (refusesSize(*this, src))
        throwLogicError("Array2D<T>::operator=", "Noalloc and trying to resize.");
    assign(*this, src, mayShareSamples(*this, src));
    return *this;
}

template <class T>
Array2D<T>& Array2D<T>::operator=(Array2D&& src) { // NOLINT(performance-noexcept-move-constructor)
    if (this == &src)
        return *this;
    if (!alloc || (!src.alloc && mayShareSamples(*this, src)))
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
