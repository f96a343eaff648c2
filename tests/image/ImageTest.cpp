// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"

#include "support/RefusedMemory.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

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
    im = copy; // nor written
    EXPECT_EQ(im.plane[2].view[0], nullptr);

    // Planes that a format does not have stay as they were.
    Image changing(Ko::PF_YCCA4444P);
    changing.size(4, 4);
    const unsigned char* alpha = changing.plane[3].data;
    changing.fmt(Ko::PF_RGB);
    changing.size(2, 2);
    EXPECT_EQ(changing.plane[3].data, alpha);
}

static_assert(!std::is_convertible_v<Ko::PIXEL_FORMAT, Image>, "a format must not pass for an image");
static_assert(std::is_nothrow_move_constructible_v<Image>, "or a growing vector copies");
static_assert(std::is_same_v<decltype(Ko::Image(Ko::PF_RGB)), Ko::Image<>>);

/// 0 x 0, of its old format, with planes like new ones, and as good as new.
void expectMovedFrom(Image& im) {
    const Ko::PIXEL_FORMAT format = im.format;
    EXPECT_EQ(im.width + im.height, 0u);
    for (const auto& plane : im.plane)
        EXPECT_TRUE(plane.width == 0 && plane.height == 0 && !plane.rows && !plane.view && !plane.data && plane.alloc &&
                    plane.subarrays.size() == 1 && plane.subarrays[0].width == 0);
    im.size(5, 3);
    EXPECT_EQ(Image(im).plane[0].width, im.planar ? 5u : 5 * im.bytesPerPixelNum / im.bytesPerPixelDen);
    EXPECT_EQ(im.format, format);
}

TEST(Image, CopiesAndMovesCarryPixelsAndDescription) {
    Image im = randomImage(Ko::PF_JFIF422P, 9, 4);
    im.sequenceNumber = 1234567890123;
    const Image expected(im);
    const Image copy(im);
    Image assigned(Ko::PF_RGB);
    assigned = im;
    std::optional<Image> moved;
    Image target = randomImage(Ko::PF_RGB, 3, 3);
    {
        const RefusedMemory none(0);
        moved.emplace(std::move(im));
        target = std::move(*moved);
        moved = std::move(target);
        EXPECT_FALSE(none.happened()) << "a move asks for memory";
    }
    for (const Image* other : std::initializer_list<const Image*>{&copy, &assigned, &*moved}) {
        EXPECT_EQ(difference(*other, expected), "");
        EXPECT_EQ(other->horDiv[2], 2u);
        EXPECT_EQ(other->sequenceNumber, 1234567890123u);
    }
    expectMovedFrom(im); // NOLINT(bugprone-use-after-move)
    expectMovedFrom(target);
    auto& self = *moved;
    self = std::move(*moved);
    EXPECT_EQ(difference(self, expected), "");
}

TEST(Image, AVectorGrowsWithoutACopyAndErasesThroughWrappers) {
    Image memory = randomImage(Ko::PF_YCC444P, 8, 2);
    std::vector<Image> frames;
    frames.push_back(Ko::wrapRectangle(memory, 0, 0, 4, 2));
    frames.push_back(Ko::wrapRectangle(memory, 4, 0, 4, 2));
    frames.push_back(randomImage(Ko::PF_YCC444P, 4, 2, 9));
    const unsigned char* owned = frames[2].plane[0].data;
    for (int i = 0; i < 20; ++i)
        frames.emplace_back(Ko::PF_RGB);
    EXPECT_EQ(frames[0].plane[0].row(0), memory.plane[0].row(0));
    EXPECT_EQ(frames[2].plane[0].data, owned);
    const Image second(frames[1]);
    frames.resize(2, Image(Ko::PF_RGB));
    frames.erase(frames.begin());
    EXPECT_EQ(difference(Ko::wrapRectangle(memory, 0, 0, 4, 2), second), "") << "assigning writes through";
}

