#include "Kovanta/Draw.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <random>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Image = Ko::Image<unsigned char>;
using Pixels = std::set<std::pair<int, int>>;

constexpr Ko::YCCColor ink{200, 90, 160};
constexpr int width = 41;
constexpr int height = 29;

Image blank(int w = width, int h = height, Ko::PIXEL_FORMAT format = Ko::PF_YCC444P) {
    Image im(format);
    im.size(static_cast<unsigned>(w), static_cast<unsigned>(h));
    for (auto& plane : im.plane)
        for (unsigned y = 0; plane.rows && y < plane.height; ++y)
            std::fill_n(plane.view[y], plane.width, static_cast<unsigned char>(7));
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
void walk(Pixels& set, long x0, long y0, long x1, long y1, int w = width, int h = height) {
    const bool steep = std::labs(x1 - x0) < std::labs(y1 - y0);
    long m = steep ? y0 : x0;
    long n = steep ? x0 : y0;
    long mEnd = steep ? y1 : x1;
    long nEnd = steep ? x1 : y1;
    if (mEnd < m) {
        std::swap(m, mEnd);
        std::swap(n, nEnd);
    }
    const long length = mEnd - m;
    const long rise = std::labs(nEnd - n);
    const long step = n < nEnd ? 1 : -1;
    long err = -(length / 2);
    for (; m <= mEnd; ++m) {
        const long x = steep ? n : m;
        const long y = steep ? m : n;
        if (x >= 0 && y >= 0 && x < w && y < h)
            set.emplace(static_cast<int>(x), static_cast<int>(y));
        err += rise;
        if (err > 0) {
            n += step;
            err -= length;
        }
    }
}

Pixels walked(long x0, long y0, long x1, long y1) {
    Pixels set;
    walk(set, x0, y0, x1, y1);
    return set;
}

TEST(DrawLine, EveryDirectionInsideTheImage) {
    for (int x = 0; x < width; ++x)
        for (int y = 0; y < height; ++y) {
            Image forth = blank();
            Image back = blank();
            Ko::drawLine(forth, 20, 14, x, y, ink);
            Ko::drawLine(back, Ko::Point<int>{x, y}, Ko::Point<int>{20, 14}, ink);
            ASSERT_EQ(drawn(forth), walked(20, 14, x, y)) << x << "," << y;
            ASSERT_EQ(drawn(back), walked(x, y, 20, 14)) << x << "," << y;
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
            Image im = blank();
            Ko::drawLine(im, x0, y0, x1, y1, ink);
            ASSERT_EQ(drawn(im), walked(x0, y0, x1, y1)) << x0 << "," << y0 << " " << x1 << "," << y1;
        }
    }
}

TEST(DrawLine, FarEndsReachThroughAtOnceAndRight) {
    constexpr int far = 2000000000;
    Image diagonal = blank();
    Ko::drawLine(diagonal, -far, -far, far, far, ink);
    Pixels expected;
    for (int i = 0; i < height; ++i)
        expected.emplace(i, i);
    EXPECT_EQ(drawn(diagonal), expected);

    // A slope of 1/3 through (0, 0): the minor coordinate is the nearest integer, there are no ties.
    Image shallow = blank();
    Ko::drawLine(shallow, -1500000000, -500000000, 1500000000, 500000000, ink);
    expected.clear();
    for (int x = 0; x < width; ++x)
        expected.emplace(x, static_cast<int>(std::lround(x / 3.0)));
    EXPECT_EQ(drawn(shallow), expected);

    Image steep = blank();
    Ko::drawLine(steep, 5, INT_MAX, 5, INT_MIN, ink);
    expected.clear();
    for (int y = 0; y < height; ++y)
        expected.emplace(5, y);
    EXPECT_EQ(drawn(steep), expected);

    for (const auto& [x0, y0, x1, y1] : {std::tuple{INT_MIN, INT_MIN, INT_MAX, INT_MIN},
                                         {INT_MIN, 0, -1, 0},
                                         {width, INT_MIN, width, INT_MAX},
                                         {INT_MIN, 5, -1, INT_MAX}}) {
        Image im = blank();
        Ko::drawLine(im, x0, y0, x1, y1, ink);
        EXPECT_TRUE(drawn(im).empty()) << x0;
    }
    Image whole = blank();
    Ko::drawLine(whole, INT_MIN, 3, INT_MAX, 3, ink);
    EXPECT_EQ(drawn(whole).size(), static_cast<std::size_t>(width));
}

