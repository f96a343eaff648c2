// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_EVENFRAME_H
#define KOVANTA_EXAMPLES_SUPPORT_EVENFRAME_H

#include <Kovanta/Image.h>
#include <Kovanta/Wrap.h>

namespace example {

/// What a window takes of a width or height: less by one where it is odd, but never 0.
unsigned int evenSize(unsigned int size);

/// The frame in the even size that a window takes. An odd last column or row is left out, which costs no copy; where
/// there is no other, it is doubled.
/// @param frame in PF_YCC444P; has to outlive the result, as has @p room
/// @param room memory for a frame that is doubled
Ko::ConstImage evenFrame(const Ko::Image<>& frame, Ko::Image<>& room);

} // namespace example

#endif
