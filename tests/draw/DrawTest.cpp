// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Colors.h"
#include "Kovanta/ConvertIm.h"
#include "Kovanta/Frac.h"
#include "Kovanta/Wrap.h"

#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <random>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace test;

using Pixels = std::set<std::pair<int, int>>;

constexpr Ko::YCCColor ink{200, 90, 160};
constexpr int width = 41;
constexpr int height = 29;

Image blank(int w = width, int h = height, Ko::PIXEL_FORMAT format = Ko::PF_YCC444P) {
    Image im(format);
    im.size(static_cast<unsigned>(w), static_cast<unsigned>(h));
    fill(im, 7);
    return im;
}

/// What was drawn; a pixel counts only with all three components right, and untouched ones must be untouched in all.
Pixels drawn(const Image& im) {
    Pixels set;
    for (int y = 0; y < static_cast<int>(im.height); ++y)
        for (int x = 0; x < static_cast<int>(im.width); ++x) {
            const auto at = [&](int p) {
                return im.plane[p].view[y][x];
            };
            if (at(0) == ink.y && at(1) == ink.cb && at(2) == ink.cr)
                set.emplace(x, y);
            else
                EXPECT_TRUE(at(0) == 7 && at(1) == 7 && at(2) == 7) << x << "," << y;
        }
    return set;
}

/// The rule, pixel by pixel, without any clipping of the walk.
Pixels walked(int x0, int y0, int x1, int y1) {
    Pixels set;
    const bool steep = std::abs(x1 - x0) < std::abs(y1 - y0);
    int m = steep ? y0 : x0;
    int n = steep ? x0 : y0;
    int mEnd = steep ? y1 : x1;
    int nEnd = steep ? x1 : y1;
    if (mEnd < m) {
        std::swap(m, mEnd);
        std::swap(n, nEnd);
    }
    const int length = mEnd - m;
    const int rise = std::abs(nEnd - n);
    const int step = n < nEnd ? 1 : -1;
    int err = -(length / 2);
    for (; m <= mEnd; ++m) {
        const int x = steep ? n : m;
        const int y = steep ? m : n;
        if (x >= 0 && y >= 0 && x < width && y < height)
            set.emplace(x, y);
        err += rise;
        if (err > 0) {
            n += step;
            err -= length;
        }
    }
    return set;
}

Pixels line(int x0, int y0, int x1, int y1) {
    Image im = blank();
    Ko::drawLine(im, x0, y0, x1, y1, ink);
    return drawn(im);
}

Pixels box(Ko::Bbox<int> b, bool filled) {
    Image im = blank();
    Ko::drawBbox(im, b, ink, filled);
    return drawn(im);
}

template <class T>
Pixels arrow(T x, T y, Ko::Point<int> from, unsigned headSize) {
    Image im = blank();
    Ko::drawVector2D(im, Ko::Vector2D<T>{x, y}, from, headSize, ink);
    return drawn(im);
}

/// The pixels of a blank image that fulfil a condition.
template <class Condition>
Pixels where(Condition condition) {
    Pixels set;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (condition(x, y))
                set.emplace(x, y);
    return set;
}

TEST(DrawLine, EveryDirectionInsideTheImage) {
    for (int x = 0; x < width; ++x)
        for (int y = 0; y < height; ++y) {
            Image back = blank();
            Ko::drawLine(back, Ko::Point<int>{x, y}, Ko::Point<int>{20, 14}, ink);
            ASSERT_EQ(drawn(back), walked(x, y, 20, 14)) << x << "," << y;
            ASSERT_EQ(line(20, 14, x, y), walked(20, 14, x, y)) << x << "," << y;
        }
}

TEST(DrawLine, ClippingNeverChangesThePixels) {
    std::mt19937 random(4711);
    for (const int reach : {60, 1000, 100000}) {
        std::uniform_int_distribution<int> coordinate(-reach, reach);
        for (int i = 0; i < (reach > 1000 ? 200 : 4000); ++i) {
            const int x0 = coordinate(random) / (i % 3 + 1), y0 = coordinate(random) / (i % 5 + 1);
            // Mostly lines that cross the image: mirror the far end through a point of it.
            const int x1 = i % 4 ? 2 * (i % width) - x0 : coordinate(random);
            const int y1 = i % 4 ? 2 * (i % height) - y0 + i % 7 : coordinate(random);
            ASSERT_EQ(line(x0, y0, x1, y1), walked(x0, y0, x1, y1)) << x0 << "," << y0 << " " << x1 << "," << y1;
        }
    }
}

TEST(DrawLine, FarEndsReachThroughAtOnceAndRight) {
    constexpr int far = 2000000000;
    EXPECT_EQ(line(-far, -far, far, far), where([](int x, int y) { return x == y; }));
    // A slope of 1/3 through (0, 0): the minor coordinate is the nearest integer, there are no ties.
    EXPECT_EQ(line(-1500000000, -500000000, 1500000000, 500000000),
              where([](int x, int y) { return y == static_cast<int>(std::lround(x / 3.0)); }));
    EXPECT_EQ(line(5, INT_MAX, 5, INT_MIN), where([](int x, int) { return x == 5; }));
    EXPECT_EQ(line(INT_MIN, 3, INT_MAX, 3), where([](int, int y) { return y == 3; }));
    for (const auto& [x0, y0, x1, y1] : {std::tuple{INT_MIN, INT_MIN, INT_MAX, INT_MIN},
                                         {INT_MIN, 0, -1, 0},
                                         {width, INT_MIN, width, INT_MAX},
                                         {INT_MIN, 5, -1, INT_MAX}})
        EXPECT_EQ(line(x0, y0, x1, y1), Pixels{}) << x0;
}

