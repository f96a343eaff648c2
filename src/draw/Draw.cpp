// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Draw.h"

#include "draw/Canvas.h"
#include "draw/Line.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Ko {

namespace {

/// Rounds halves away from zero; what an int cannot hold becomes its nearest end, not-a-number becomes 0.
int roundedToInt(float v) {
    const float r = std::round(v);
    if (std::isnan(r))
        return 0;
    if (r >= 2147483648.0f)
        return std::numeric_limits<int>::max();
    return r <= -2147483648.0f ? std::numeric_limits<int>::min() : static_cast<int>(r);
}

} // namespace

void drawLine(Image<>& im, int x0, int y0, int x1, int y1, YCCColor c) {
    drawWideLine(Canvas(im), x0, y0, x1, y1, c);
}

void drawLine(Image<>& im, Point<int> p0, Point<int> p1, YCCColor c) {
    drawLine(im, p0.x, p0.y, p1.x, p1.y, c);
}

void drawBbox(Image<>& im, const Bbox<int>& b, const YCCColor& c, bool filled) {
    const Canvas canvas(im);
    if (filled) {
        const std::int64_t end = std::min<std::int64_t>(b.bottom, canvas.height);
        for (std::int64_t y = std::max(b.top, 0); y < end; ++y)
            drawWideLine(canvas, b.left, y, b.right, y, c);
        return;
    }
    drawWideLine(canvas, b.left, b.top, b.right, b.top, c);
    drawWideLine(canvas, b.left, b.bottom, b.right, b.bottom, c);
    drawWideLine(canvas, b.left, b.top, b.left, b.bottom, c);
    drawWideLine(canvas, b.right, b.top, b.right, b.bottom, c);
}

void drawVector2D(Image<>& im, const Vector2D<int>& v, const Point<int>& p, unsigned int headSize, const YCCColor& c) {
    const Canvas canvas(im);
    const std::int64_t vx = v.x;
    const std::int64_t vy = v.y;
    const Point<std::int64_t> tip{p.x + vx, p.y + vy};
    drawWideLine(canvas, p.x, p.y, tip.x, tip.y, c);

    const std::uint64_t squares = static_cast<std::uint64_t>(vx * vx) + static_cast<std::uint64_t>(vy * vy);
    const float length = std::sqrt(static_cast<float>(squares));
    if (squares == 0 || static_cast<unsigned int>(length) < headSize)
        return;
    // Single precision throughout decides which pixels the head takes.
    const auto size = static_cast<float>(headSize);
    const float k = 1.0f - size / length;
    const auto fx = static_cast<float>(v.x);
    const auto fy = static_cast<float>(v.y);
    const Point<std::int64_t> base{p.x + static_cast<std::int64_t>(k * fx), p.y + static_cast<std::int64_t>(k * fy)};
    const auto across = static_cast<float>(static_cast<double>(std::atan2(fy, fx)) - 1.5707963267948966);
    const auto ox = static_cast<std::int64_t>(std::cos(across) * size);
    const auto oy = static_cast<std::int64_t>(size * std::sin(across));
    drawWideLine(canvas, base.x + ox, base.y + oy, base.x - ox, base.y - oy, c);
    drawWideLine(canvas, base.x + ox, base.y + oy, tip.x, tip.y, c);
    drawWideLine(canvas, base.x - ox, base.y - oy, tip.x, tip.y, c);
}

void drawVector2D(Image<>& im, const Vector2D<float>& v, const Point<int>& p, unsigned int headSize,
                  const YCCColor& c) {
    drawVector2D(im, Vector2D<int>{roundedToInt(v.x), roundedToInt(v.y)}, p, headSize, c);
}

} // namespace Ko
