// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Wrap.h"
#include "Kovanta/ConvertIm.h"

#include "support/Rows.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

using namespace test;
using testing::ThrowsMessage;

static_assert(!std::is_convertible_v<Ko::ConstImage, Image&>, "what must not be written is not handed out to write");
static_assert(!std::is_copy_assignable_v<Ko::ConstImage>);

class WrapEveryFormat : public testing::TestWithParam<unsigned> {
protected:
    const Ko::PIXEL_FORMAT format = static_cast<Ko::PIXEL_FORMAT>(GetParam());
};

/// Top down with padding, and bottom up; odd sizes, and those that leave chroma without rows.
TEST_P(WrapEveryFormat, OverFirstBytesAndStrides) {
    for (const auto& [w, h] : {std::pair{7u, 5u}, {1u, 1u}, {8u, 2u}}) {
        const Image picture = randomImage(format, w, h);
        for (const bool bottomUp : {false, true}) {
            std::vector<unsigned char> memory[4];
            Ko::PlaneMemory planes[4];
            Ko::ConstPlaneMemory constPlanes[4];
            for (int p = 0; p < 4; ++p) {
                const auto rows = samples(picture, p);
                if (rows.empty())
                    continue;
                const std::size_t pitch = rows[0].size() + 3;
                memory[p].resize(pitch * rows.size());
                for (std::size_t y = 0; y < rows.size(); ++y)
                    std::copy(rows[y].begin(), rows[y].end(), &memory[p][pitch * (bottomUp ? rows.size() - 1 - y : y)]);
                const auto stride = static_cast<std::ptrdiff_t>(pitch);
                planes[p] = {&memory[p][bottomUp ? pitch * (rows.size() - 1) : 0], bottomUp ? -stride : stride};
                constPlanes[p] = {planes[p].first, planes[p].stride};
            }
            Image im = Ko::wrapMemory(format, w, h, planes);
            EXPECT_EQ(difference(im, picture), "");
            EXPECT_FALSE(im.plane[0].alloc);
            EXPECT_EQ(difference(Ko::wrapConstMemory(format, w, h, constPlanes), picture), "");
            im.plane[0].row(h - 1)[0] ^= 1;
            EXPECT_EQ(planes[0].first[static_cast<std::ptrdiff_t>(h - 1) * planes[0].stride],
                      picture.plane[0].row(h - 1)[0] ^ 1);
            const auto* rows = im.plane[0].rows;
            Ko::rewrapMemory(im, w, h, planes);
            EXPECT_EQ(im.plane[0].rows, rows) << "the same size needs no new memory";
        }
    }
}

/// Every rectangle shows what a whole image of its samples would.
TEST_P(WrapEveryFormat, OverRectangles) {
    Image im = randomImage(format, 12, 10);
    im.sequenceNumber = 5;
    for (const auto& [x, y, w, h] : std::vector<std::array<unsigned, 4>>{{0, 0, 12, 10}, {2, 4, 7, 5}, {10, 8, 2, 1}}) {
        Image part = Ko::wrapRectangle(im, x, y, w, h);
        EXPECT_EQ(std::pair(part.width, part.height), std::pair(w, h));
        EXPECT_EQ(part.sequenceNumber, 5u);
        for (int p = 0; p < 4; ++p) {
            if (im.horDiv[p] == 0 || !part.plane[p].rows)
                continue;
            const unsigned column = im.planar ? x / im.horDiv[p] : x * im.bytesPerPixelNum / im.bytesPerPixelDen;
            EXPECT_EQ(&part.plane[p].row(0)[0], &im.plane[p].row(y / im.verDiv[p])[column]);
            EXPECT_EQ(part.plane[p].height, h / im.verDiv[p]);
        }
        EXPECT_EQ(difference(Ko::wrapRectangle(std::as_const(im), x, y, w, h), part), "");
        EXPECT_EQ(Ko::wrapRectangle(part, 0, 0, 0, 0).plane[0].rows, nullptr);
    }
    for (const auto& r : std::vector<std::array<unsigned, 4>>{
             {12, 0, 2, 2}, {2, 0, 11, 2}, {0, 10, 2, 2}, {0, 2, 2, 9}, {2, 2, 0xFFFFFFFF, 2}})
        EXPECT_THAT([&] { Ko::wrapRectangle(im, r[0], r[1], r[2], r[3]); },
                    ThrowsMessage<std::out_of_range>("[wrapRectangle]: The rectangle leaves the image."));
    const bool rowPairs = format == Ko::PF_YCC420P;
    const bool columnPairs = rowPairs || format == Ko::PF_JFIF422P || format == Ko::PF_YUY2;
    for (const auto& [x, y, refused] : {std::tuple{1u, 0u, columnPairs}, {0u, 1u, rowPairs}})
        EXPECT_EQ(thrownText<std::logic_error>([&, left = x, top = y] { Ko::wrapRectangle(im, left, top, 4, 4); }),
                  refused ? "[wrapRectangle]: The corner splits a pair of pixels." : "nothing thrown");
    im.width = 99; // the description claims more than the planes hold
    EXPECT_THROW(Ko::wrapRectangle(im, 4, 0, 9, 2), std::out_of_range);
}