TEST(DrawLine, StaysInsideWhatTheImageHolds) {
    // Without all of three planes there is nothing to draw into.
    for (const auto& [format, w, h] :
         {std::tuple{Ko::PF_YCC444P, 0, 0}, {Ko::PF_RGB, 8, 8}, {Ko::PF_YUY2, 8, 8}, {Ko::PF_YCC420P, 1, 8}}) {
        const Image before = blank(w, h, format);
        Image im = before;
        Ko::drawLine(im, -5, -5, 8, 8, ink);
        Ko::drawLine(im, 0, 3, 7, 3, ink);
        EXPECT_EQ(difference(im, before), "");
    }
    // The smallest plane tells how far to go in all of them.
    Image subsampled = blank(8, 8, Ko::PF_YCC420P);
    Ko::drawLine(subsampled, -2, -2, 7, 7, ink);
    Ko::drawLine(subsampled, 1, 7, 1, -7, ink);
    const unsigned char inks[] = {ink.y, ink.cb, ink.cr};
    for (int p = 0; p < 3; ++p)
        for (unsigned y = 0; y < subsampled.plane[p].height; ++y)
            for (unsigned x = 0; x < subsampled.plane[p].width; ++x)
                EXPECT_EQ(subsampled.plane[p].view[y][x], x < 4 && y < 4 && (x == y || x == 1) ? inks[p] : 7)
                    << p << ":" << x << "," << y;

    // A view holds less than the size says; what lies past it must not be reached.
    Image seen = blank(8, 8);
    for (int p = 0; p < 3; ++p)
        beginAt(seen.plane[p], 2, 2);
    Ko::drawLine(seen, 0, 0, 7, 7, ink);
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(seen.plane[0].data[i], i / 8 == i % 8 && i % 8 >= 2 ? ink.y : 7) << i;

    Image withAlpha = blank(width, height, Ko::PF_YCCA4444P);
    Ko::drawLine(withAlpha, 0, 0, 10, 10, ink);
    EXPECT_EQ(drawn(withAlpha).size(), 11u);
    EXPECT_EQ(samples(withAlpha, 3), samples(blank(), 0));
}

TEST(DrawBbox, OutlineIncludesItsBottomAndTheFillDoesNot) {
    const auto edge = [](int x, int y) {
        return x >= 3 && x <= 9 && y >= 4 && y <= 8 && (x == 3 || x == 9 || y == 4 || y == 8);
    };
    EXPECT_EQ(box({3, 4, 9, 8}, false), where(edge));
    const auto inside = [](int x, int y) {
        return x >= 3 && x <= 9 && y >= 4 && y < 8;
    };
    EXPECT_EQ(box({9, 4, 3, 8}, true), where(inside)); // right and left may be swapped
    EXPECT_EQ(box({3, 4, 9, 4}, true), Pixels{});
    EXPECT_EQ(box({3, 8, 9, 4}, true), Pixels{});
    EXPECT_EQ(box({3, 4, 9, 4}, false).size(), 7u);
    EXPECT_EQ(box({INT_MIN, INT_MIN, INT_MAX, INT_MAX}, true), where([](int, int) { return true; }));
}

/// Shaft and head in plain steps; the float operations are those that decide the pixels.
Pixels vectorPixels(Ko::Vector2D<int> v, Ko::Point<int> p, unsigned headSize) {
    const int tx = p.x + v.x, ty = p.y + v.y;
    Pixels set = walked(p.x, p.y, tx, ty);
    const float root = sqrtf(static_cast<float>(v.x * v.x + v.y * v.y));
    if (static_cast<unsigned>(root) < headSize || root == 0)
        return set;
    const float size = static_cast<float>(headSize);
    const float k = 1.0f - size / root;
    const int bx = p.x + static_cast<int>(k * static_cast<float>(v.x));
    const int by = p.y + static_cast<int>(k * static_cast<float>(v.y));
    const float a = static_cast<float>(static_cast<double>(atan2f(static_cast<float>(v.y), static_cast<float>(v.x))) -
                                       1.5707963267948966);
    float s = 0, co = 0;
    sincosf(a, &s, &co);
    const int ox = static_cast<int>(co * size), oy = static_cast<int>(size * s);
    set.merge(walked(bx + ox, by + oy, bx - ox, by - oy));
    set.merge(walked(bx + ox, by + oy, tx, ty));
    set.merge(walked(bx - ox, by - oy, tx, ty));
    return set;
}

