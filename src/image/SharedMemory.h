// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_SHAREDMEMORY_H
#define KOVANTA_SRC_IMAGE_SHAREDMEMORY_H

#include "Kovanta/Image.h"

namespace Ko {

/// Whether two arrays may share samples. Two that own theirs never do; of what wraps foreign memory the whole stretch
/// from its lowest row to its highest counts, gaps between the rows included.
bool mayShareSamples(const Array2D<>& a, const Array2D<>& b) noexcept;

struct Sharing {
    bool any = false;               ///< Planes of the two images may share samples.
    bool sourceWrapsTarget = false; ///< The source wraps rows that a plane of the target owns, and that could go.
};
Sharing sharingOf(const Image<>& dst, const Image<>& src) noexcept;

} // namespace Ko

#endif
