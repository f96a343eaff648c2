// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Colors.h"
#include "image/kernels/Definition.h"

namespace Ko {

YCCColor fromRgb(unsigned char r, unsigned char g, unsigned char b) noexcept {
    return {lumaOf(r, g, b), cbOf(r, g, b), crOf(r, g, b)};
}

} // namespace Ko
