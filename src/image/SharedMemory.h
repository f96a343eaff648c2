#ifndef KOVANTA_SRC_IMAGE_SHAREDMEMORY_H
#define KOVANTA_SRC_IMAGE_SHAREDMEMORY_H

#include "Kovanta/Image.h"

namespace Ko {

/// Whether two arrays may share samples. Two that own theirs never do; of what wraps foreign memory the whole stretch
/// from its lowest row to its highest counts, gaps between the rows included.
bool mayShareSamples(const Array2D<>& a, const Array2D<>& b) noexcept;

/// Whether a conversion into @p dst could write over samples of @p src or give up their memory: whether the one wraps
/// rows of a plane that the other owns, or both wrap the same.
bool mayShareSamples(const Image<>& dst, const Image<>& src) noexcept;

/// Whether @p src wraps rows that a plane of @p dst owns.
bool wrapsPartOf(const Image<>& src, const Image<>& dst) noexcept;

} // namespace Ko

#endif
