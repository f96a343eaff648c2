// SPDX-License-Identifier: BSD-2-Clause
#include "EvenFrame.h"

#include <algorithm>

namespace example {

unsigned int evenSize(unsigned int size) {
    return std::max(size & ~1u, 2u);
}

Ko::ConstImage evenFrame(const Ko::Image<>& frame, Ko::Image<>& room) {
    const unsigned int width = evenSize(frame.width);
    const unsigned int height = evenSize(frame.height);
    const bool doubled = width > frame.width || height > frame.height;
    if (doubled) {
        room.size(width, height);
        for (int p = 0; p < 3; ++p)
            for (unsigned int y = 0; y < height; ++y)
                for (unsigned int x = 0; x < width; ++x)
                    room.plane[p].view[y][x] =
                        frame.plane[p].view[std::min(y, frame.height - 1)][std::min(x, frame.width - 1)];
    }
    const Ko::Image<>& source = doubled ? room : frame;
    return Ko::wrapRectangle(source, 0, 0, width, height);
}

} // namespace example
