// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_ARRAYSTORAGE_H
#define KOVANTA_SRC_IMAGE_ARRAYSTORAGE_H

#include "Kovanta/Array2D.h"

#include <memory>
#include <new>

namespace Ko {

/// Samples start where a cache line does: then the rows of the usual widths do too, and no vector store touches two.
constexpr std::align_val_t sampleAlignment{64};

struct FreeSamples {
    void operator()(void* samples) const noexcept { ::operator delete[](samples, sampleAlignment); }
};

/// Memory for an array, obtained before the old is given up, so that a refused allocation changes nothing.
struct ArrayStorage {
    std::unique_ptr<unsigned char*[]> rows;
    std::unique_ptr<unsigned char[], FreeSamples> data;
    bool keep = false; ///< The array already owns memory of this shape.
};

/// Obtains what @p array needs for w x h samples; nothing for a zero dimension.
/// @param fresh the array must not keep its buffer
/// @throws std::bad_alloc
ArrayStorage obtainStorage(const Array2D<>& array, std::uint32_t w, std::uint32_t h, bool owning, bool fresh = false);

/// Gives an array its new storage and points the rows. A zero dimension leaves the recorded sizes and the mode.
void adoptStorage(Array2D<>& array, ArrayStorage&& storage, std::uint32_t w, std::uint32_t h, bool owning) noexcept;

/// Makes the full array the only view.
void resetView(Array2D<>& array) noexcept;

/// Exchanges two arrays, whatever their modes.
void exchange(Array2D<>& a, Array2D<>& b) noexcept;

} // namespace Ko

#endif
