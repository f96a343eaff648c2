// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"

#include "support/ConversionOracle.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>
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

/// Planes whose rows follow one another without a gap, but for one plane.
struct OneGappedPlane {
    OneGappedPlane(Ko::PIXEL_FORMAT format, int gapped)
        : im(format) {
        im.size(38, 6, false);
        Ko::PlaneMemory planes[4];
        for (int p = 0; p < 4; ++p) {
            const auto& plane = im.plane[p];
            const std::size_t pitch = plane.width + (p == gapped ? gap : 0);
            auto& bytes = memory[static_cast<std::size_t>(p)];
            bytes.assign(plane.rows ? pitch * plane.height : 0, poison);
            if (!bytes.empty())
                planes[p] = {bytes.data(), static_cast<std::ptrdiff_t>(pitch)};
        }
        Ko::rewrapMemory(im, 38, 6, planes);
    }
    bool intact(int gapped) const {
        const auto& plane = im.plane[gapped];
        for (unsigned y = 0; y < plane.height; ++y)
            for (std::size_t i = 0; i < gap; ++i)
                if (plane.row(y)[plane.width + i] != poison)
                    return false;
        return true;
    }
    static constexpr std::size_t gap = 5;
    std::array<std::vector<unsigned char>, 4> memory;
    Image im;
};

TEST(ConvertLimits, OnePlaneWithGapsKeepsTheRowsOfAllApart) {
    struct Way {
        Ko::PIXEL_FORMAT target, source;
        void (*convert)(Image&, const Image&);
    };
    std::vector<Way> ways = {{Ko::PF_YCC444P, Ko::PF_BGR, BGR_2_YCC444P},
                             {Ko::PF_YCCA4444P, Ko::PF_RGBA, RGBA_2_YCCA4444P},
                             {Ko::PF_YCC420P, Ko::PF_RGB, RGB_2_YCC420P},
                             {Ko::PF_YUY2, Ko::PF_YCC444P, YCC444P_2_YUY2}};
    for (const auto& [target, source] : pairs)
        ways.push_back({target, source, Ko::convertIm});
    for (const Way& way : ways)
        for (int gapped = -1; gapped < 8; ++gapped) { // -1: none; from 4 on a plane of the target
            SCOPED_TRACE(fmt2string(way.source) + " to " + fmt2string(way.target) + " " + std::to_string(gapped));
            OneGappedPlane src(way.source, gapped);
            OneGappedPlane dst(way.target, gapped - 4);
            const Image pattern = randomImage(way.source, 38, 6);
            copyPart(src.im, pattern);
            way.convert(dst.im, src.im);
            Image expected(way.target);
            expected.size(38, 6);
            way.convert(expected, pattern); // where all rows follow one another
            EXPECT_EQ(difference(dst.im, expected), "");
            EXPECT_TRUE(gapped < 4 || dst.im.horDiv[gapped - 4] == 0 || dst.intact(gapped - 4));
        }
}

/// What stands at (x, y) of a plane of the 4:4:4 target, of an image of w x h: in an owning one the lone last column
/// and row take their neighbour's, and 128 where there is none; a wrapped one keeps what it had.
unsigned char expectedSample(const Image& src, int p, unsigned x, unsigned y, bool owning) {
    const bool planar = src.format == Ko::PF_YCC420P;
    if (p == 0 && planar)
        return src.plane[0].row(y)[x];
    const unsigned wholeWidth = src.width / 2 * 2;
    const unsigned wholeHeight = planar ? src.height / 2 * 2 : src.height;
    if (x >= wholeWidth || y >= wholeHeight) {
        if (!owning)
            return poison;
        if (wholeWidth == 0 || wholeHeight == 0)
            return 128;
        x = std::min(x, wholeWidth - 1);
        y = std::min(y, wholeHeight - 1);
    }
    return planar ? src.plane[p].row(y / 2)[x / 2]
                  : src.plane[0].row(y)[p == 0 ? 2 * x : x / 2 * 4 + 2 * unsigned(p) - 1];
}

