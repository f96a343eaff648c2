// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_ARRAYCOPY_H
#define KOVANTA_SRC_IMAGE_ARRAYCOPY_H

#include "image/ArrayStorage.h"

namespace Ko {

/// The assignment of an array in three steps, so that several arrays are assigned together or not at all: memory is
/// obtained, samples are read, and only then is anything given up.
class ArrayCopy {
public:
    /// @param fresh an owning target must not keep its buffer, since the source may share it
    /// @throws std::bad_alloc
    ArrayCopy(Array2D<>& target, const Array2D<>& source, bool fresh);

    /// Reads the source's rows; those that it lacks become 0. Writes to wrapped memory, and to a buffer that is kept.
    void readSamples() noexcept;
    void commit() noexcept;

private:
    Array2D<>& to;
    const Array2D<>& from;
    ViewStack<Array2D<>::Subarray> views;
    ArrayStorage storage;
};

/// Whether an assignment would be refused: the target wraps memory of another size.
inline bool refusesSize(const Array2D<>& target, const Array2D<>& source) {
    return !target.alloc && (target.width != source.width || target.height != source.height);
}

} // namespace Ko

#endif
