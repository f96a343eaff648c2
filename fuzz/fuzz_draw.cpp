// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Images.h"
#include "Kovanta/Draw.h"
#include "Kovanta/Font.h"

#include <cstdlib>
#include <utility>

namespace {

constexpr Ko::YCCColor ink{201, 91, 161};

/// The rule pixel by pixel, for lines that do not take long.
void walk(test::Image& im, int x0, int y0, int x1, int y1) {
    const bool steep = std::abs(x1 - x0) < std::abs(y1 - y0);
    int m = steep ? y0 : x0, n = steep ? x0 : y0;
    int mEnd = steep ? y1 : x1, nEnd = steep ? x1 : y1;
    if (mEnd < m) {
        std::swap(m, mEnd);
        std::swap(n, nEnd);
    }
    const int length = mEnd - m, rise = std::abs(nEnd - n), step = n < nEnd ? 1 : -1;
    int error = -(length / 2);
    for (; m <= mEnd; ++m) {
        const int x = steep ? n : m, y = steep ? m : n;
        if (x >= 0 && y >= 0 && x < static_cast<int>(im.width) && y < static_cast<int>(im.height)) {
            im.plane[0].view[y][x] = ink.y;
            im.plane[1].view[y][x] = ink.cb;
            im.plane[2].view[y][x] = ink.cr;
        }
        error += rise;
        if (error > 0) {
            n += step;
            error -= length;
        }
    }
}

bool quick(int coordinate) {
    return std::abs(static_cast<long>(coordinate)) < 200000;
}

} // namespace

// Lines, boxes, vectors and text over images of every make; what is drawn into plain ones is held against the rule.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const Ko::Font font = [] {
        Ko::Font made;
        made.init(12);
        return made;
    }();
    fuzz::Choices choices(bytes, size);
    for (int round = 0; round < 6; ++round) {
        fuzz::AnyImage target(choices);
        test::Image& im = target.image();
        test::Image expected = im;
        const bool known = target.plain() && (im.format == Ko::PF_YCC444P || im.format == Ko::PF_YCCA4444P) &&
                           im.width > 0 && im.height > 0;
        const int x0 = choices.coordinate(), y0 = choices.coordinate();
        const int x1 = choices.coordinate(), y1 = choices.coordinate();
        const bool comparable = known && quick(x0) && quick(y0) && quick(x1) && quick(y1);
        switch (choices.below(4)) {
        case 0:
            Ko::drawLine(im, x0, y0, x1, y1, ink);
            if (comparable)
                walk(expected, x0, y0, x1, y1);
            break;
        case 1: {
            const bool filled = choices.flip();
            Ko::drawBbox(im, {x0, y0, x1, y1}, ink, filled);
            if (comparable && filled)
                for (int y = y0; y < y1; ++y)
                    if (y >= 0 && y < static_cast<int>(im.height))
                        walk(expected, x0, y, x1, y);
            if (comparable && !filled) {
                walk(expected, x0, y0, x1, y0);
                walk(expected, x0, y1, x1, y1);
                walk(expected, x0, y0, x0, y1);
                walk(expected, x1, y0, x1, y1);
            }
            break;
        }
        case 2:
            Ko::drawVector2D(im, Ko::Vector2D<int>{x0, y0}, {x1, y1}, choices.word(), ink);
            expected = im;
            break;
        default:
            font.drawText(im, "fuzz\nW", {x0, y0}, ink);
            expected = im;
        }
        fuzz::require(target.intact(), "drawn past the rows of an image");
        if (comparable)
            fuzz::requireSame(im, expected, "drawn otherwise than the rule says");
    }
    return 0;
}
