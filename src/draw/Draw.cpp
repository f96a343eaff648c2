#include "draw/Line.h"

#include <algorithm>
#include <cmath>
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

void drawBbox(Image<unsigned char>& im, const Bbox<int>& b, const YCCColor& c, bool filled) {
    if (filled) {
        const std::int64_t end = std::min<std::int64_t>(b.bottom, Canvas(im).height);
        for (std::int64_t y = std::max(b.top, 0); y < end; ++y)
            drawWideLine(im, b.left, y, b.right, y, c);
        return;
    }
    drawLine(im, b.left, b.top, b.right, b.top, c);
    drawLine(im, b.left, b.bottom, b.right, b.bottom, c);
    drawLine(im, b.left, b.top, b.left, b.bottom, c);
    drawLine(im, b.right, b.top, b.right, b.bottom, c);
}

void drawVector2D(Image<unsigned char>& im, const Vector2D<int>& v, const Point<int>& p, unsigned int headSize,
                  const YCCColor& c) {
    const std::int64_t vx = v.x;
    const std::int64_t vy = v.y;
    const Point<std::int64_t> tip{p.x + vx, p.y + vy};
    drawWideLine(im, p.x, p.y, tip.x, tip.y, c);

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
    drawWideLine(im, base.x + ox, base.y + oy, base.x - ox, base.y - oy, c);
    drawWideLine(im, base.x + ox, base.y + oy, tip.x, tip.y, c);
    drawWideLine(im, base.x - ox, base.y - oy, tip.x, tip.y, c);
}

void drawVector2D(Image<unsigned char>& im, const Vector2D<float>& v, const Point<int>& p, unsigned int headSize,
                  const YCCColor& c) {
    drawVector2D(im, Vector2D<int>{roundedToInt(v.x), roundedToInt(v.y)}, p, headSize, c);
}

} // namespace Ko
