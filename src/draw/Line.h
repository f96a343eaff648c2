// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_DRAW_LINE_H
#define KOVANTA_SRC_DRAW_LINE_H

#include "Kovanta/Draw.h"
#include "draw/Canvas.h"

#include <cstdint>

namespace Ko {

/// drawLine() for end points that an int cannot hold, such as a vector's tip. Coordinates up to +-2^40.
void drawWideLine(const Canvas& canvas, std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1, YCCColor c);

} // namespace Ko

#endif
