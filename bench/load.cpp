// SPDX-License-Identifier: BSD-2-Clause
// Nothing but the library; with an argument, one conversion.
#include "Kovanta/ConvertIm.h"

int main(int argc, char**) {
    Ko::Image src(Ko::PF_Y);
    Ko::Image dst(Ko::PF_YCC444P);
    src.size(2, 2);
    if (argc > 1)
        Ko::convertIm(dst, src);
    return dst.width == 1;
}
