// SPDX-License-Identifier: BSD-2-Clause
#include "draw/Canvas.h"

#include "image/PlaneRows.h"

#include <algorithm>

namespace Ko {

Canvas::Canvas(Image<>& im)
    : width(im.width)
    , height(im.height) {
    for (int p = 0; p < 3; ++p) {
        const auto rows = targetRows(im, p);
        planes[p] = rows.row;
        width = std::min(width, static_cast<std::int64_t>(rows.width));
        height = std::min(height, static_cast<std::int64_t>(rows.height));
    }
}

} // namespace Ko
