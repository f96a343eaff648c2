// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_DELIVERPICTURE_H
#define KOVANTA_SRC_IMAGEFILE_DELIVERPICTURE_H

#include "Kovanta/Image.h"

namespace Ko {

/// Hands a decoded picture over to the caller's image, which owns its pixels afterwards.
/// @throws std::logic_error of convertIm(); the image has its new size then
/// @throws std::bad_alloc; the image is then as it was
void deliver(Image<>& destination, Image<>&& picture);

} // namespace Ko

#endif
