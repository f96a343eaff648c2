// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_TURN_TRANSPOSELANES_H
#define KOVANTA_SRC_IMAGE_TURN_TRANSPOSELANES_H

#include <cstddef>
#include <cstdint>

namespace Ko {

/// Of 16 rows, @p pitch numbers apart, makes columns, one after the other, of 16 numbers each. Columns are worked on in
/// eights: both sides have room for them.
void transposeLanes(std::uint16_t* to, const std::uint16_t* from, std::size_t columns, std::size_t pitch);
void transposeLanes(std::uint32_t* to, const std::uint32_t* from, std::size_t columns, std::size_t pitch);

} // namespace Ko

#endif
