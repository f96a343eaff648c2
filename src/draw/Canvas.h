// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_DRAW_CANVAS_H
#define KOVANTA_SRC_DRAW_CANVAS_H

#include "Kovanta/Image.h"

#include <cstdint>

namespace Ko {

/// The part of an image that can be drawn into: what its size promises and all three planes really hold.
/// Made once a drawing call; points into the image, which must outlive it.
struct Canvas {
    explicit Canvas(Image<>& im);

    unsigned char* const* planes[3];
    std::int64_t width;
    std::int64_t height;
};

} // namespace Ko

#endif
