// SPDX-License-Identifier: BSD-2-Clause
#include "Images.h"

#include "Checks.h"

#include <cstdint>

namespace fuzz {

AnyImage::AnyImage(Choices& choices)
    : format(static_cast<Ko::PIXEL_FORMAT>(1 + choices.below(11)))
    , width(choices.below(choices.flip() ? 20 : 140))
    , height(choices.below(20))
    , wraps(choices.flip())
    , wrapped(format, wraps ? width : 0, wraps ? height : 0, choices.below(4))
    , owning(format) {
    if (!wraps)
        owning.size(width, height);
    std::uint32_t random = choices.byte();
    for (auto& plane : image().plane)
        for (unsigned y = 0; plane.rows && y < plane.height; ++y)
            for (unsigned x = 0; x < plane.width; ++x) {
                random = random * 1664525 + 1013904223;
                plane.rows[y][x] = static_cast<unsigned char>(random >> 24);
            }
    if (choices.below(3) == 0)
        disturb(choices);
    made = contents();
}

std::vector<unsigned char> AnyImage::contents() {
    std::vector<unsigned char> all;
    for (const auto& plane : image().plane)
        for (unsigned y = 0; plane.rows && y < plane.height; ++y) {
            const unsigned char* const row = plane.rows[y] - static_cast<std::int32_t>(plane.subarrays.back().x0);
            all.insert(all.end(), row, row + plane.width);
        }
    return all;
}

void AnyImage::disturb(Choices& choices) {
    honest = false;
    test::Image& im = image();
    auto& plane = im.plane[choices.below(4)];
    switch (choices.below(5)) {
    case 0: // a view that begins inside
        if (plane.rows && plane.width > 0 && plane.height > 0) {
            const unsigned x0 = choices.below(plane.width);
            const unsigned y0 = choices.below(plane.height);
            plane.subarrays.push_back({plane.width - x0, plane.height - y0, x0, y0});
            for (unsigned y = 0; y < plane.height; ++y)
                plane.rows[y] += x0;
            plane.view = plane.rows + y0;
        }
        break;
    case 1: // a size that the planes do not have
        im.width += choices.below(40);
        im.height += choices.below(40);
        break;
    case 2: // a format that they do not have
        im.fmt(static_cast<Ko::PIXEL_FORMAT>(1 + choices.below(11)));
        break;
    case 3: // a plane of its own size
        if (plane.alloc)
            plane.resize(choices.below(30), choices.below(30));
        break;
    default: // a plane without rows
        if (plane.alloc)
            plane.newData(0, 0, true);
    }
    // What an owning plane has never held must not show, and would, to the memory checker.
    if (!wraps)
        for (auto& p : im.plane)
            if (p.alloc && p.data)
                for (std::size_t i = 0; i < std::size_t{p.width} * p.height; ++i)
                    p.data[i] = static_cast<unsigned char>(i * 7);
}

} // namespace fuzz
