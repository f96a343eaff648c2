#ifndef KOVANTA_SRC_DRAW_LINE_H
#define KOVANTA_SRC_DRAW_LINE_H

#include "Kovanta/Draw.h"

#include <cstdint>

namespace Ko {

/// The part of an image that can be drawn into: what its size promises and all three planes really hold.
struct Canvas {
    explicit Canvas(Image<unsigned char>& im);

    unsigned char* const* planes[3];
    std::int64_t width;
    std::int64_t height;
};

/// drawLine() for end points that an int cannot hold, such as a vector's tip. Coordinates up to +-2^40.
void drawWideLine(Image<unsigned char>& im, std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1,
                  YCCColor c);

} // namespace Ko

#endif
