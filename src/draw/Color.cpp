// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Colors.h"
#include "image/kernels/Bt601.h"

namespace Ko {

namespace {

unsigned char encoded(int sum, int offset) {
    return static_cast<unsigned char>(((sum + bt601::encodeRounding) >> bt601::encodeBits) + offset);
}

} // namespace

YCCColor fromRgb(unsigned char r, unsigned char g, unsigned char b) noexcept {
    using namespace bt601;
    return {encoded(lumaFromRed * r + lumaFromGreen * g + lumaFromBlue * b, lumaOffset),
            encoded(cbFromRed * r + cbFromGreen * g + cbFromBlue * b, chromaZero),
            encoded(crFromRed * r + crFromGreen * g + crFromBlue * b, chromaZero)};
}

} // namespace Ko
