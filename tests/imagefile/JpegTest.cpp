#include "Kovanta/ImageFile.h"

#include "BareStills.h"
#include "imagefile/StillMakers.h"
#include "imagefile/StillOracle.h"
#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>

#include <algorithm>
#include <stdexcept>

namespace {

using testing_support::fileBytes;
using testing_support::Image;
using testing_support::JpegRecipe;
using testing_support::randomImage;
using testing_support::samples;
using testing_support::TempDirectory;
using testing_support::thrownText;

TEST(Jpeg, EveryCodingOfGreyAndYccReadsAsLibjpegDecodesIt) {
    const TempDirectory directory;
    const JpegRecipe recipes[] = {
        {1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1},
        {1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1, true},
        {3, JCS_YCbCr, JCS_YCbCr, 1, 1},
        {3, JCS_YCbCr, JCS_YCbCr, 2, 1},
        {3, JCS_YCbCr, JCS_YCbCr, 2, 2},
        {3, JCS_YCbCr, JCS_YCbCr, 1, 2, true},
        {3, JCS_YCbCr, JCS_YCbCr, 4, 1},
        {3, JCS_YCbCr, JCS_YCbCr, 2, 2, true},
        {3, JCS_YCbCr, JCS_YCbCr, 2, 2, false, true},
        {3, JCS_YCbCr, JCS_YCbCr, 1, 1, true, true},
        {3, JCS_RGB, JCS_YCbCr, 2, 2, false, false, 1, 1},
        {3, JCS_RGB, JCS_YCbCr, 2, 1, false, false, 40, 1},
    };
    for (const JpegRecipe& recipe : recipes) {
        const std::string bytes = testing_support::makeJpeg(recipe);
        const std::string path = directory.write("a.jpg", bytes);
        const auto decoded = testing_support::decodeJpeg(bytes);
        ASSERT_TRUE(decoded);
        for (const Ko::PIXEL_FORMAT format : {decoded->format, Ko::PF_YCC444P}) {
            Image expected(format);
            expected.size(recipe.width, recipe.height);
            ASSERT_TRUE(testing_support::expectedConversion(expected, *decoded));
            Image im = randomImage(format, 3, 3);
            im.sequenceNumber = 5;
            Ko::readJpegImage(im, path);
            EXPECT_EQ(im.width, recipe.width);
            EXPECT_EQ(im.height, recipe.height);
            EXPECT_EQ(im.format, format);
            for (int p = 0; p < (format == Ko::PF_YCC444P ? 3 : 1); ++p)
                EXPECT_EQ(samples(im, p), samples(expected, p)) << fmt2string(format) << p;
            // Of an identical format everything is copied, the number included.
            EXPECT_EQ(im.sequenceNumber, format == decoded->format ? 0u : 5u);
        }
    }
}

TEST(Jpeg, OtherColourSpacesAreRefused) {
    const TempDirectory directory;
    const struct {
        JpegRecipe recipe;
        const char* text;
    } cases[] = {
        {{4, JCS_CMYK, JCS_CMYK, 1, 1}, "[readJpegImage]: Unsupported color space."},
        {{4, JCS_CMYK, JCS_YCCK, 1, 1}, "[readJpegImage]: Unsupported color space."},
        {{2, JCS_UNKNOWN, JCS_UNKNOWN, 1, 1}, "[readJpegImage]: Unsupported color space."},
        {{3, JCS_RGB, JCS_RGB, 1, 1}, "[readJpegImage]: libjpeg failed. (Unsupported color conversion request)"},
    };
    for (const auto& c : cases) {
        const std::string path = directory.write("a.jpg", testing_support::makeJpeg(c.recipe));
        Image im = randomImage(Ko::PF_YCC444P, 3, 2);
        const auto before = samples(im, 2);
        EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::readJpegImage(im, path); }), c.text);
        EXPECT_EQ(samples(im, 2), before);
    }
}

TEST(Jpeg, WritesOneKindOfFile) {
    const TempDirectory directory;
    const std::string path = directory.file("a.jpg");
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_JFIF, Ko::PF_YCC444P}) {
        const Image im = randomImage(format, 37, 19);
        Ko::writeJpegImage(path, im);
        Image jfif(Ko::PF_JFIF);
        jfif.size(im.width, im.height);
        ASSERT_TRUE(testing_support::expectedConversion(jfif, im));

        // Bare libjpeg makes the same bytes of the same settings.
        bench::BarePicture picture;
        picture.size(im.width, im.height);
        std::copy_n(jfif.plane[0].data, picture.bytes.size(), picture.bytes.begin());
        bench::writeBareJpeg(directory.file("bare.jpg"), picture);
        EXPECT_EQ(fileBytes(path), fileBytes(directory.file("bare.jpg"))) << fmt2string(format);
    }
}

TEST(Jpeg, WhatCannotBeWrittenLeavesAnEmptyFileOrItsBeginning) {
    const TempDirectory directory;
    const std::string path = directory.write("a.jpg", "something older");
    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::writeJpegImage(path, randomImage(Ko::PF_Y, 3, 3)); }),
              "[convertIm]: Don't know how to convert from PF_Y (Grayscale) to PF_JFIF (Packed JFIF Y'CbCr 4:4:4).");
    EXPECT_EQ(fileBytes(path), "");
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::writeJpegImage(path, Image(Ko::PF_YCC444P)); }),
              "[writeJpegImage]: libjpeg failed. (Empty JPEG image (DNL not supported))");
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::writeJpegImage(path, randomImage(Ko::PF_JFIF, 65501, 1)); }),
              "[writeJpegImage]: libjpeg failed. (Maximum supported image dimension is 65500 pixels)");
    EXPECT_EQ(
        thrownText<std::runtime_error>([&] { Ko::writeJpegImage("/dev/full", randomImage(Ko::PF_JFIF, 64, 64)); }),
        "[writeJpegImage]: libjpeg failed. (Output file write error --- out of disk space?)");
}

TEST(Jpeg, ARefusedConversionComesAfterTheResize) {
    const TempDirectory directory;
    const std::string path = directory.file("a.jpg");
    Ko::writeJpegImage(path, randomImage(Ko::PF_JFIF, 6, 4));
    testing_support::GuardedRows memory(9, 9);
    Image wrapped(Ko::PF_Y);
    wrapped.size(9, 9, false);
    memory.pointRows(wrapped.plane[0]);
    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::readJpegImage(wrapped, path); }),
              "[convertIm]: Don't know how to convert from PF_JFIF (Packed JFIF Y'CbCr 4:4:4) to PF_Y (Grayscale).");
    EXPECT_EQ(wrapped.width, 6u);
    EXPECT_EQ(wrapped.height, 4u);
    EXPECT_TRUE(wrapped.plane[0].alloc);
    EXPECT_TRUE(memory.intact());
}

} // namespace
