#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <tuple>

namespace {

using namespace test;

using Sizes = std::array<std::pair<unsigned, unsigned>, 4>;

/// The plane sizes of a 7 x 5 image; {0, 0} where there is no plane.
struct Layout {
    Ko::PIXEL_FORMAT format;
    const char* text;
    bool planar;
    std::pair<unsigned, unsigned> bytes; // per pixel, as a fraction
    Sizes planes;
};

const Layout layouts[] = {
    {Ko::PF_YCC444P, "PF_YCC444P (Planar Y'CbCr 4:4:4)", true, {1, 1}, {{{7, 5}, {7, 5}, {7, 5}}}},
    {Ko::PF_YCCA4444P, "PF_YCCA4444P (Planar Y'CbCrA 4:4:4:4)", true, {1, 1}, {{{7, 5}, {7, 5}, {7, 5}, {7, 5}}}},
    {Ko::PF_RGB, "PF_RGB (Packed RGB 4:4:4)", false, {3, 1}, {{{21, 5}}}},
    {Ko::PF_RGBA, "PF_RGBA (Packed RGBA 4:4:4:4)", false, {4, 1}, {{{28, 5}}}},
    {Ko::PF_Y, "PF_Y (Grayscale)", true, {1, 1}, {{{7, 5}, {3, 5}, {3, 5}}}},
    {Ko::PF_YAP, "PF_YAP (Planar grayscale with alpha)", true, {1, 1}, {{{7, 5}, {3, 5}, {3, 5}, {7, 5}}}},
    {Ko::PF_JFIF, "PF_JFIF (Packed JFIF Y'CbCr 4:4:4)", false, {3, 1}, {{{21, 5}}}},
    {Ko::PF_JFIF422P, "PF_JFIF422P (Planar JFIF Y'CbCr 4:2:2)", true, {1, 1}, {{{7, 5}, {3, 5}, {3, 5}}}},
    {Ko::PF_YCC420P, "PF_YCC420P (Planar Y'CbCr 4:2:0)", true, {1, 1}, {{{7, 5}, {3, 2}, {3, 2}}}},
    {Ko::PF_BGR, "PF_BGR (Packed BGR)", false, {3, 1}, {{{21, 5}}}},
    {Ko::PF_YUY2, "PF_YUY2 (YUY2)", false, {4, 2}, {{{14, 5}}}},
};

TEST(Image, EveryFormatHasItsLayoutAndText) {
    Image changing(Ko::PF_YCCA4444P); // whatever it held before must not show through
    for (const Layout& layout : layouts) {
        Image fresh(layout.format);
        EXPECT_EQ(fresh.width + fresh.height, 0u);
        EXPECT_EQ(fresh.sequenceNumber, 0u);
        for (const auto& plane : fresh.plane)
            EXPECT_EQ(plane.rows, nullptr);
        fresh.size(7, 5);
        changing.fmt(layout.format);
        for (const Image* im : {&fresh, &changing}) {
            EXPECT_EQ(im->format, layout.format);
            EXPECT_EQ(im->planar, layout.planar) << layout.text;
            EXPECT_EQ(std::pair(im->bytesPerPixelNum, im->bytesPerPixelDen), layout.bytes) << layout.text;
        }
        for (int p = 0; p < 4; ++p) {
            const auto [w, h] = layout.planes[static_cast<std::size_t>(p)];
            EXPECT_EQ(fresh.plane[p].rows != nullptr, w != 0) << layout.text << p;
            EXPECT_EQ(std::pair(fresh.plane[p].width, fresh.plane[p].height), std::pair(w, h)) << layout.text << p;
            EXPECT_EQ(fresh.horDiv[p] == 0, w == 0) << layout.text << p;
            EXPECT_EQ(std::pair(changing.horDiv[p], changing.verDiv[p]), std::pair(fresh.horDiv[p], fresh.verDiv[p]));
        }
        EXPECT_EQ(fmt2string(layout.format), layout.text);
    }
    EXPECT_EQ(fmt2string(Ko::PF_UNKNOWN), "PF_UNKNOWN (Unknown format)");
    EXPECT_EQ(fmt2string(static_cast<Ko::PIXEL_FORMAT>(12)), "Unknown enumeration");
    EXPECT_EQ(fmt2string(static_cast<Ko::PIXEL_FORMAT>(0xFFFFFFFF)), "Unknown enumeration");
}

TEST(Image, RefusedFormatIsStoredAndNothingElse) {
    for (const unsigned value : {0u, 12u, 0x80000000u}) {
        const auto bad = static_cast<Ko::PIXEL_FORMAT>(value);
        EXPECT_EQ(thrownText<std::logic_error>([&] { Image im(bad); }), "[Image<T>::Image]: Unknown format.");
        Image im = randomImage(Ko::PF_YUY2, 6, 2);
        EXPECT_EQ(thrownText<std::logic_error>([&] { im.fmt(bad); }), "[Image<T>::Image]: Unknown format.");
        EXPECT_EQ(im.format, bad);
        EXPECT_EQ(im.bytesPerPixelDen, 2u);
        EXPECT_FALSE(im.planar);
        EXPECT_EQ(im.plane[0].width, 12u);
    }
}

TEST(Image, SizeZeroReleasesAndNoallocLeavesRowsToTheCaller) {
    Image im(Ko::PF_YCC420P);
    im.size(7, 5);
    im.size(0, 5);
    EXPECT_EQ(im.width, 0u);
    EXPECT_EQ(im.plane[0].rows, nullptr);
    EXPECT_EQ(im.plane[1].subarrays.back().width, 3u);

    im.size(8, 4, false);
    ASSERT_FALSE(im.plane[2].alloc);
    for (unsigned y = 0; y < 2; ++y)
        EXPECT_EQ(im.plane[2].view[y], nullptr);
    const Image copy(im); // rows that nobody pointed yet are not followed
    EXPECT_TRUE(copy.plane[2].alloc);

    // Planes that a format does not have stay as they were.
    Image changing(Ko::PF_YCCA4444P);
    changing.size(4, 4);
    const unsigned char* alpha = changing.plane[3].data;
    changing.fmt(Ko::PF_RGB);
    changing.size(2, 2);
    EXPECT_EQ(changing.plane[3].data, alpha);
}

TEST(Image, CopiesAndMovesCarryPixelsAndDescription) {
    Image im = randomImage(Ko::PF_JFIF422P, 9, 4);
    im.sequenceNumber = 1234567890123;
    const Image expected = randomImage(Ko::PF_JFIF422P, 9, 4);
    const Image copy(im);
    Image assigned(Ko::PF_RGB);
    assigned = im;
    Image moved(std::move(im));
    for (const Image* other : std::initializer_list<const Image*>{&copy, &assigned, &moved}) {
        EXPECT_EQ(difference(*other, expected), "");
        EXPECT_EQ(other->horDiv[2], 2u);
        EXPECT_EQ(other->sequenceNumber, 1234567890123u);
    }
    EXPECT_EQ(im.format, Ko::PF_JFIF422P); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(im.plane[0].rows, nullptr);
    assigned = std::move(moved);
    EXPECT_EQ(difference(assigned, expected), "");
}

TEST(Image, SizesBeyond32BitsAreRefusedBeforeAnythingChanges) {
    using Case = std::tuple<Ko::PIXEL_FORMAT, unsigned, unsigned>;
    for (const auto& [format, width, height] :
         {Case{Ko::PF_RGB, 0x55555556, 1}, Case{Ko::PF_RGBA, 0x40000000, 1}, Case{Ko::PF_RGBA, 32768, 32768},
          Case{Ko::PF_YCC444P, 65536, 65536}, Case{Ko::PF_YUY2, 0x80000000, 1}}) {
        const Image before = randomImage(format, 6, 2);
        Image im = before;
        EXPECT_EQ(thrownText<std::runtime_error>([&, w = width, h = height] { im.size(w, h); }),
                  "[Image<T>::size]: Image too large.");
        EXPECT_EQ(difference(im, before), "");
    }
    // Fits, although the product on the way to its row length does not: the row is what 32 bits make of it.
    Image wide(Ko::PF_YUY2);
    wide.size(0x40000001, 1);
    EXPECT_EQ(wide.plane[0].width, 2u);
    EXPECT_EQ(wide.width, 0x40000001u);
}

} // namespace