TEST(DrawVector, HeadAtEveryAngleAndLength) {
    const Ko::Point<int> from{20, 14};
    for (unsigned headSize : {0u, 1u, 3u, 5u, 9u, 40u})
        for (int x = -22; x <= 22; ++x)
            for (int y = -16; y <= 16; ++y)
                ASSERT_EQ(arrow(x, y, from, headSize), vectorPixels({x, y}, from, headSize))
                    << x << "," << y << " head " << headSize;
}

TEST(DrawVector, CornersOfItsRange) {
    EXPECT_EQ(arrow(0, 0, {4, 5}, 0), (Pixels{{4, 5}}));
    EXPECT_EQ(arrow(4, 3, {4, 5}, 6), walked(4, 5, 8, 8)); // shorter than the head
    EXPECT_EQ(arrow(2.5f, -2.5f, {20, 14}, 2), vectorPixels({3, -3}, {20, 14}, 2));
    EXPECT_EQ(arrow(-7.49f, 7.5f, {20, 14}, 2), vectorPixels({-7, 8}, {20, 14}, 2));
    EXPECT_EQ(arrow(NAN, NAN, {20, 14}, 2), (Pixels{{20, 14}}));
    EXPECT_FALSE(arrow(INFINITY, -INFINITY, {20, 14}, 2).empty());
    // The tip lies outside int; the shaft is a straight row to the edge, the head far away.
    EXPECT_EQ(arrow(INT_MAX, 0, {30, 3}, 10), walked(30, 3, width, 3));
    EXPECT_EQ(arrow(INT_MIN, INT_MIN, {INT_MIN, INT_MIN}, UINT_MAX), Pixels{});
    Image im = blank(); // braces alone mean the components as they are
    Ko::drawVector2D(im, {9, -6}, {20, 14}, 3, ink);
    Ko::drawVector2D(im, {8.5f, -6.4f}, {10, 20}, 3, ink);
    Pixels both = arrow(9, -6, {20, 14}, 3);
    both.merge(arrow(9, -6, {10, 20}, 3));
    EXPECT_EQ(drawn(im), both);
}

// Each of these takes no time at all; at the cost of its rows, or of its area, the test would not end.
TEST(DrawBbox, InvisibleFilledBoxesCostNothing) {
    Image im = blank();
    for (const Ko::Bbox<int> box : {Ko::Bbox<int>{INT_MIN, INT_MIN, -1, INT_MAX},
                                    {width, INT_MIN, INT_MAX, INT_MAX},
                                    {INT_MIN, INT_MIN, INT_MAX, 0},
                                    {INT_MIN, height, INT_MAX, INT_MAX}})
        for (int i = 0; i < 20000; ++i)
            Ko::drawBbox(im, box, ink, true);
    EXPECT_EQ(drawn(im), Pixels{});
}

/// Of values that all differ, each equals itself alone.
template <class T>
constexpr bool differ(std::initializer_list<T> values) {
    for (const T& a : values)
        for (const T& b : values)
            if ((a == b) != (&a == &b) || (a != b) == (a == b))
                return false;
    return true;
}
static_assert(differ<Ko::Bbox<int>>({{1, 2, 3, 4}, {0, 2, 3, 4}, {1, 0, 3, 4}, {1, 2, 0, 4}, {1, 2, 3, 0}}));
static_assert(differ<Ko::Point<int>>({{1, 2}, {1, 3}, {0, 2}}));
static_assert(differ<Ko::Vector2D<float>>({{1, 2}, {1, 3}, {0, 2}}));
static_assert(differ<Ko::Frac<unsigned>>({{1, 2}, {2, 4}, {1, 3}}));
static_assert(differ<Ko::YCCColor>({{200, 90, 160}, {201, 90, 160}, {200, 91, 160}, {200, 90, 161}}));

TEST(Colors, AreWhatTheirRgbValuesConvertTo) {
    using namespace Ko::colors;
    const auto expectColor = [](unsigned r, unsigned g, unsigned b, Ko::YCCColor color) {
        unsigned char rgb[] = {static_cast<unsigned char>(r), static_cast<unsigned char>(g),
                               static_cast<unsigned char>(b)};
        Ko::Image converted(Ko::PF_YCC444P);
        Ko::convertIm(converted, Ko::wrapMemory(Ko::PF_RGB, 1, 1, {{rgb, 3}}));
        const auto at = [&](int p) {
            return *converted.plane[p].data;
        };
        EXPECT_TRUE((color == Ko::YCCColor{at(0), at(1), at(2)})) << r << "," << g << "," << b;
        EXPECT_TRUE(color == Ko::fromRgb(rgb[0], rgb[1], rgb[2])) << r << "," << g << "," << b;
    };
    expectColor(0, 0, 0, black);
    expectColor(64, 64, 64, darkGrey);
    expectColor(128, 128, 128, grey);
    expectColor(192, 192, 192, lightGrey);
    expectColor(255, 255, 255, white);
    expectColor(255, 0, 0, red);
    expectColor(255, 165, 0, orange);
    expectColor(255, 255, 0, yellow);
    expectColor(0, 255, 0, green);
    expectColor(0, 255, 255, cyan);
    expectColor(0, 0, 255, blue);
    expectColor(255, 0, 255, magenta);
}

} // namespace
