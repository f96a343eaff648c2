// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"

#include "support/ConversionOracle.h"
#include "support/Rows.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

// convertIm() with a matrix, beside the standards' own equations.

namespace {

using namespace test;

struct Standard : Row {
    Ko::ColorMatrix matrix;
    double kr, kb;   ///< What red and blue weigh in luma.
    double rounding; ///< How far a result may be from the equations, beside the half that rounding takes.
};
constexpr Standard standards[] = {
    {{"Bt601"}, Ko::CM_BT601, 0.299, 0.114, 5e-4}, // its factors are older than the library's rounding of them
    {{"Bt709"}, Ko::CM_BT709, 0.2126, 0.0722, 2e-4},
    {{"Bt2020"}, Ko::CM_BT2020, 0.2627, 0.0593, 2e-4},
};

class Matrices : public testing::TestWithParam<Standard> {
protected:
    static constexpr unsigned side = 4096; // all triples
    static void eachTriple(Image& im) {
        im.size(side, side);
        for (unsigned i = 0; i < side * side; ++i)
            for (unsigned c = 0; c < 3; ++c)
                sample(im, i, c) = static_cast<unsigned char>(i >> 8 * c);
    }
    static unsigned char& sample(Image& im, unsigned i, unsigned c) {
        const unsigned x = i % side, y = i / side;
        return im.planar ? im.plane[c].view[y][x] : im.plane[0].view[y][3 * x + c];
    }
    /// How far the image's triple @p i is from what it should be.
    static double distance(Image& im, unsigned i, double c0, double c1, double c2) {
        return std::max({std::abs(sample(im, i, 0) - std::clamp(c0, 0.0, 255.0)),
                         std::abs(sample(im, i, 1) - std::clamp(c1, 0.0, 255.0)),
                         std::abs(sample(im, i, 2) - std::clamp(c2, 0.0, 255.0))});
    }
};
INSTANTIATE_TEST_SUITE_P(Every, Matrices, testing::ValuesIn(standards), rowName);

TEST_P(Matrices, AreTheStandardsWithinTheRoundingForAllTriples) {
    const Ko::ColorMatrix matrix = GetParam().matrix;
    const double kr = GetParam().kr, kb = GetParam().kb, kg = 1 - kr - kb;
    Image rgb(Ko::PF_RGB), ycc(Ko::PF_YCC444P), back(Ko::PF_RGB);
    eachTriple(rgb);
    Ko::convertIm(ycc, rgb, matrix);
    Ko::convertIm(back, ycc, matrix);
    int most = 0;
    double worst = 0;
    for (unsigned i = 0; i < side * side; ++i) {
        const double r = sample(rgb, i, 0) / 255.0, g = sample(rgb, i, 1) / 255.0, b = sample(rgb, i, 2) / 255.0;
        const double y = kr * r + kg * g + kb * b;
        worst = std::max(
            worst, distance(ycc, i, 16 + 219 * y, 128 + 112 * (b - y) / (1 - kb), 128 + 112 * (r - y) / (1 - kr)));
        for (unsigned c = 0; c < 3; ++c)
            most = std::max(most, std::abs(sample(back, i, c) - sample(rgb, i, c)));
    }
    EXPECT_EQ(most, 2) << "from RGB and back";
    eachTriple(ycc);
    Ko::convertIm(back, ycc, matrix);
    for (unsigned i = 0; i < side * side; ++i) {
        const double y = (sample(ycc, i, 0) - 16) / 219.0;
        const double b = y + (sample(ycc, i, 1) - 128) / 112.0 * (1 - kb);
        const double r = y + (sample(ycc, i, 2) - 128) / 112.0 * (1 - kr);
        worst = std::max(worst, distance(back, i, 255 * r, 255 * (y - kr * r - kb * b) / kg, 255 * b));
    }
    EXPECT_LE(worst, 0.5 + GetParam().rounding);
}

TEST_P(Matrices, AreUsedWhereTheSourceWrapsTheTargetToo) {
    const Image picture = randomImage(Ko::PF_YCC444P, 20, 9);
    Image expected(Ko::PF_RGB), dst(Ko::PF_RGB);
    Ko::convertIm(expected, picture, GetParam().matrix);
    dst.size(20, 27); // its memory holds the source's three planes
    Ko::PlaneMemory planes[4];
    for (int p = 0; p < 3; ++p) {
        planes[p] = {dst.plane[0].row(9u * unsigned(p)), 20};
        for (unsigned y = 0; y < 9; ++y)
            std::copy_n(picture.plane[p].row(y), 20, planes[p].first + 20 * y);
    }
    const Image src = Ko::wrapMemory(Ko::PF_YCC444P, 20, 9, planes);
    Ko::convertIm(dst, src, GetParam().matrix);
    EXPECT_EQ(difference(dst, expected), "");
}

/// Of all pairs only RGB's with 4:4:4 depend on the matrix; what is refused without one is refused with one.
TEST_P(Matrices, ChangeNothingButRgb) {
    for (unsigned target = 1; target < 12; ++target)
        for (unsigned source = 1; source < 12; ++source) {
            const Image src = randomImage(static_cast<Ko::PIXEL_FORMAT>(source), 38, 14, source);
            Image plain(static_cast<Ko::PIXEL_FORMAT>(target)), dst = plain;
            SCOPED_TRACE(fmt2string(src.format) + " to " + fmt2string(dst.format));
            const std::string refusal = thrownText<std::logic_error>([&] { Ko::convertIm(plain, src); });
            EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::convertIm(dst, src, GetParam().matrix); }), refusal);
            const bool hasRgb = target == Ko::PF_RGB || source == Ko::PF_RGB || source == Ko::PF_RGBA;
            const bool same = GetParam().matrix == Ko::CM_BT601 || target == source || !hasRgb;
            EXPECT_TRUE(!Ko::canConvert(src.format, dst.format) || (difference(dst, plain) == "") == same);
        }
}

TEST(ColorMatrix, UnknownOnesAreRefusedBeforeTheTargetChanges) {
    for (const unsigned value : {0u, 4u, 0xFFFFFFFFu})
        for (const Ko::PIXEL_FORMAT source : {Ko::PF_RGB, Ko::PF_YUY2, Ko::PF_BGR}) {
            Image dst = randomImage(Ko::PF_YCC444P, 4, 2);
            const Image before = dst;
            EXPECT_THAT([&] { Ko::convertIm(dst, Image(source), static_cast<Ko::ColorMatrix>(value)); },
                        testing::ThrowsMessage<std::logic_error>("[convertIm]: Unknown color matrix."));
            EXPECT_EQ(difference(dst, before), "");
        }
}

} // namespace
