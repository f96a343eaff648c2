// SPDX-License-Identifier: BSD-2-Clause
#include "draw/Line.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace Ko {

namespace {

__extension__ typedef __int128 Wide; // products of two extents pass 64 bits

/// ceil(a / b) for b > 0.
Wide ceilDiv(Wide a, Wide b) {
    return a >= 0 ? (a + b - 1) / b : -(-a / b);
}

/// A line in terms of its major axis: step k of `length`, at which the minor coordinate has moved `minorSteps(k)`
/// times. The closed form of adding `rise` to an error term that starts at -(length / 2) and taking `length` off
/// whenever it gets positive.
struct Slope {
    std::int64_t length;
    std::int64_t rise; // 0 .. length

    std::int64_t bias() const { return length - 1 - length / 2; }
    std::int64_t minorSteps(std::int64_t k) const {
        return static_cast<std::int64_t>((Wide{k} * rise + bias()) / length);
    }
    /// The first k with at least `steps` minor steps.
    std::int64_t firstWith(std::int64_t steps) const {
        return static_cast<std::int64_t>(ceilDiv(Wide{steps} * length - bias(), rise));
    }
};

struct Range {
    std::int64_t first;
    std::int64_t last;
};

/// The steps at which the line is inside an image of the given extents along its two axes.
Range visibleSteps(const Slope& slope, std::int64_t major, std::int64_t majorSize, std::int64_t minor,
                   std::int64_t minorSize, std::int64_t direction) {
    Range k{std::max<std::int64_t>(0, -major), std::min(slope.length, majorSize - 1 - major)};
    // How many minor steps lead into the image, and how many are the last ones inside.
    const std::int64_t enter = direction > 0 ? -minor : minor - (minorSize - 1);
    const std::int64_t leave = direction > 0 ? minorSize - 1 - minor : minor;
    if (leave < 0 || enter > slope.rise)
        return {0, -1};
    if (enter > 0)
        k.first = std::max(k.first, slope.firstWith(enter));
    if (leave < slope.rise)
        k.last = std::min(k.last, slope.firstWith(leave + 1) - 1);
    return k;
}

void plot(const Canvas& canvas, std::int64_t x, std::int64_t y, YCCColor c) {
    canvas.planes[0][y][x] = c.y;
    canvas.planes[1][y][x] = c.cb;
    canvas.planes[2][y][x] = c.cr;
}

} // namespace

void drawWideLine(const Canvas& canvas, std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1,
                  YCCColor c) {
    if (canvas.width == 0 || canvas.height == 0)
        return;
    const bool steep = std::abs(x1 - x0) < std::abs(y1 - y0);
    std::int64_t major = steep ? y0 : x0;
    std::int64_t minor = steep ? x0 : y0;
    std::int64_t majorEnd = steep ? y1 : x1;
    std::int64_t minorEnd = steep ? x1 : y1;
    if (majorEnd < major) {
        std::swap(major, majorEnd);
        std::swap(minor, minorEnd);
    }
    const std::int64_t direction = minor < minorEnd ? 1 : -1;
    const Slope slope{majorEnd - major, std::abs(minorEnd - minor)};
    const Range k = visibleSteps(slope, major, steep ? canvas.height : canvas.width, minor,
                                 steep ? canvas.width : canvas.height, direction);
    if (k.first > k.last)
        return;
    if (!steep && slope.rise == 0) {
        const auto run = static_cast<std::size_t>(k.last - k.first + 1);
        std::memset(canvas.planes[0][minor] + major + k.first, c.y, run);
        std::memset(canvas.planes[1][minor] + major + k.first, c.cb, run);
        std::memset(canvas.planes[2][minor] + major + k.first, c.cr, run);
        return;
    }

    const std::int64_t stepsBefore = slope.minorSteps(k.first);
    auto error =
        static_cast<std::int64_t>(Wide{k.first} * slope.rise - Wide{stepsBefore} * slope.length - slope.length / 2);
    std::int64_t n = minor + direction * stepsBefore;
    for (std::int64_t m = major + k.first; m <= major + k.last; ++m) {
        if (steep)
            plot(canvas, n, m, c);
        else
            plot(canvas, m, n, c);
        error += slope.rise;
        if (error > 0) {
            n += direction;
            error -= slope.length;
        }
    }
}

} // namespace Ko
