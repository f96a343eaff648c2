// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_TURN_TRANSPOSESTRIP_H
#define KOVANTA_SRC_IMAGE_TURN_TRANSPOSESTRIP_H

#include <cstddef>

namespace Ko {

/// 32 columns of 16 rows, from a column on, become 32 rows of 16 columns, from @p x on. The rows are those of the
/// tables from the first entries on or, with a step of -1, back.
using TransposeStrip = void(unsigned char* const* to, std::ptrdiff_t toStep, std::size_t x,
                            const unsigned char* const* from, std::ptrdiff_t fromStep, std::size_t column);

/// Of the level in use; null where single blocks are as fast.
TransposeStrip* transposeStripInUse();

} // namespace Ko

#endif