TEST(DrawLine, StaysInsideWhatTheImageHolds) {
    Image empty(Ko::PF_YCC444P);
    Ko::drawLine(empty, -5, -5, 5, 5, ink);
    Image packed(Ko::PF_RGB);
    packed.size(8, 8);
    Ko::drawLine(packed, 0, 0, 7, 7, ink);
    Image subsampled(Ko::PF_YCC420P);
    subsampled.size(9, 7);
    Ko::drawLine(subsampled, 0, 0, 8, 6, ink);

    // A view holds less than the size says; what lies past it must not be reached.
    Image seen = blank(8, 8);
    for (int p = 0; p < 3; ++p) {
        auto& plane = seen.plane[p];
        plane.subarrays.push_back({6, 6, 2, 2});
        for (unsigned y = 0; y < 8; ++y)
            plane.rows[y] += 2;
        plane.view = plane.rows + 2;
    }
    Ko::drawLine(seen, 0, 0, 7, 7, ink);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(seen.plane[0].data[8 * (i + 2) + i + 2], ink.y);
    EXPECT_EQ(seen.plane[0].data[0], 7);

    Image withAlpha = blank(width, height, Ko::PF_YCCA4444P);
    Ko::drawLine(withAlpha, 0, 0, 10, 10, ink);
    EXPECT_EQ(drawn(withAlpha).size(), 11u);
    for (int i = 0; i <= 10; ++i)
        EXPECT_EQ(withAlpha.plane[3].view[i][i], 7);
}

TEST(DrawBbox, OutlineIncludesItsBottomAndTheFillDoesNot) {
    Image outline = blank();
    Ko::drawBbox(outline, {3, 4, 9, 8}, ink, false);
    Pixels expected;
    for (int x = 3; x <= 9; ++x)
        for (int y = 4; y <= 8; ++y)
            if (x == 3 || x == 9 || y == 4 || y == 8)
                expected.emplace(x, y);
    EXPECT_EQ(drawn(outline), expected);

    Image filled = blank();
    Ko::drawBbox(filled, {9, 4, 3, 8}, ink, true); // right and left may be swapped
    expected.clear();
    for (int x = 3; x <= 9; ++x)
        for (int y = 4; y < 8; ++y)
            expected.emplace(x, y);
    EXPECT_EQ(drawn(filled), expected);

    Image flat = blank();
    Ko::drawBbox(flat, {3, 4, 9, 4}, ink, true);
    Ko::drawBbox(flat, {3, 8, 9, 4}, ink, true);
    EXPECT_TRUE(drawn(flat).empty());
    Ko::drawBbox(flat, {3, 4, 9, 4}, ink, false);
    EXPECT_EQ(drawn(flat).size(), 7u);

    Image everything = blank();
    Ko::drawBbox(everything, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, ink, true);
    EXPECT_EQ(drawn(everything).size(), static_cast<std::size_t>(width * height));
}

/// Shaft and head in plain steps; the float operations are those that decide the pixels.
Pixels vectorPixels(Ko::Vector2D<int> v, Ko::Point<int> p, unsigned headSize) {
    Pixels set;
    const int tx = p.x + v.x, ty = p.y + v.y;
    walk(set, p.x, p.y, tx, ty);
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
    walk(set, bx + ox, by + oy, bx - ox, by - oy);
    walk(set, bx + ox, by + oy, tx, ty);
    walk(set, bx - ox, by - oy, tx, ty);
    return set;
}

TEST(DrawVector, HeadAtEveryAngleAndLength) {
    const Ko::Point<int> from{20, 14};
    for (unsigned headSize : {0u, 1u, 3u, 5u, 9u, 40u})
        for (int x = -22; x <= 22; ++x)
            for (int y = -16; y <= 16; ++y) {
                Image im = blank();
                Ko::drawVector2D(im, Ko::Vector2D<int>{x, y}, from, headSize, ink);
                ASSERT_EQ(drawn(im), vectorPixels({x, y}, from, headSize)) << x << "," << y << " head " << headSize;
            }
}

TEST(DrawVector, CornersOfItsRange) {
    Image zero = blank();
    Ko::drawVector2D(zero, Ko::Vector2D<int>{0, 0}, {4, 5}, 0, ink);
    EXPECT_EQ(drawn(zero), (Pixels{{4, 5}}));

    // 4.9 long truncates to 4, which is shorter than the head.
    Image shortOne = blank();
    Ko::drawVector2D(shortOne, Ko::Vector2D<int>{4, 3}, {4, 5}, 6, ink);
    EXPECT_EQ(drawn(shortOne), walked(4, 5, 8, 8));

    const auto asFloat = [](float x, float y) {
        Image im = blank();
        Ko::drawVector2D(im, Ko::Vector2D<float>{x, y}, {20, 14}, 2, ink);
        return drawn(im);
    };
    EXPECT_EQ(asFloat(2.5f, -2.5f), vectorPixels({3, -3}, {20, 14}, 2));
    EXPECT_EQ(asFloat(-7.49f, 7.5f), vectorPixels({-7, 8}, {20, 14}, 2));
    EXPECT_EQ(asFloat(NAN, NAN), (Pixels{{20, 14}}));
    EXPECT_FALSE(asFloat(INFINITY, -INFINITY).empty());

    // The tip lies outside int; the shaft is a straight row to the edge, the head far away.
    Image far = blank();
    Ko::drawVector2D(far, Ko::Vector2D<int>{INT_MAX, 0}, {30, 3}, 10, ink);
    EXPECT_EQ(drawn(far), walked(30, 3, width, 3));
    Ko::drawVector2D(far, Ko::Vector2D<int>{INT_MIN, INT_MIN}, {INT_MIN, INT_MIN}, UINT_MAX, ink);
    EXPECT_EQ(drawn(far), walked(30, 3, width, 3));
}

} // namespace