INSTANTIATE_TEST_SUITE_P(Formats, WrapEveryFormat, testing::Range(1u, 12u), [](const auto& tested) {
    const std::string text = fmt2string(static_cast<Ko::PIXEL_FORMAT>(tested.param));
    return text.substr(3, text.find(' ') - 3);
});

TEST(Wrap, MistakesAreNamedAndChangeNothing) {
    unsigned char b[64] = {};
    const struct {
        Ko::PIXEL_FORMAT format;
        Ko::PlaneMemory planes[4];
        const char* text;
    } mistakes[] = {{Ko::PF_YCC444P, {{b, 4}, {b, 4}}, "[wrapMemory]: Plane 2 has no memory."},
                    {Ko::PF_RGB, {{b, -11}}, "[wrapMemory]: Plane 0 has a stride below its row's length."},
                    {Ko::PF_RGB, {{b, 12}, {b, 12}}, "[wrapMemory]: The format has no plane 1."},
                    {Ko::PF_UNKNOWN, {{b, 4}}, "[Image<T>::Image]: Unknown format."}};
    for (const auto& mistake : mistakes)
        EXPECT_THAT([&] { Ko::wrapMemory(mistake.format, 4, 4, mistake.planes); },
                    ThrowsMessage<std::logic_error>(mistake.text));
    const Ko::PlaneMemory endless[4] = {{b, 65536}};
    EXPECT_THAT([&] { Ko::wrapMemory(Ko::PF_Y, 65536, 65536, endless); },
                ThrowsMessage<std::runtime_error>("[wrapMemory]: Image too large."));
    const Image before = randomImage(Ko::PF_RGB, 4, 4);
    Image im = before;
    EXPECT_THROW(Ko::rewrapMemory(im, 2, 2, {}), std::logic_error);
    EXPECT_EQ(difference(im, before), "");
}

TEST(Wrap, GreyNeedsNoChroma) {
    unsigned char luma[8] = {0, 255};
    unsigned char alpha[8] = {};
    Image grey = Ko::wrapMemory(Ko::PF_Y, 4, 2, {{luma, 4}});
    Ko::rewrapMemory(grey, 4, 2, {{luma, 4}});
    const Image copy = grey;
    EXPECT_EQ(copy.plane[0].row(0)[1], 255);
    Image studio(Ko::PF_YCC444P);
    Ko::convertIm(studio, grey);
    EXPECT_EQ(studio.plane[0].row(0)[1], 235);
    Ko::convertIm(grey, studio);
    EXPECT_EQ(luma[1], 255);
    EXPECT_FALSE(Ko::wrapMemory(Ko::PF_YAP, 4, 2, {{luma, 4}, {}, {}, {alpha, 4}}).plane[3].alloc);
    EXPECT_EQ(Ko::wrapRectangle(grey, 1, 1, 3, 1).plane[0].row(0), luma + 5);
}

} // namespace