TEST(ConvertLimits, LoneLastColumnsAndRows) {
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_YCC420P, Ko::PF_YUY2})
        for (unsigned w = 1; w <= 5; ++w)
            for (unsigned h = 1; h <= 5; ++h) {
                const Image src = randomImage(format, w, h);
                Image owning(Ko::PF_YCC444P);
                owning.size(w, h);
                fill(owning, poison); // the buffer is kept, so what is not written would show it
                WrappedImage wrapped(Ko::PF_YCC444P, w, h);
                Ko::convertIm(owning, src);
                Ko::convertIm(wrapped.im, src);
                for (int p = 0; p < 3; ++p)
                    for (unsigned i = 0; i < w * h; ++i) {
                        const unsigned x = i % w, y = i / w;
                        ASSERT_EQ(owning.plane[p].row(y)[x], expectedSample(src, p, x, y, true)) << w << "x" << h;
                        ASSERT_EQ(wrapped.im.plane[p].row(y)[x], expectedSample(src, p, x, y, false)) << w << "x" << h;
                    }
            }
    const auto converted = [](Ko::PIXEL_FORMAT to, const Image& src) {
        Image dst(to);
        dst.size(src.width, src.height);
        fill(dst, poison);
        Ko::convertIm(dst, src);
        return dst;
    };
    // The last column has luma of its own; its chroma is that of the pair before.
    const Image jfif = randomImage(Ko::PF_JFIF422P, 7, 3);
    const Image studio = converted(Ko::PF_YCC444P, jfif);
    EXPECT_EQ(studio.plane[0].view[2][6], studioFromFull(jfif.plane[0].view[2][6], 0, 0)[0]);
    EXPECT_EQ(studio.plane[1].view[2][6], studio.plane[1].view[2][5]);
    EXPECT_EQ(converted(Ko::PF_YCC444P, randomImage(Ko::PF_JFIF422P, 1, 3)).plane[1].view[2][0], 128);

    Image direct = randomImage(Ko::PF_YCC420P, 1031, 5); // more than the tile that RGB_2_YCC420P works in
    const Image rgb = randomImage(Ko::PF_RGB, 1031, 5);
    RGB_2_YCC420P(direct, rgb);
    EXPECT_EQ(samples(direct, 0), samples(inFormat(Ko::PF_YCC444P, rgb), 0));
}

/// Views that begin inside, of source and target: conversions read and write what they show, and what they do not
/// hold of the source becomes 0.
TEST(ConvertLimits, OffsetViewsAreReadAndWrittenWhereTheyShow) {
    const auto offset = [](Image& im, unsigned column, unsigned row) {
        for (int p = 0; p < 4; ++p) {
            auto& plane = im.plane[p];
            if (!plane.rows)
                continue;
            const unsigned x = column / im.horDiv[p] * (im.planar ? 1 : im.bytesPerPixelNum / im.bytesPerPixelDen);
            plane.subarrays.push_back({plane.width - x, plane.height - row / im.verDiv[p], x, row / im.verDiv[p]});
            for (unsigned y = 0; y < plane.height; ++y)
                plane.rows[y] += x;
            plane.view = plane.rows + row / im.verDiv[p];
        }
    };
    for (const auto& [target, source] : pairs) {
        if (target == source)
            continue;
        SCOPED_TRACE(fmt2string(source) + " to " + fmt2string(target));
        Image src = randomImage(source, 12, 8);
        const Image shown(Ko::wrapRectangle(std::as_const(src), 4, 2, 8, 6));
        const Image expected = inFormat(target, shown);
        offset(src, 4, 2);
        Image dst(target);
        Ko::convertIm(dst, src); // 12 x 8 asked for, 8 x 6 there
        EXPECT_EQ(dst.width, 12u);
        for (int p = 0; p < (target == Ko::PF_Y ? 1 : 3); ++p)
            for (unsigned y = 0; dst.plane[p].rows && y < dst.plane[p].height; ++y)
                for (unsigned x = 0; x < dst.plane[p].width; ++x) {
                    const auto& known = expected.plane[p];
                    const bool grey = p != 0 && source == Ko::PF_Y; // whatever the source holds
                    ASSERT_EQ(dst.plane[p].row(y)[x], grey                                  ? 128
                                                      : x < known.width && y < known.height ? known.row(y)[x]
                                                                                            : 0);
                }
        const Image whole = randomImage(source, 12, 8, 3);
        const Image converted = inFormat(target, whole);
        WrappedImage window(target, 12, 8);
        offset(window.im, 4, 2);
        Ko::convertIm(window.im, whole);
        EXPECT_TRUE(window.intact());
        for (int p = 0; p < (target == Ko::PF_Y ? 1 : 3); ++p) {
            const auto& plane = window.im.plane[p];
            if (!plane.rows)
                continue;
            const auto [w, h, left, top] = plane.subarrays.back();
            for (unsigned y = 0; y < plane.height; ++y)
                for (unsigned x = 0; x < plane.width; ++x)
                    ASSERT_EQ(window.memory[static_cast<std::size_t>(p)].row(y)[x],
                              x < left || y < top ? poison : converted.plane[p].row(y - top)[x - left])
                        << w << "x" << h;
        }
    }
}

