// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_ARRAY2D_H
#define KOVANTA_ARRAY2D_H

#include "Kovanta/Export.h"
#include "Kovanta/ViewStack.h"

#include <cstdint>
#include <type_traits>

namespace Ko {

/// @addtogroup images
/// @{

/// A two-dimensional array of samples, reached through a table of row pointers: sample (x, y) of the current view
/// is `view[y][x]`.
///
/// An array either owns its samples, or (noalloc mode) owns only the row table, whose entries point into memory
/// that belongs to somebody else: a decoder's picture, a mapped camera buffer, a window's overlay.
///
/// The fields are public to be read, and so that a noalloc array's rows can be pointed; change the layout through
/// the operations. Exists for `unsigned char` only. One thread at a time per object.
template <class T = unsigned char>
class KOVANTA_API Array2D {
    static_assert(std::is_same_v<T, unsigned char>,
                  "Ko::Image and Ko::Array2D hold samples of 8 bits: write Ko::Image<> and Ko::Array2D<>");

public:
    /// A rectangle of the full array, in samples and rows; `x0` and `y0` are added as signed values.
    struct Subarray {
        std::uint32_t width;  ///< Samples per row.
        std::uint32_t height; ///< Rows.
        std::uint32_t x0;     ///< Its first column.
        std::uint32_t y0;     ///< Its first row.
    };

    std::uint32_t width = 0;       ///< Samples per row of the full array.
    std::uint32_t height = 0;      ///< Rows of the full array.
    ViewStack<Subarray> subarrays; ///< Stack of views; the last is the current one. Never empty.
    T** rows = nullptr; ///< Row table of `height` entries (owned): each row's first sample, shifted by the view's x0.
    T** view = nullptr; ///< `&rows[y0]` of the current view.
    T* data = nullptr;  ///< `width * height` samples without padding (owned); null in noalloc mode.
    bool alloc = true;  ///< Whether the array owns its samples.

    /// An empty owning array.
    Array2D() noexcept;
    /// A deep copy, always owning, of the source's full array with its view. Rows that the source lacks become 0.
    /// @throws std::bad_alloc
    Array2D(const Array2D& src);
    /// Takes the source's storage, or its wrapping when it is noalloc. The source is left default-constructed.
    Array2D(Array2D&& src) noexcept;
    /// Copies the samples into this array's own storage. An owning array takes the source's size first. The source may
    /// wrap rows of this array: they are read before they go.
    /// @throws std::logic_error "[Array2D<T>::operator=]: Noalloc and trying to resize." when this array is noalloc
    ///         and differs in width or height; nothing has changed then
    /// @throws std::bad_alloc; nothing has changed then
    Array2D& operator=(const Array2D& src);
    /// As the move constructor; into a noalloc array it behaves as the copy assignment, and writes through to the
    /// wrapped memory. It copies as well where the source wraps rows of this array.
    Array2D& operator=(Array2D&& src); // NOLINT(performance-noexcept-move-constructor)
    ~Array2D();

    /// The samples of a row of the current view. The row is not checked.
    T* row(std::uint32_t y) { return view[y]; }
    /// @overload
    const T* row(std::uint32_t y) const { return view[y]; }

    /// Replaces the storage, uninitialised; leaves `subarrays` and `view` for the caller to reset. An owning array
    /// that already has the size keeps its buffer. A zero dimension
    /// releases the storage and leaves the recorded sizes as they were.
    /// @param w samples per row
    /// @param h rows
    /// @param alloc when false, every row is null, to be pointed by the caller
    /// @throws std::runtime_error "[Array2D<T>::newData]: Image too large." when w * h passes 2^32 - 1
    /// @throws std::bad_alloc; the array is then as it was
    void newData(unsigned int w, unsigned int h, bool alloc);

    /// Gives an owning array the new size (contents undefined) and resets the view to the full array. A noalloc array
    /// refuses when both dimensions differ and otherwise does nothing.
    /// @throws std::logic_error "[Array2D<T>::resize]: Noalloc and trying to resize."
    /// @throws std::runtime_error "[Array2D<T>::resize]: Image too large.", std::bad_alloc
    void resize(unsigned int w, unsigned int h);
};

extern template class Array2D<unsigned char>;

/// @}

} // namespace Ko

#endif
