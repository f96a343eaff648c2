#include "Kovanta/ConvertIm.h"

#include "support/ConversionOracle.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <vector>

// What conversions do at the edges: wrapped memory, odd sizes, sizes that do not match or do not fit.

namespace {

using namespace test;

constexpr unsigned char poison = 0xA5;
constexpr const char* resizeText = "[Array2D<T>::resize]: Noalloc and trying to resize.";

const std::pair<Ko::PIXEL_FORMAT, Ko::PIXEL_FORMAT> pairs[] = {
    // target, source
    {Ko::PF_YCC444P, Ko::PF_RGB},     {Ko::PF_YCC444P, Ko::PF_RGBA},     {Ko::PF_YCC444P, Ko::PF_Y},
    {Ko::PF_YCC444P, Ko::PF_JFIF},    {Ko::PF_YCC444P, Ko::PF_JFIF422P}, {Ko::PF_YCC444P, Ko::PF_YCC420P},
    {Ko::PF_YCC444P, Ko::PF_YUY2},    {Ko::PF_YCC420P, Ko::PF_Y},        {Ko::PF_YCC420P, Ko::PF_YCC444P},
    {Ko::PF_RGB, Ko::PF_YCC444P},     {Ko::PF_JFIF, Ko::PF_YCC444P},     {Ko::PF_Y, Ko::PF_YCC444P},
    {Ko::PF_YCC444P, Ko::PF_YCC444P},
};

/// The part of every plane that the target holds.
void copyPart(Image& dst, const Image& src) {
    for (int p = 0; p < 4; ++p)
        for (unsigned y = 0; dst.plane[p].rows && y < dst.plane[p].height; ++y)
            std::copy_n(src.plane[p].view[y], dst.plane[p].width, dst.plane[p].view[y]);
}

/// Every pixel whose column and row belong to a whole pair is as for an even size; the guards hold at any size.
TEST(ConvertLimits, OddSizesInWrappedMemoryStayInsideThePlanes) {
    for (const auto& [target, source] : pairs)
        for (unsigned w = 1; w <= 37; w += w < 10 ? 1 : 9)
            for (unsigned h = 1; h <= 5; ++h) {
                WrappedImage src(source, w, h, w % 3);
                const Image pattern = randomImage(source, w, h, w * 10 + h);
                copyPart(src.im, pattern);
                WrappedImage dst(target, w, h, h % 2);
                Ko::convertIm(dst.im, src.im);
                SCOPED_TRACE(fmt2string(source) + " " + std::to_string(w) + "x" + std::to_string(h));
                ASSERT_TRUE(dst.intact() && src.intact());
                if (w == 1 || h == 1)
                    continue;
                // The same samples seen as an image of the even size.
                Image even(source);
                even.size(w / 2 * 2, h / 2 * 2);
                copyPart(even, pattern);
                Image part(target);
                part.size(even.width, even.height);
                copyPart(part, dst.im);
                ASSERT_EQ(difference(part, inFormat(target, even)), "");
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
    EXPECT_EQ(studio.plane[0].view[2][6], studioFromFull(jfif.plane[0].view[2][6], 0, 0)[0]);
    EXPECT_EQ(studio.plane[1].view[2][6], studio.plane[1].view[2][5]);
    const Image narrow = converted(Ko::PF_YCC444P, randomImage(Ko::PF_JFIF422P, 1, 3));
    EXPECT_EQ(narrow.plane[1].view[0][0], poison);

    Image direct = randomImage(Ko::PF_YCC420P, 1031, 5); // more than the tile that RGB_2_YCC420P works in
    const Image rgb = randomImage(Ko::PF_RGB, 1031, 5);
    RGB_2_YCC420P(direct, rgb);
    EXPECT_EQ(samples(direct, 0), samples(inFormat(Ko::PF_YCC444P, rgb), 0));
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
    WrappedImage rgb(Ko::PF_RGB, 5, 3);
    WrappedImage yuy2(Ko::PF_YUY2, 5, 3);
    WrappedImage planar(Ko::PF_YCC420P, 5, 3);
    YCC444P_2_RGB(rgb.im, big);
    YCC444P_2_YUY2(yuy2.im, big);
    RGB_2_YCC420P(planar.im, bigRgb);
    YCC444P_2_YCC420P(planar.im, big);
    EXPECT_TRUE(rgb.intact() && yuy2.intact() && planar.intact());
    Image unsized(Ko::PF_YCC444P);
    RGB_2_YCC444P(unsized, bigRgb);
    YCC420P_2_YCC444P(unsized, planar.im);
    JFIF422P_2_PF_YCC444P(unsized, planar.im);
    EXPECT_EQ(unsized.plane[0].rows, nullptr);
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
    const Image before = randomImage(Ko::PF_YCC420P, 8, 8);
    Image im = before;
    Ko::convertIm(im, im);
    EXPECT_EQ(difference(im, before), "");
}

} // namespace
