// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Images.h"
#include "Kovanta/ConvertIm.h"
#include "support/ConversionOracle.h"

#include <stdexcept>

namespace {

void (*const routines[])(Ko::Image<>&, const Ko::Image<>&) = {
    Ko::convertIm, Ko::flipHor,    Ko::flipVer,    RGB_2_YCC444P,         BGR_2_YCC444P,     RGBA_2_YCCA4444P,
    RGB_2_YCC420P, YCC444P_2_RGB,  JFIF_2_YCC444P, JFIF422P_2_PF_YCC444P, Y_2_YCC444P,       YCC444P_2_JFIF,
    YCC444P_2_Y,   YCC444P_2_YUY2, YUY2_2_YCC444P, YCC420P_2_YCC444P,     YCC444P_2_YCC420P,
};

} // namespace

// Conversion and flipping between images of every make.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    for (int round = 0; round < 4; ++round) {
        const unsigned chosen = choices.flip() ? choices.below(3) : choices.below(std::size(routines));
        fuzz::AnyImage source(choices);
        fuzz::AnyImage target(choices);
        const test::Image before = source.image();
        const bool plain = source.plain() && target.plain();
        bool done = false;
        try {
            if (choices.below(8) != 0) {
                routines[chosen](target.image(), source.image());
                done = true;
            } else if (choices.flip()) {
                Ko::flipHor(target.image());
            } else {
                Ko::flipVer(target.image());
            }
        } catch (const std::logic_error&) { // no such pair, or foreign memory of another size
        }
        fuzz::require(source.intact() && target.intact(), "written past the rows of an image");
        fuzz::require(source.unchanged(), "the source changed");
        const bool even = before.width % 2 == 0 && before.height % 2 == 0;
        if (done && chosen == 0 && plain && even && target.ownsPixels() && before.width != 0 && before.height != 0)
            fuzz::requireSame(target.image(), test::inFormat(target.image().format, before), "conversion");
    }
    return 0;
}
