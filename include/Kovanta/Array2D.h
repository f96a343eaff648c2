#ifndef KOVANTA_ARRAY2D_H
#define KOVANTA_ARRAY2D_H

#include "Kovanta/Export.h"

#include <cstdint>
#include <vector>

namespace Ko {

struct ImageLayout;

/// A two-dimensional array of samples, reached through a table of row pointers: sample (x, y) of the current view
/// is `view[y][x]`.
///
/// An array either owns its samples, or (noalloc mode) owns only the row table, whose entries point into memory
/// that belongs to somebody else: a decoder's picture, a mapped camera buffer, a window's overlay.
///
/// The fields are public to be read, and so that a noalloc array's rows can be pointed; change the layout through
/// the operations. Instantiated for `unsigned char` only. One thread at a time per object.
template <class T = unsigned char>
class KOVANTA_API Array2D {
public:
    /// A rectangle of the full array, in samples and rows; `x0` and `y0` are added as signed values.
    struct Subarray {
        std::uint32_t width;
        std::uint32_t height;
        std::uint32_t x0;
        std::uint32_t y0;
    };

    std::uint32_t width = 0;         ///< Samples per row of the full array.
    std::uint32_t height = 0;        ///< Rows of the full array.
    std::vector<Subarray> subarrays; ///< Stack of views; the last is the current one. Never empty.
    T** rows = nullptr; ///< Row table of `height` entries (owned): each row's first sample, shifted by the view's x0.
    T** view = nullptr; ///< `&rows[y0]` of the current view.
    T* data = nullptr;  ///< `width * height` samples without padding (owned); null in noalloc mode.
    bool alloc = true;  ///< Whether the array owns its samples.

    /// An empty owning array.
    Array2D();
    /// A deep copy, always owning, of the source's full array with its view. A source without rows has none copied.
    /// @throws std::bad_alloc
    Array2D(const Array2D& src);
    /// Takes the source's storage, or its wrapping when it is noalloc. The source is left default-constructed.
    /// @throws std::bad_alloc (for the source's fresh view stack; nothing has changed then)
    Array2D(Array2D&& src); // NOLINT(performance-noexcept-move-constructor)
    /// Copies the samples into this array's own storage. An owning array takes the source's size first.
    /// @throws std::logic_error "[Array2D<T>::operator=]: Noalloc and trying to resize." when this array is noalloc
    ///         and differs in width or height; nothing has changed then
    /// @throws std::bad_alloc
    Array2D& operator=(const Array2D& src);
    /// As the move constructor; into a noalloc array it behaves as the copy assignment.
    Array2D& operator=(Array2D&& src); // NOLINT(performance-noexcept-move-constructor,bugprone-exception-escape)
    ~Array2D();

    /// Replaces the storage, uninitialised; leaves `subarrays` and `view` for the caller to reset. An owning array
    /// that already has the size keeps its buffer. With @p alloc false every row is null, to be pointed by the caller.
    /// A zero dimension releases the storage and leaves the recorded sizes as they were.
    /// @param w samples per row, @param h rows
    /// @throws std::runtime_error "[Array2D<T>::newData]: Image too large." when w * h passes 2^32 - 1
    /// @throws std::bad_alloc; the array is then as it was
    void newData(unsigned int w, unsigned int h, bool alloc);

    /// Gives an owning array the new size (contents undefined) and resets the view to the full array. A noalloc array
    /// refuses when both dimensions differ and otherwise does nothing.
    /// @throws std::logic_error "[Array2D<T>::resize]: Noalloc and trying to resize."
    /// @throws std::runtime_error "[Array2D<T>::resize]: Image too large.", std::bad_alloc
    void resize(unsigned int w, unsigned int h);

private:
    friend struct ImageLayout;
    struct Storage;

    KOVANTA_LOCAL Storage obtain(unsigned int w, unsigned int h, bool owning) const;
    KOVANTA_LOCAL void adopt(Storage&& storage, unsigned int w, unsigned int h, bool owning) noexcept;
    KOVANTA_LOCAL void resetView() noexcept;
    KOVANTA_LOCAL void swap(Array2D& other) noexcept;
    KOVANTA_LOCAL void shiftRows(std::int32_t columns) noexcept;
    KOVANTA_LOCAL void takeViewFrom(const Array2D& src) noexcept;
    KOVANTA_LOCAL std::int32_t viewColumn() const noexcept;
};

extern template class Array2D<unsigned char>;

} // namespace Ko

#endif
