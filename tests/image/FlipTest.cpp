#include "Kovanta/Image.h"

#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

using testing_support::fill;
using testing_support::GuardedRows;
using testing_support::Image;
using testing_support::randomImage;
using testing_support::samples;
using testing_support::thrownText;

using Rows = std::vector<std::vector<unsigned char>>;

struct Kind {
    Ko::PIXEL_FORMAT format;
    int planes;       // that take part
    std::size_t unit; // bytes that stay together
};

const Kind kinds[] = {{Ko::PF_Y, 1, 1}, {Ko::PF_YCC444P, 3, 1}, {Ko::PF_RGB, 1, 3}};

Rows upsideDown(Rows rows) {
    std::reverse(rows.begin(), rows.end());
    return rows;
}

Rows leftToRight(const Rows& rows, std::size_t unit) {
    Rows mirrored = rows;
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t i = 0; i < rows[y].size(); ++i)
            mirrored[y][i] = rows[y][rows[y].size() - unit - i / unit * unit + i % unit];
    return mirrored;
}

TEST(Flip, MirrorsEverySizeInPlaceAndIntoAnotherImage) {
    for (const Kind& kind : kinds)
        for (unsigned width = 1; width <= 140; width += width < 70 ? 1 : 7)
            for (const unsigned height : {1u, 2u, 5u}) {
                SCOPED_TRACE(testing::Message() << fmt2string(kind.format) << " " << width << " x " << height);
                const Image original = randomImage(kind.format, width, height, width);
                Image ver = original;
                Image hor = original;
                Ko::flipVer(ver);
                Ko::flipHor(hor);
                Image verOf = randomImage(Ko::PF_YCCA4444P, 3, 2);
                Image horOf(Ko::PF_BGR);
                verOf.sequenceNumber = 9;
                Ko::flipVer(verOf, original);
                Ko::flipHor(horOf, original);
                EXPECT_EQ(verOf.sequenceNumber, 9u);
                for (const Image* target : {&verOf, &horOf}) {
                    ASSERT_EQ(target->format, kind.format);
                    ASSERT_EQ(target->width, width);
                    ASSERT_EQ(target->height, height);
                }
                for (int p = 0; p < kind.planes; ++p) {
                    const Rows rows = samples(original, p);
                    EXPECT_EQ(samples(ver, p), upsideDown(rows));
                    EXPECT_EQ(samples(verOf, p), upsideDown(rows));
                    EXPECT_EQ(samples(hor, p), leftToRight(rows, kind.unit));
                    EXPECT_EQ(samples(horOf, p), leftToRight(rows, kind.unit));
                }
                // The chroma planes of grey are nobody's.
                EXPECT_EQ(samples(hor, 1) == samples(original, 1) || kind.format != Ko::PF_Y, true);
                Ko::flipVer(ver);
                Ko::flipHor(hor);
                EXPECT_EQ(samples(ver, 0), samples(original, 0));
                EXPECT_EQ(samples(hor, 0), samples(original, 0));
            }
}

TEST(Flip, RefusesOtherFormats) {
    for (unsigned f = Ko::PF_YCC444P; f <= Ko::PF_YUY2; ++f) {
        const auto format = static_cast<Ko::PIXEL_FORMAT>(f);
        if (std::any_of(std::begin(kinds), std::end(kinds), [&](const Kind& kind) { return kind.format == format; }))
            continue;
        const Image original = randomImage(format, 6, 4);
        const struct {
            const char* text;
            void (*inPlace)(Image&);
            void (*into)(Image&, const Image&);
        } calls[] = {
            {"[flipVer]: Image not planar, nor packed!", Ko::flipVer, Ko::flipVer},
            {"[flipHor]: Image not planar, nor packed!", Ko::flipHor, Ko::flipHor},
        };
        for (const auto& call : calls) {
            Image im = original;
            EXPECT_EQ(thrownText<std::logic_error>([&] { call.inPlace(im); }), call.text);
            EXPECT_EQ(samples(im, 0), samples(original, 0));
            Image dst = randomImage(Ko::PF_RGB, 2, 2);
            EXPECT_EQ(thrownText<std::logic_error>([&] { call.into(dst, original); }), call.text);
            EXPECT_EQ(dst.format, format); // reformatted and resized all the same
            EXPECT_EQ(dst.width, 6u);
            EXPECT_EQ(dst.plane[0].height, 4u);
            EXPECT_EQ(dst.plane[0].width, original.plane[0].width);
        }
    }
}

TEST(Flip, KeepsToWrappedMemory) {
    const Image original = randomImage(Ko::PF_RGB, 7, 5);
    GuardedRows memory(21, 5);
    Image wrapped(Ko::PF_RGB);
    wrapped.size(7, 5, false);
    memory.pointRows(wrapped.plane[0]);
    Ko::flipHor(wrapped, original);
    EXPECT_EQ(samples(wrapped, 0), leftToRight(samples(original, 0), 3));
    Ko::flipHor(wrapped);
    Ko::flipVer(wrapped);
    EXPECT_EQ(samples(wrapped, 0), upsideDown(samples(original, 0)));
    EXPECT_TRUE(memory.intact());

    for (const auto& [w, h] : {std::pair{8u, 6u}, {8u, 5u}, {7u, 6u}, {2u, 2u}})
        EXPECT_EQ(
            thrownText<std::logic_error>([&, w = w, h = h] { Ko::flipVer(wrapped, randomImage(Ko::PF_RGB, w, h)); }),
            "[Array2D<T>::resize]: Noalloc and trying to resize.");
    EXPECT_TRUE(memory.intact());
}

TEST(Flip, DegenerateImagesAreHarmless) {
    for (const auto& [w, h] : {std::pair{0u, 0u}, {0u, 3u}, {3u, 0u}}) {
        Image empty = randomImage(Ko::PF_YCC444P, 2, 2);
        empty.size(w, h);
        Image dst = randomImage(Ko::PF_RGB, 2, 2);
        Ko::flipVer(empty);
        Ko::flipHor(empty);
        Ko::flipVer(dst, empty);
        Ko::flipHor(dst, empty);
        EXPECT_EQ(dst.width, w);
        EXPECT_EQ(dst.height, h);
    }
    Image huge(Ko::PF_RGB); // wraps more than fits, as far as its description goes
    huge.width = 65536;
    huge.height = 65536;
    Image dst = randomImage(Ko::PF_Y, 2, 2);
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::flipHor(dst, huge); }), "[flipHor]: Image too large.");
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::flipVer(dst, huge); }), "[flipVer]: Image too large.");
    EXPECT_EQ(dst.format, Ko::PF_Y);
    EXPECT_EQ(dst.width, 2u);
    Image lying = randomImage(Ko::PF_RGB, 4, 4); // a description larger than the planes
    lying.width = 9;
    lying.height = 9;
    EXPECT_NO_THROW(Ko::flipVer(lying));
    EXPECT_NO_THROW(Ko::flipHor(lying));
    EXPECT_NO_THROW(Ko::flipHor(dst, lying));
    EXPECT_NO_THROW(Ko::flipVer(dst, lying));
}

} // namespace
