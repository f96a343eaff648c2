// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_DRAW_H
#define KOVANTA_DRAW_H

#include "Kovanta/Export.h"
#include "Kovanta/Image.h"

namespace Ko {

/// @addtogroup drawing
/// @{

/// A pixel position; x to the right, y downwards, from the top-left pixel.
template <class T>
struct Point {
    T x; ///< To the right.
    T y; ///< Downwards.
};

/// Equal in every field.
template <class T>
constexpr bool operator==(const Point<T>& a, const Point<T>& b) {
    return a.x == b.x && a.y == b.y;
}
/// Different in a field.
template <class T>
constexpr bool operator!=(const Point<T>& a, const Point<T>& b) {
    return !(a == b);
}

/// A displacement in pixels.
template <class T>
struct Vector2D {
    T x; ///< To the right.
    T y; ///< Downwards.
};

/// Equal in every field.
template <class T>
constexpr bool operator==(const Vector2D<T>& a, const Vector2D<T>& b) {
    return a.x == b.x && a.y == b.y;
}
/// Different in a field.
template <class T>
constexpr bool operator!=(const Vector2D<T>& a, const Vector2D<T>& b) {
    return !(a == b);
}

/// A box by two corners; both corners belong to its outline.
template <class T>
struct Bbox {
    T left;   ///< Its first column.
    T top;    ///< Its first row.
    T right;  ///< Its last column.
    T bottom; ///< Its last row; a filled box ends before it.
};

/// Equal in every field.
template <class T>
constexpr bool operator==(const Bbox<T>& a, const Bbox<T>& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
/// Different in a field.
template <class T>
constexpr bool operator!=(const Bbox<T>& a, const Bbox<T>& b) {
    return !(a == b);
}

/// A colour as studio-range Y'CbCr samples (ITU-R BT.601), written unchanged into planes 0, 1 and 2.
struct YCCColor {
    unsigned char y;  ///< Luma, 16 (black) to 235 (white).
    unsigned char cb; ///< Blue difference, 16 to 240; 128 is grey.
    unsigned char cr; ///< Red difference, 16 to 240; 128 is grey.
};

/// Equal in every field.
constexpr bool operator==(const YCCColor& a, const YCCColor& b) {
    return a.y == b.y && a.cb == b.cb && a.cr == b.cr;
}
/// Different in a field.
constexpr bool operator!=(const YCCColor& a, const YCCColor& b) {
    return !(a == b);
}

/// @name Drawing
/// Targets are PF_YCC444P or PF_YCCA4444P images (alpha is left alone); the format is not checked. Any coordinates
/// are allowed: pixels outside the image are skipped, and cost nothing. One thread at a time per image.
/// @{

/// Draws a line, both ends included, by the integer Bresenham rule; the same pixels in either direction.
KOVANTA_API void drawLine(Image<>& im, int x0, int y0, int x1, int y1, YCCColor c);
/// @overload
KOVANTA_API void drawLine(Image<>& im, Point<int> p0, Point<int> p1, YCCColor c);

/// Draws a box: its outline, both corners included, or filled, which leaves out the row `bottom`.
KOVANTA_API void drawBbox(Image<>& im, const Bbox<int>& b, const YCCColor& c, bool filled);

/// Draws a vector from @p p: a shaft and, unless the vector is shorter than the head, a triangle whose base of half
/// width @p headSize lies that far back from the tip. A zero vector draws its one pixel.
/// @param im PF_YCC444P or PF_YCCA4444P
/// @param v from the shaft's end to the tip
/// @param p where the shaft ends
/// @param headSize in pixels
/// @param c the samples that are written
KOVANTA_API void drawVector2D(Image<>& im, const Vector2D<int>& v, const Point<int>& p, unsigned int headSize,
                              const YCCColor& c);
/// @overload
/// The components are rounded to the nearest integers, halves away from zero.
KOVANTA_API void drawVector2D(Image<>& im, const Vector2D<float>& v, const Point<int>& p, unsigned int headSize,
                              const YCCColor& c);
/// @overload
/// The vector in braces alone: `drawVector2D(im, {3, 4}, {10, 10}, 3, c)`.
inline void drawVector2D(Image<>& im, const int (&v)[2], const Point<int>& p, unsigned int headSize,
                         const YCCColor& c) {
    drawVector2D(im, Vector2D<int>{v[0], v[1]}, p, headSize, c);
}
/// @overload
/// The same for `{3.5f, -4.2f}`.
inline void drawVector2D(Image<>& im, const float (&v)[2], const Point<int>& p, unsigned int headSize,
                         const YCCColor& c) {
    drawVector2D(im, Vector2D<float>{v[0], v[1]}, p, headSize, c);
}
/// @}

/// @}

} // namespace Ko

#endif
