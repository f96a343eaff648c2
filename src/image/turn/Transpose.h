// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_TURN_TRANSPOSE_H
#define KOVANTA_SRC_IMAGE_TURN_TRANSPOSE_H

#include "image/PlaneRows.h"

#include <cstddef>

namespace Ko {

/// Makes @p to, of w x h units, the transpose of @p from, which holds h x w of them, then swaps its columns (@p
/// mirrors) and its rows (@p flips). Nothing overlaps.
/// @param bytes of a unit: 1, 3 or 4
void transposeUnits(const PlaneRows<unsigned char*>& to, const PlaneRows<const unsigned char*>& from, std::size_t w,
                    std::size_t h, std::size_t bytes, bool mirrors, bool flips);

} // namespace Ko

#endif
