// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Image.h"

#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

using namespace test;

const Ko::PIXEL_FORMAT known[] = {Ko::PF_Y, Ko::PF_YCC444P, Ko::PF_RGB};

const struct {
    const char* name;
    void (*inPlace)(Image&);
    void (*into)(Image&, const Image&);
} flips[] = {{"[flipVer]: ", Ko::flipVer, Ko::flipVer}, {"[flipHor]: ", Ko::flipHor, Ko::flipHor}};

/// The picture upside down, or left to right.
Image mirrored(const Image& im, bool vertically) {
    Image result = im;
    const std::size_t unit = im.format == Ko::PF_RGB ? 3 : 1; // bytes that stay together
    for (int p = 0; p < (im.format == Ko::PF_YCC444P ? 3 : 1); ++p) {
        const auto rows = samples(im, p);
        for (std::size_t y = 0; y < rows.size(); ++y)
            for (std::size_t i = 0; i < rows[y].size(); ++i)
                result.plane[p].view[y][i] = vertically ? rows[rows.size() - 1 - y][i]
                                                        : rows[y][rows[y].size() - unit - i / unit * unit + i % unit];
    }
    return result;
}

TEST(Flip, MirrorsEverySizeInPlaceAndIntoAnotherImage) {
    for (const Ko::PIXEL_FORMAT format : known)
        for (unsigned width = 1; width <= 140; width += width < 70 ? 1 : 7)
            for (const unsigned height : {1u, 2u, 5u})
                for (const auto& flip : flips) {
                    const Image original = randomImage(format, width, height, width);
                    const Image expected = mirrored(original, &flip == flips);
                    Image im = original;
                    flip.inPlace(im);
                    EXPECT_EQ(difference(im, expected), "") << flip.name;
                    EXPECT_EQ(samples(im, 1), samples(expected, 1)); // those of PF_Y stay as they were
                    Image other = randomImage(Ko::PF_YCCA4444P, 3, 2);
                    other.sequenceNumber = 9;
                    flip.into(other, original);
                    EXPECT_EQ(difference(other, expected), "") << flip.name;
                    EXPECT_EQ(other.sequenceNumber, 9u);
                    WrappedImage wrapped(format, width, height);
                    flip.into(wrapped.im, original);
                    EXPECT_EQ(difference(wrapped.im, expected), "") << flip.name;
                    flip.inPlace(wrapped.im);
                    EXPECT_EQ(difference(wrapped.im, original), "") << flip.name;
                    EXPECT_TRUE(wrapped.intact());
                }
}

TEST(Flip, RefusesOtherFormats) {
    for (unsigned f = Ko::PF_YCC444P; f <= Ko::PF_YUY2; ++f) {
        const auto format = static_cast<Ko::PIXEL_FORMAT>(f);
        if (std::count(std::begin(known), std::end(known), format) != 0)
            continue;
        const Image original = randomImage(format, 6, 4);
        for (const auto& flip : flips) {
            const std::string text = std::string(flip.name) + "Image not planar, nor packed!";
            Image im = original;
            EXPECT_EQ(thrownText<std::logic_error>([&] { flip.inPlace(im); }), text);
            EXPECT_EQ(difference(im, original), "");
            Image dst = randomImage(Ko::PF_RGB, 2, 2);
            EXPECT_EQ(thrownText<std::logic_error>([&] { flip.into(dst, original); }), text);
            EXPECT_EQ(dst.format, format); // reformatted and resized all the same
            EXPECT_EQ(std::pair(dst.plane[0].width, dst.plane[0].height), std::pair(original.plane[0].width, 4u));
        }
    }
}

TEST(Flip, RefusesWrappedMemoryOfAnotherSize) {
    WrappedImage wrapped(Ko::PF_RGB, 7, 5);
    for (const auto& [w, h] : {std::pair{8u, 6u}, {8u, 5u}, {7u, 6u}, {2u, 2u}}) {
        const Image other = randomImage(Ko::PF_RGB, w, h);
        EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::flipVer(wrapped.im, other); }),
                  "[Array2D<T>::resize]: Noalloc and trying to resize.");
    }
}

/// A source whose view begins inside, or with a plane of fewer rows or columns: what is there goes where the mirror has
/// it, the rest is 0. The target is the source's own memory in the last round.
TEST(Flip, MissingSamplesAreZeroAndSharedOnesAreReadFirst) {
    for (const Ko::PIXEL_FORMAT format : known)
        for (const auto& flip : flips) {
            Image src = randomImage(format, 9, 6);
            Image whole = src;
            fill(whole, 0);
            const unsigned unit = format == Ko::PF_RGB ? 3 : 1;
            for (int p = 0; p < 3; ++p) {
                auto& plane = src.plane[p];
                if (!plane.rows || (format == Ko::PF_Y && p != 0))
                    continue;
                for (unsigned y = 2; y < 6; ++y)
                    std::copy(plane.row(y) + 4 * unit, plane.row(y) + 9 * unit, whole.plane[p].row(y - 2));
                test::beginAt(plane, 4 * unit, 2);
            }
            const Image expected = mirrored(whole, &flip == flips);
            Image dst = randomImage(format, 9, 6, 2);
            flip.into(dst, src);
            EXPECT_EQ(difference(dst, expected), "") << flip.name;
            Image window = Ko::wrapRectangle(whole, 0, 0, 9, 6);
            flip.into(window, whole);
            EXPECT_EQ(difference(whole, expected), "") << flip.name;
        }
}

TEST(Flip, DegenerateImagesAreHarmless) {
    Image huge(Ko::PF_RGB); // wraps more than fits, as far as its description goes
    huge.width = huge.height = 65536;
    Image lying = randomImage(Ko::PF_RGB, 4, 4); // a description larger than the planes
    lying.width = lying.height = 9;
    for (const auto& flip : flips) {
        const Image before = randomImage(Ko::PF_Y, 2, 2);
        Image dst = before;
        EXPECT_EQ(thrownText<std::runtime_error>([&] { flip.into(dst, huge); }),
                  flip.name + std::string("Image too large."));
        EXPECT_EQ(difference(dst, before), "");
        EXPECT_NO_THROW(flip.inPlace(lying));
        EXPECT_NO_THROW(flip.into(dst, lying));
        for (const auto& [w, h] : {std::pair{0u, 0u}, {0u, 3u}, {3u, 0u}}) {
            Image empty = randomImage(Ko::PF_YCC444P, 2, 2);
            empty.size(w, h);
            flip.inPlace(empty);
            flip.into(dst, empty);
            EXPECT_EQ(std::pair(dst.width, dst.height), std::pair(w, h));
        }
    }
}

} // namespace
