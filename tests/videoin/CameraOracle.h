// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_VIDEOIN_CAMERAORACLE_H
#define KOVANTA_TESTS_VIDEOIN_CAMERAORACLE_H

#include "Kovanta/Image.h"

#include <linux/videodev2.h>

#include <cstddef>
#include <string>
#include <vector>

/// The bytes of a frame as V4L2 documents them, against what the library made of them.
namespace camera {

struct Frame {
    unsigned int fourcc;
    std::size_t width, height;
    std::size_t stride; ///< Bytes from one luma (or packed) row to the next.
    bool packed = fourcc == V4L2_PIX_FMT_YUYV;
    std::vector<unsigned char> bytes = std::vector<unsigned char>(packed ? stride * height : stride * height * 3 / 2);

    /// No two neighbours alike, in either direction, and no two frames alike; padding is covered too.
    void fill(unsigned int seed) {
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(i * 7 + i / 251 + seed * 13);
    }

    bool has(std::size_t x, std::size_t y, std::size_t plane) const {
        const bool lone = x / 2 >= width / 2 || (!packed && y / 2 >= height / 2);
        return !lone || (plane == 0 && !packed);
    }

    unsigned char at(std::size_t x, std::size_t y, std::size_t plane) const {
        if (packed)
            return bytes[y * stride + x / 2 * 4 + (plane == 0 ? x % 2 * 2 : plane * 2 - 1)];
        if (plane == 0)
            return bytes[y * stride + x];
        return bytes[stride * height + (plane - 1) * (stride * height / 4) + y / 2 * (stride / 2) + x / 2];
    }
};

/// What differs first between a PF_YCC444P image and the frame; empty when nothing does. A last odd column or row has
/// no chroma of its own (and no luma either in the packed format) and is left out.
inline std::string difference(const Ko::Image<unsigned char>& image, const Frame& frame) {
    if (image.width != frame.width || image.height != frame.height)
        return "size " + std::to_string(image.width) + "x" + std::to_string(image.height);
    for (std::size_t y = 0; y < frame.height; ++y)
        for (std::size_t x = 0; x < frame.width; ++x)
            for (std::size_t p = 0; p < 3; ++p)
                if (frame.has(x, y, p) && image.plane[p].view[y][x] != frame.at(x, y, p))
                    return "plane " + std::to_string(p) + " at " + std::to_string(x) + "," + std::to_string(y);
    return "";
}

} // namespace camera

#endif
