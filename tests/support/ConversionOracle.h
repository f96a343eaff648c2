// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_CONVERSIONORACLE_H
#define KOVANTA_TESTS_SUPPORT_CONVERSIONORACLE_H

#include "support/TestImages.h"

#include <array>

namespace test {

using Triple = std::array<unsigned char, 3>;

/// The conversions' arithmetic, pixel by pixel, in 64 bits with explicit floors, away from the library's kernels.
Triple studioFromRgb(int r, int g, int b);
Triple rgbFromStudio(int y, int cb, int cr);
Triple studioFromFull(int y, int cb, int cr);
Triple fullFromStudio(int y, int cb, int cr);

/// What a pair's conversion has to give for an image of even size; the target must be sized.
/// @return false when there is no conversion for the pair
bool expectedConversion(Image& dst, const Image& src);

/// The same as an image of its own; throws when there is no conversion for the pair.
Image inFormat(Ko::PIXEL_FORMAT format, const Image& picture);

} // namespace test

#endif
