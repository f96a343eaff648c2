// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"

#include "support/ConversionOracle.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace test;

Ko::PIXEL_FORMAT format(unsigned value) {
    return static_cast<Ko::PIXEL_FORMAT>(value);
}

// First in this program on purpose: the first use of the conversion table comes from many threads at once.
TEST(Convert, FirstUseFromManyThreads) {
    const Image src = randomImage(Ko::PF_RGB, 16, 8);
    const Image expected = inFormat(Ko::PF_YCC444P, src);
    std::vector<Image> results(12, Image(Ko::PF_YCC444P));
    std::vector<std::thread> threads;
    for (Image& result : results)
        threads.emplace_back([&] { Ko::convertIm(result, src); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Image& result : results)
        EXPECT_EQ(difference(result, expected), "");
}

TEST(Convert, EveryPairIsConvertedExactlyOrRefusedByName) {
    unsigned supported = 0;
    for (unsigned target = 1; target < 12; ++target)
        for (unsigned source = 1; source < 12; ++source) {
            Image src = randomImage(format(source), 38, 14, 12 * target + source);
            src.sequenceNumber = 77;
            Image dst(format(target));
            dst.size(5, 3);
            Image expected(format(target));
            expected.size(38, 14);
            EXPECT_EQ(Ko::canConvert(src.format, dst.format), expectedConversion(expected, src));
            const std::string names = fmt2string(format(source)) + " to " + fmt2string(format(target));
            if (expectedConversion(expected, src)) {
                ++supported;
                Ko::convertIm(dst, src);
                EXPECT_EQ(difference(dst, expected), "") << names;
                EXPECT_EQ(dst.sequenceNumber, source == target ? 77u : 0u);
            } else {
                EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::convertIm(dst, src); }),
                          "[convertIm]: Don't know how to convert from " + names + ".");
            }
            // Sized in either case.
            EXPECT_EQ(dst.width, 38u) << names;
            EXPECT_EQ(dst.plane[0].height, 14u) << names;
        }
    EXPECT_EQ(supported, 12u + 11u);
}

TEST(Convert, FormatsOutsideTheTableAreNamedNotIndexed) {
    const Image src = randomImage(Ko::PF_RGB, 4, 4);
    Image dst(Ko::PF_YCC444P);
    EXPECT_THROW(dst.fmt(format(4000000000u)), std::logic_error);
    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::convertIm(dst, src); }),
              "[convertIm]: Don't know how to convert from PF_RGB (Packed RGB 4:4:4) to Unknown enumeration.");
    Image target(Ko::PF_YCC444P);
    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::convertIm(target, dst); }),
              "[convertIm]: Don't know how to convert from Unknown enumeration to PF_YCC444P (Planar Y'CbCr 4:4:4).");
    EXPECT_EQ(target.plane[2].width, 4u);

    // Two images of no format are of the same one.
    Image a = randomImage(Ko::PF_Y, 4, 4);
    Image b(Ko::PF_Y);
    EXPECT_THROW(a.fmt(Ko::PF_UNKNOWN), std::logic_error);
    EXPECT_THROW(b.fmt(Ko::PF_UNKNOWN), std::logic_error);
    Ko::convertIm(b, a);
    EXPECT_EQ(samples(b, 0), samples(a, 0));
}

TEST(Convert, AsksAboutFormatsOutsideTheTable) {
    EXPECT_TRUE(Ko::canConvert(Ko::PF_UNKNOWN, Ko::PF_UNKNOWN));
    EXPECT_FALSE(Ko::canConvert(format(12), format(12)));
    EXPECT_FALSE(Ko::canConvert(format(0xFFFFFFFF), Ko::PF_YCC444P));
}

TEST(Convert, AllTriples) {
    Image rgb(Ko::PF_RGB);
    Image ycc(Ko::PF_YCC444P);
    rgb.size(4096, 4096);
    ycc.size(4096, 4096);
    for (unsigned y = 0; y < 4096; ++y)
        for (unsigned x = 0; x < 4096; ++x)
            for (unsigned c = 0; c < 3; ++c)
                rgb.plane[0].view[y][3 * x + c] = ycc.plane[c].view[y][x] =
                    static_cast<unsigned char>((y << 12 | x) >> 8 * c);
    for (const auto& [target, source] : {std::pair{Ko::PF_YCC444P, &rgb}, {Ko::PF_RGB, &ycc}, {Ko::PF_JFIF, &ycc}}) {
        Image dst(target);
        Ko::convertIm(dst, *source);
        EXPECT_EQ(difference(dst, inFormat(target, *source)), "");
    }
}

TEST(Convert, RoutinesThatTheTableDoesNotKnow) {
    constexpr unsigned w = 1030; // more than the tile that RGB_2_YCC420P works in
    constexpr unsigned h = 6;
    const auto sized = [](Ko::PIXEL_FORMAT f) {
        return randomImage(f, w, h, f);
    };
    const Image rgb = sized(Ko::PF_RGB);
    const Image studio = inFormat(Ko::PF_YCC444P, rgb);
    Image bgr = sized(Ko::PF_BGR); // these are to show the same picture
    Image rgba = sized(Ko::PF_RGBA);
    for (unsigned y = 0; y < h; ++y)
        for (unsigned i = 0; i < 3 * w; ++i) {
            bgr.plane[0].view[y][i / 3 * 3 + 2 - i % 3] = rgb.plane[0].view[y][i];
            rgba.plane[0].view[y][i / 3 * 4 + i % 3] = rgb.plane[0].view[y][i];
        }
    Image fromBgr = sized(Ko::PF_YCC444P);
    Image fromRgba = sized(Ko::PF_YCCA4444P);
    Image subsampled = sized(Ko::PF_YCC420P);
    Image yuy2 = sized(Ko::PF_YUY2);
    BGR_2_YCC444P(fromBgr, bgr);
    RGBA_2_YCCA4444P(fromRgba, rgba);
    RGB_2_YCC420P(subsampled, rgb);
    YCC444P_2_YUY2(yuy2, studio);
    EXPECT_EQ(difference(fromBgr, studio), "");
    for (int p = 0; p < 3; ++p)
        EXPECT_EQ(samples(fromRgba, p), samples(studio, p));
    EXPECT_EQ(samples(subsampled, 0), samples(studio, 0));
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x) {
            ASSERT_EQ(fromRgba.plane[3].view[y][x], rgba.plane[0].view[y][4 * x + 3]);
            ASSERT_EQ(yuy2.plane[0].view[y][2 * x], studio.plane[0].view[y][x]);
            const unsigned char* const* chroma = studio.plane[x % 2 + 1].view + y;
            const unsigned left = x / 2 * 2;
            ASSERT_EQ(yuy2.plane[0].view[y][2 * x + 1], (chroma[0][left] + chroma[0][left + 1]) / 2);
            if (y % 2 == 0) { // Cb in even columns, Cr in odd ones
                const int sum = chroma[0][left] + chroma[0][left + 1] + chroma[1][left] + chroma[1][left + 1];
                ASSERT_EQ(subsampled.plane[x % 2 + 1].view[y / 2][x / 2], sum / 4);
            }
        }
}

} // namespace
