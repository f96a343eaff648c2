// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_ORIENTATION_H
#define KOVANTA_SRC_IMAGEFILE_ORIENTATION_H

#include "Kovanta/Rotate.h"

#include <cstdio>

namespace Ko {

/// What the EXIF data of a JPEG or PNG file say, which is read from its beginning: in a JPEG those before the picture,
/// in a PNG the first that there are. Upright where nothing valid is said, and for any other file.
/// @throws std::bad_alloc
Orientation orientationIn(std::FILE* file);

} // namespace Ko

#endif
