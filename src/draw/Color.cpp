// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Colors.h"
#include "image/kernels/Definition.h"

namespace Ko {

YCCColor fromRgb(unsigned char r, unsigned char g, unsigned char b) noexcept {
    return {lumaOf<Bt601>(r, g, b), cbOf<Bt601>(r, g, b), crOf<Bt601>(r, g, b)};
}

} // namespace Ko
