// SPDX-License-Identifier: BSD-2-Clause
#include "Label.h"

#include <Kovanta/Draw.h>

#include <algorithm>

namespace example {

void Label::draw(Ko::Image<>& frame, const std::string& text) {
    const unsigned int wanted = std::clamp(frame.height / 18, 9u, 48u);
    if (wanted != size) {
        font.init(wanted); // the built-in font
        size = wanted;
    }
    const int unit = static_cast<int>(size);
    const int bottom = static_cast<int>(frame.height) - unit / 2;
    const Ko::Point<int> pen{unit, bottom - unit / 2};
    // As high as the highest letters, whatever the text has, so that it does not flicker.
    Ko::drawBbox(frame, {unit / 2, bottom - unit * 3 / 2, font.getExtent(text, pen).right + unit / 2, bottom},
                 {40, 128, 128}, true);
    font.drawText(frame, text, pen, {235, 128, 128});
}

} // namespace example
