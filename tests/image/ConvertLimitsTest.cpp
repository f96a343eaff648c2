#include "Kovanta/ConvertIm.h"

#include "support/ConversionOracle.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <vector>

// What conversions do at the edges: wrapped memory, odd sizes, sizes that do not match or do not fit.

namespace {

using testing_support::expectedConversion;
using testing_support::fill;
using testing_support::GuardedRows;
using testing_support::Image;
using testing_support::randomImage;
using testing_support::samples;
using testing_support::thrownText;

constexpr unsigned char poison = 0xA5;
constexpr const char* resizeText = "[Array2D<T>::resize]: Noalloc and trying to resize.";

/// A noalloc image over guarded memory.
struct WrappedImage {
    WrappedImage(Ko::PIXEL_FORMAT format, unsigned width, unsigned height, std::size_t offset = 0)
        : im(format) {
        im.size(width, height, false);
        for (auto& plane : im.plane) {
            memory.emplace_back(plane.rows ? plane.width : 0, plane.rows ? plane.height : 0, offset, poison);
            if (plane.rows)
                memory.back().pointRows(plane);
        }
    }
    bool intact() const {
        return std::all_of(memory.begin(), memory.end(), [](const GuardedRows& m) { return m.intact(); });
    }
    Image im;
    std::vector<GuardedRows> memory;
};

struct Pair {
    Ko::PIXEL_FORMAT target;
    Ko::PIXEL_FORMAT source;
};

const Pair pairs[] = {
    {Ko::PF_YCC444P, Ko::PF_RGB},     {Ko::PF_YCC444P, Ko::PF_RGBA},     {Ko::PF_YCC444P, Ko::PF_Y},
    {Ko::PF_YCC444P, Ko::PF_JFIF},    {Ko::PF_YCC444P, Ko::PF_JFIF422P}, {Ko::PF_YCC444P, Ko::PF_YCC420P},
    {Ko::PF_YCC444P, Ko::PF_YUY2},    {Ko::PF_YCC420P, Ko::PF_Y},        {Ko::PF_YCC420P, Ko::PF_YCC444P},
    {Ko::PF_RGB, Ko::PF_YCC444P},     {Ko::PF_JFIF, Ko::PF_YCC444P},     {Ko::PF_Y, Ko::PF_YCC444P},
    {Ko::PF_YCC444P, Ko::PF_YCC444P},
};

/// Every pixel whose column and row belong to a whole pair is as for an even size; the guards hold at any size.
TEST(ConvertLimits, OddSizesInWrappedMemoryStayInsideThePlanes) {
    for (const auto& [target, source] : pairs)
        for (unsigned w = 1; w <= 37; w += w < 10 ? 1 : 9)
            for (unsigned h = 1; h <= 5; ++h) {
                WrappedImage src(source, w, h, w % 3);
                const Image pattern = randomImage(source, w, h, w * 10 + h);
                for (int p = 0; p < 4; ++p)
                    for (unsigned y = 0; pattern.plane[p].rows && y < pattern.plane[p].height; ++y)
                        std::copy_n(pattern.plane[p].view[y], pattern.plane[p].width, src.im.plane[p].view[y]);
                WrappedImage dst(target, w, h, h % 2);
                Ko::convertIm(dst.im, src.im);
                ASSERT_TRUE(dst.intact() && src.intact()) << fmt2string(source) << " " << w << "x" << h;
                const unsigned evenW = w / 2 * 2, evenH = h / 2 * 2;
                if (evenW == 0 || evenH == 0)
                    continue;
                // The same samples seen as an image of the even size.
                Image even(source);
                even.size(evenW, evenH);
                for (int p = 0; p < 4; ++p)
                    for (unsigned y = 0; even.plane[p].rows && y < even.plane[p].height; ++y)
                        std::copy_n(pattern.plane[p].view[y], even.plane[p].width, even.plane[p].view[y]);
                Image expected(target);
                expected.size(evenW, evenH);
                ASSERT_TRUE(expectedConversion(expected, even));
                const int planes = target == Ko::PF_Y ? 1 : 3;
                for (int p = 0; p < planes && expected.plane[p].rows; ++p)
                    for (unsigned y = 0; y < expected.plane[p].height; ++y)
                        ASSERT_TRUE(std::equal(expected.plane[p].view[y],
                                               expected.plane[p].view[y] + expected.plane[p].width,
                                               dst.im.plane[p].view[y]))
                            << fmt2string(source) << " to " << fmt2string(target) << " " << w << "x" << h << " plane "
                            << p << " row " << y;
            }
}

TEST(ConvertLimits, LoneLastColumnsAndRows) {
    const auto converted = [](Ko::PIXEL_FORMAT to, const Image& src) {
        Image dst(to);
        dst.size(src.width, src.height);
        fill(dst, poison);
        Ko::convertIm(dst, src); // keeps the buffer, so what is not written shows the poison
        return dst;
    };
    const Image subsampled = randomImage(Ko::PF_YCC420P, 7, 5);
    const Image replicated = converted(Ko::PF_YCC444P, subsampled);
    EXPECT_EQ(samples(replicated, 0), samples(subsampled, 0));
    for (int p = 1; p <= 2; ++p)
        for (unsigned y = 0; y < 5; ++y)
            for (unsigned x = 0; x < 7; ++x)
                EXPECT_EQ(replicated.plane[p].view[y][x],
                          x == 6 || y == 4 ? poison : subsampled.plane[p].view[y / 2][x / 2]);

    const Image packed = randomImage(Ko::PF_YUY2, 7, 3);
    const Image unpacked = converted(Ko::PF_YCC444P, packed);
    for (int p = 0; p <= 2; ++p)
        EXPECT_EQ(unpacked.plane[p].view[1][6], poison);
    EXPECT_EQ(unpacked.plane[0].view[1][5], packed.plane[0].view[1][10]);

    // The last column has luma of its own; its chroma is that of the pair before.
    const Image jfif = randomImage(Ko::PF_JFIF422P, 7, 3);
    const Image studio = converted(Ko::PF_YCC444P, jfif);
    EXPECT_EQ(studio.plane[0].view[2][6], testing_support::studioFromFull(jfif.plane[0].view[2][6], 0, 0)[0]);
    EXPECT_EQ(studio.plane[1].view[2][6], studio.plane[1].view[2][5]);
    const Image narrow = converted(Ko::PF_YCC444P, randomImage(Ko::PF_JFIF422P, 1, 3));
    EXPECT_EQ(narrow.plane[1].view[0][0], poison);

    Image direct(Ko::PF_YCC420P);
    direct.size(7, 5);
    fill(direct, poison);
    const Image rgb = randomImage(Ko::PF_RGB, 7, 5);
    RGB_2_YCC420P(direct, rgb);
    for (const unsigned x : {0u, 6u}) {
        const unsigned char* pixel = rgb.plane[0].view[4] + 3 * x;
        EXPECT_EQ(direct.plane[0].view[4][x], testing_support::studioFromRgb(pixel[0], pixel[1], pixel[2])[0]);
    }
    EXPECT_EQ(direct.plane[1].width, 3u);
}

TEST(ConvertLimits, WrappedTargetTakesWhatFitsAndRefusesTheRest) {
    const Image low = randomImage(Ko::PF_YCC444P, 16, 4);
    WrappedImage display(Ko::PF_YCC420P, 16, 8);
    Ko::convertIm(display.im, low);
    EXPECT_TRUE(display.intact());
    EXPECT_EQ(display.im.height, 4u);
    EXPECT_EQ(display.im.plane[0].height, 8u);
    EXPECT_EQ(display.im.plane[0].view[3][15], low.plane[0].view[3][15]);
    EXPECT_EQ(display.im.plane[0].view[4][0], poison);
    EXPECT_EQ(display.im.plane[1].view[2][0], poison);

    for (const auto& [w, h] : {std::pair{16u, 10u}, {18u, 8u}, {8u, 4u}, {18u, 10u}}) {
        WrappedImage target(Ko::PF_YCC420P, 16, 8);
        const Image src = randomImage(Ko::PF_YCC444P, w, h);
        EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::convertIm(target.im, src); }), resizeText) << w << "x" << h;
        EXPECT_TRUE(target.intact());
        EXPECT_EQ(target.memory[0].row(0)[0], poison);
    }
    // The identity is an assignment, which takes nothing but the exact size.
    WrappedImage same(Ko::PF_YCC444P, 16, 8);
    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::convertIm(same.im, low); }),
              "[Array2D<T>::operator=]: Noalloc and trying to resize.");
}

