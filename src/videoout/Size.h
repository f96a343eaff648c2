// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_SIZE_H
#define KOVANTA_SRC_VIDEOOUT_SIZE_H

#include <algorithm>
#include <cstdint>

namespace Ko {

/// Of a window, a screen or frames, in pixels.
struct Size {
    std::uint32_t width, height;

    bool operator==(const Size& other) const { return width == other.width && height == other.height; }

    /// The largest size of these proportions inside of a room, at least 1 x 1.
    Size fittedInto(const Size& room) const {
        const auto least = [](std::uint64_t a, std::uint32_t b) {
            return static_cast<std::uint32_t>(std::max<std::uint64_t>(1, std::min<std::uint64_t>(a, b)));
        };
        return {least(std::uint64_t{room.height} * width / height, room.width),
                least(std::uint64_t{room.width} * height / width, room.height)};
    }
};

} // namespace Ko

#endif