/// Each source wraps rows of the image that is assigned to, which go or are written while they are read.
TEST(Image, TakesWhatWrapsAPartOfItself) {
    const Image before = randomImage(Ko::PF_YCC444P, 8, 6);
    const auto part = [](Image& im) {
        return Ko::wrapRectangle(im, 2, 1, 4, 3);
    };
    const auto upsideDown = [](Image& im) {
        Ko::PlaneMemory planes[4];
        for (int p = 0; p < 3; ++p)
            planes[p] = {im.plane[(p + 1) % 3].row(5), -8}; // in another order, too
        return Ko::wrapMemory(Ko::PF_YCC444P, 8, 6, planes);
    };
    for (const auto& wrap : std::initializer_list<std::function<Image(Image&)>>{part, upsideDown}) {
        Image im = before;
        const Image wrapper = wrap(im);
        const Image expected(wrapper); // on its own memory
        im = wrap(im);
        EXPECT_EQ(difference(im, expected), "") << "moved";
        EXPECT_TRUE(im.plane[0].alloc);
        im = before;
        const Image source = wrap(im);
        im = source;
        EXPECT_EQ(difference(im, expected), "") << "copied";
        im = before;
        Ko::convertIm(im, wrap(im));
        EXPECT_EQ(difference(im, expected), "") << "converted";
        Image flipped = expected;
        Ko::flipVer(flipped);
        im = before;
        Ko::flipVer(im, wrap(im));
        EXPECT_EQ(difference(im, flipped), "") << "flipped";
    }
    // Into another format: a part, and the whole upside down, whose rows the kept buffer is written over.
    for (const bool whole : {false, true}) {
        Image im = before;
        const Image grey = whole ? Ko::wrapMemory(Ko::PF_Y, 8, 6, {{im.plane[0].row(5), -8}})
                                 : Ko::wrapMemory(Ko::PF_Y, 4, 3, {{im.plane[0].row(1) + 2, 8}});
        const Image apart(grey);
        Image expected(Ko::PF_YCC444P);
        Ko::convertIm(expected, apart);
        Ko::convertIm(im, grey);
        EXPECT_EQ(difference(im, expected), "") << whole;
    }
    Ko::Array2D<> plane = before.plane[0];
    Image holder = before;
    plane = std::move(Ko::wrapRectangle(holder, 0, 0, 8, 6).plane[0]);
    EXPECT_FALSE(plane.alloc);
    holder.plane[0] = std::move(plane);
    EXPECT_TRUE(holder.plane[0].alloc);
    EXPECT_EQ(samples(holder, 0), samples(before, 0));
}

/// Rows that a source does not have are 0 in its copies, not what the memory held.
TEST(Image, CopiesShowNoOldMemory) {
    Image unpointed(Ko::PF_YCC444P);
    unpointed.size(64, 64, false);
    Image released = randomImage(Ko::PF_YCC444P, 64, 64);
    released.plane[1].newData(0, 0, true);
    for (const Image* im : {&unpointed, &released}) {
        {
            Image secret = Image(Ko::PF_YCC444P);
            secret.size(64, 64);
            fill(secret, 0x5E);
        }
        const Image copy(*im);
        Image assigned(Ko::PF_YCC444P);
        assigned = *im;
        const std::vector<std::vector<unsigned char>> zeros(64, std::vector<unsigned char>(64));
        EXPECT_EQ(samples(copy, 1), zeros);
        EXPECT_EQ(samples(assigned, 1), zeros);
    }
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
    Image most(Ko::PF_Y); // just fits
    most.size(65537, 65535, false);
    EXPECT_EQ(most.plane[0].height, 65535u);
    // Fits, although the product on the way to its row length does not: the row is what 32 bits make of it.
    Image wide(Ko::PF_YUY2);
    wide.size(0x40000001, 1);
    EXPECT_EQ(wide.plane[0].width, 2u);
    EXPECT_EQ(wide.width, 0x40000001u);
}

} // namespace