TEST(ConvertLimits, SizesThatDoNotFitAreRefusedBeforeTheTargetChanges) {
    Image src(Ko::PF_Y);
    src.size(70000, 60000, false); // 4.2e9 samples fit; three bytes for each do not
    Image dst(Ko::PF_RGB);
    dst.size(3, 2);
    const unsigned char* before = dst.plane[0].data;
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::convertIm(dst, src); }), "[convertIm]: Image too large.");
    EXPECT_EQ(dst.plane[0].data, before);
    EXPECT_EQ(dst.width, 3u);
}

TEST(ConvertLimits, MismatchedPlanesAreNeverOverrun) {
    // The routines trust sizes, but not with memory: the smaller of both images decides.
    const Image big = randomImage(Ko::PF_YCC444P, 33, 17);
    const Image bigRgb = randomImage(Ko::PF_RGB, 33, 17);
    Image small(Ko::PF_RGB);
    small.size(5, 3);
    YCC444P_2_RGB(small, big);
    Image smallYuy2(Ko::PF_YUY2);
    smallYuy2.size(5, 3);
    YCC444P_2_YUY2(smallYuy2, big);
    Image smallPlanar(Ko::PF_YCC420P);
    smallPlanar.size(5, 3);
    RGB_2_YCC420P(smallPlanar, bigRgb);
    YCC444P_2_YCC420P(smallPlanar, big);
    Image unsized(Ko::PF_YCC444P);
    RGB_2_YCC444P(unsized, bigRgb);
    YCC420P_2_YCC444P(unsized, smallPlanar);
    JFIF422P_2_PF_YCC444P(unsized, smallPlanar);
    // A source whose row length wrapped at 32 bits holds one pair of pixels.
    Image wrapped(Ko::PF_YUY2);
    wrapped.size(0x40000002, 1);
    std::fill_n(wrapped.plane[0].view[0], 4, static_cast<unsigned char>(9));
    Image dst(Ko::PF_YCC444P);
    dst.size(8, 1);
    fill(dst, poison);
    YUY2_2_YCC444P(dst, wrapped);
    EXPECT_EQ(samples(dst, 0)[0], (std::vector<unsigned char>{9, 9, poison, poison, poison, poison, poison, poison}));
}

TEST(ConvertLimits, ConvertingAnImageIntoItselfIsHarmless) {
    Image im = randomImage(Ko::PF_YCC420P, 8, 8);
    Ko::convertIm(im, im);
    EXPECT_EQ(im.width, 8u);
    EXPECT_EQ(im.plane[0].height, 8u);
}

} // namespace