/// Cb with fewer rows than the image says, Cr narrower than Cb: only what all planes hold is converted.
TEST(ConvertLimits, PlanesThatHoldLessAreNotOverrunAndTheRestIsZero) {
    const Image picture = randomImage(Ko::PF_YCC444P, 16, 6);
    Image src = picture;
    WrappedImage cb(Ko::PF_Y, 16, 4);
    WrappedImage cr(Ko::PF_Y, 10, 6);
    for (unsigned y = 0; y < 6; ++y) {
        if (y < 4)
            std::copy_n(picture.plane[1].row(y), 16, cb.im.plane[0].row(y));
        std::copy_n(picture.plane[2].row(y), 10, cr.im.plane[0].row(y));
    }
    src.plane[1] = std::move(cb.im.plane[0]);
    src.plane[2] = std::move(cr.im.plane[0]);
    for (const Ko::PIXEL_FORMAT target : {Ko::PF_RGB, Ko::PF_JFIF}) {
        const Image expected = inFormat(target, Ko::wrapRectangle(picture, 0, 0, 10, 4));
        Image dst(target);
        dst.size(16, 6);
        fill(dst, poison);
        Ko::convertIm(dst, src);
        for (unsigned y = 0; y < 6; ++y)
            for (unsigned i = 0; i < 48; ++i)
                ASSERT_EQ(dst.plane[0].row(y)[i], y < 4 && i < 30 ? expected.plane[0].row(y)[i] : 0) << y << " " << i;
    }
    Image small(Ko::PF_YCC420P);
    Ko::convertIm(small, src);
    EXPECT_EQ(samples(small, 0), samples(picture, 0));
    EXPECT_EQ(small.plane[1].row(2)[0], 0);
    EXPECT_EQ(small.plane[2].row(2)[5], 0);

    // A description that claims more than there is, as after fmt() without size().
    Image claims = randomImage(Ko::PF_Y, 8, 8);
    claims.plane[0].newData(0, 0, true);
    for (int round = 0; round < 2; ++round) {
        Image dst(Ko::PF_YCC444P);
        dst.size(8, 8);
        fill(dst, poison);
        Ko::convertIm(dst, claims);
        EXPECT_EQ(samples(dst, 0), std::vector<std::vector<unsigned char>>(8, std::vector<unsigned char>(8)));
        claims = randomImage(Ko::PF_YCC444P, 8, 8);
        claims.fmt(Ko::PF_RGB);
        claims.plane[0].newData(0, 0, true);
    }
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

    // Of wrapped and owned planes the wrapped one is heard first, and the owned ones stay.
    Image mixed = randomImage(Ko::PF_YCC444P, 3, 2);
    unsigned char luma[6] = {};
    mixed.plane[0] = std::move(Ko::wrapMemory(Ko::PF_Y, 3, 2, {{luma, 3}}).plane[0]);
    const unsigned char* chroma = mixed.plane[1].data;
    src.width = src.height = 70000;
    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::convertIm(mixed, src); }), resizeText);
    EXPECT_EQ(mixed.plane[1].data, chroma);
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
