// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_STREAMCOLOR_H
#define KOVANTA_SRC_VIDEOIN_STREAMCOLOR_H

#include "Kovanta/ColorMatrix.h"

namespace Ko {

/// Which matrix made samples of a stream, by libav's pixel format and AVColorSpace. RGB has none; what is made of it
/// here is of BT.601.
ColorMatrix colorMatrixOf(int avPixelFormat, int avColorSpace);

/// Which range samples of a stream have, by libav's pixel format and AVColorRange. Formats of JPEG are full range even
/// where nothing is said, and so is RGB.
ColorRange colorRangeOf(int avPixelFormat, int avColorRange);

} // namespace Ko

#endif
