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
template <class T>
struct Array2D<T>::Storage {
    std::unique_ptr<T*[]> rows;
    std::unique_ptr<T[], FreeSamples> data;
    bool keep = false; ///< The array already owns memory of this shape.
};

/// Whether a plane of this many bytes a row fits the 32-bit sizes of the arrays.
inline bool fitsArray(std::uint64_t rowBytes, std::uint64_t rowCount) {
    constexpr std::uint64_t limit = 0xFFFFFFFFu;
    return rowBytes <= limit && rowCount <= limit && rowBytes * rowCount <= limit;
}

/// The refusal of a size that does not fit; @p function is named as messages name it.
[[noreturn]] void throwTooLarge(const char* function);

} // namespace Ko

#endif
