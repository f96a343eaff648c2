#include "Kovanta/ConvertIm.h"

#include "support/ConversionOracle.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using testing_support::expectedConversion;
using testing_support::Image;
using testing_support::randomImage;
using testing_support::samples;
using testing_support::thrownText;
using testing_support::Triple;

Ko::PIXEL_FORMAT format(unsigned value) {
    return static_cast<Ko::PIXEL_FORMAT>(value);
}

/// Planes that a conversion writes; PF_Y's chroma planes belong to no picture.
int picturePlanes(Ko::PIXEL_FORMAT f) {
    return f == Ko::PF_Y ? 1 : 4;
}

// First in this program on purpose: the first use of the conversion table comes from many threads at once.
TEST(Convert, FirstUseFromManyThreads) {
    const Image src = randomImage(Ko::PF_RGB, 16, 8);
    Image expected(Ko::PF_YCC444P);
    expected.size(16, 8);
    expectedConversion(expected, src);
    std::vector<Image> results(12, Image(Ko::PF_YCC444P));
    std::vector<std::thread> threads;
    for (Image& result : results)
        threads.emplace_back([&] { Ko::convertIm(result, src); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Image& result : results)
        for (int p = 0; p < 3; ++p)
            EXPECT_EQ(samples(result, p), samples(expected, p));
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
            const std::string names = fmt2string(format(source)) + " to " + fmt2string(format(target));
            if (expectedConversion(expected, src)) {
                ++supported;
                Ko::convertIm(dst, src);
                for (int p = 0; p < picturePlanes(format(target)); ++p)
                    EXPECT_EQ(samples(dst, p), samples(expected, p)) << names << " plane " << p;
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

/// All 2^24 triples as a 4096 x 4096 image: columns count the low 12 bits of the triple, rows the high ones.
Triple tripleAt(unsigned x, unsigned y) {
    const unsigned n = y << 12 | x;
    return {static_cast<unsigned char>(n), static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n >> 16)};
}

constexpr unsigned side = 4096;

TEST(Convert, AllRgbTriples) {
    Image src(Ko::PF_RGB);
    src.size(side, side);
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x)
            std::copy_n(tripleAt(x, y).begin(), 3, src.plane[0].view[y] + 3 * x);
    Image dst(Ko::PF_YCC444P);
    Ko::convertIm(dst, src);
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x) {
            const Triple t = tripleAt(x, y);
            const Triple e = testing_support::studioFromRgb(t[0], t[1], t[2]);
            if (dst.plane[0].view[y][x] != e[0] || dst.plane[1].view[y][x] != e[1] || dst.plane[2].view[y][x] != e[2])
                FAIL() << +t[0] << "," << +t[1] << "," << +t[2];
        }
}

TEST(Convert, AllYccTriplesToRgbAndToFullRange) {
    Image src(Ko::PF_YCC444P);
    src.size(side, side);
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x)
            for (int p = 0; p < 3; ++p)
                src.plane[p].view[y][x] = tripleAt(x, y)[static_cast<std::size_t>(p)];
    Image rgb(Ko::PF_RGB);
    Ko::convertIm(rgb, src);
    Image full(Ko::PF_JFIF);
    Ko::convertIm(full, src);
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x) {
            const Triple t = tripleAt(x, y);
            const Triple e = testing_support::rgbFromStudio(t[0], t[1], t[2]);
            const Triple f = testing_support::fullFromStudio(t[0], t[1], t[2]);
            if (!std::equal(e.begin(), e.end(), rgb.plane[0].view[y] + 3 * x) ||
                !std::equal(f.begin(), f.end(), full.plane[0].view[y] + 3 * x))
                FAIL() << +t[0] << "," << +t[1] << "," << +t[2];
        }
}

TEST(Convert, RoutinesThatTheTableDoesNotKnow) {
    constexpr unsigned w = 1030; // more than the tile that RGB_2_YCC420P works in
    constexpr unsigned h = 6;
    const auto sized = [](Ko::PIXEL_FORMAT f) {
        Image im(f);
        im.size(w, h);
        return im;
    };
    const Image bgr = randomImage(Ko::PF_BGR, w, h);
    const Image rgba = randomImage(Ko::PF_RGBA, w, h);
    const Image rgb = randomImage(Ko::PF_RGB, w, h);
    const Image ycc = randomImage(Ko::PF_YCC444P, w, h);
    Image fromBgr = sized(Ko::PF_YCC444P);
    Image fromRgba = sized(Ko::PF_YCCA4444P);
    Image subsampled = sized(Ko::PF_YCC420P);
    Image yuy2 = sized(Ko::PF_YUY2);
    BGR_2_YCC444P(fromBgr, bgr);
    RGBA_2_YCCA4444P(fromRgba, rgba);
    RGB_2_YCC420P(subsampled, rgb);
    YCC444P_2_YUY2(yuy2, ycc);
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x) {
            const auto byte = [y](const Image& im, unsigned column, int p = 0) {
                return im.plane[p].view[y][column];
            };
            const Triple b =
                testing_support::studioFromRgb(byte(bgr, 3 * x + 2), byte(bgr, 3 * x + 1), byte(bgr, 3 * x));
            const Triple a =
                testing_support::studioFromRgb(byte(rgba, 4 * x), byte(rgba, 4 * x + 1), byte(rgba, 4 * x + 2));
            for (int p = 0; p < 3; ++p) {
                ASSERT_EQ(byte(fromBgr, x, p), b[static_cast<std::size_t>(p)]) << x << "," << y;
                ASSERT_EQ(byte(fromRgba, x, p), a[static_cast<std::size_t>(p)]) << x << "," << y;
            }
            ASSERT_EQ(byte(fromRgba, x, 3), byte(rgba, 4 * x + 3));
            ASSERT_EQ(byte(yuy2, 2 * x), byte(ycc, x));
            const int chroma = x % 2 + 1;
            const unsigned pair = x / 2 * 2;
            ASSERT_EQ(byte(yuy2, 2 * x + 1), (byte(ycc, pair, chroma) + byte(ycc, pair + 1, chroma)) / 2);
        }
    for (unsigned y = 0; y < h / 2; ++y)
        for (unsigned x = 0; x < w / 2; ++x) {
            int sums[3] = {};
            for (unsigned i = 0; i < 4; ++i) {
                const unsigned char* pixel = rgb.plane[0].view[2 * y + i / 2] + 3 * (2 * x + i % 2);
                const Triple t = testing_support::studioFromRgb(pixel[0], pixel[1], pixel[2]);
                ASSERT_EQ(subsampled.plane[0].view[2 * y + i / 2][2 * x + i % 2], t[0]);
                sums[1] += t[1];
                sums[2] += t[2];
            }
            ASSERT_EQ(subsampled.plane[1].view[y][x], sums[1] / 4);
            ASSERT_EQ(subsampled.plane[2].view[y][x], sums[2] / 4);
        }
}

} // namespace
