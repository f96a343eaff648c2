#include "Kovanta/ImageFile.h"

#include "BareStills.h"
#include "imagefile/StillMakers.h"
#include "imagefile/StillOracle.h"
#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"

#include <gtest/gtest.h>

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>

#include <algorithm>
#include <stdexcept>

namespace {

using namespace test;

TEST(Jpeg, EveryCodingOfGreyAndYccReadsAsLibjpegDecodesIt) {
    const TempDirectory directory;
    const JpegRecipe recipes[] = {{1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1},
                                  {1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1, true},
                                  {3, JCS_YCbCr, JCS_YCbCr, 2, 1},
                                  {3, JCS_YCbCr, JCS_YCbCr, 2, 2},
                                  {3, JCS_YCbCr, JCS_YCbCr, 1, 2, true},
                                  {3, JCS_YCbCr, JCS_YCbCr, 4, 1},
                                  {3, JCS_YCbCr, JCS_YCbCr, 2, 2, false, true},
                                  {3, JCS_YCbCr, JCS_YCbCr, 1, 1, true, true},
                                  {3, JCS_RGB, JCS_YCbCr, 2, 2, false, false, 1, 1},
                                  {3, JCS_RGB, JCS_YCbCr, 2, 1, false, false, 40, 1}};
    for (const JpegRecipe& recipe : recipes) {
        const std::string bytes = makeJpeg(recipe);
        const std::string path = directory.write("a.jpg", bytes);
        const auto decoded = decodeJpeg(bytes);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->width, recipe.width);
        for (const Ko::PIXEL_FORMAT format : {decoded->format, Ko::PF_YCC444P})
            EXPECT_EQ(wrongReading(path, *decoded, format), "") << fmt2string(format);
    }
}

TEST(Jpeg, OtherColourSpacesAreRefused) {
    const TempDirectory directory;
    const std::string unsupported = "[readJpegImage]: Unsupported color space.";
    using Case = std::pair<JpegRecipe, std::string>;
    for (const auto& [recipe, text] :
         {Case{{4, JCS_CMYK, JCS_CMYK, 1, 1}, unsupported}, Case{{4, JCS_CMYK, JCS_YCCK, 1, 1}, unsupported},
          Case{{2, JCS_UNKNOWN, JCS_UNKNOWN, 1, 1}, unsupported},
          Case{{3, JCS_RGB, JCS_RGB, 1, 1},
               "[readJpegImage]: libjpeg failed. (Unsupported color conversion request)"}}) {
        const std::string path = directory.write("a.jpg", makeJpeg(recipe));
        const Image before = randomImage(Ko::PF_YCC444P, 3, 2);
        Image im = before;
        EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::readJpegImage(im, path); }), text);
        EXPECT_EQ(difference(im, before), "");
    }
}

TEST(Jpeg, WritesOneKindOfFile) {
    const TempDirectory directory;
    const std::string path = directory.file("a.jpg");
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_JFIF, Ko::PF_YCC444P}) {
        const Image im = randomImage(format, 37, 19);
        Ko::writeJpegImage(path, im);
        const Image jfif = inFormat(Ko::PF_JFIF, im);
        // Bare libjpeg makes the same bytes of the same settings.
        bench::BarePicture picture;
        picture.size(im.width, im.height);
        std::copy_n(jfif.plane[0].data, picture.bytes.size(), picture.bytes.begin());
        bench::writeBareJpeg(directory.file("bare.jpg"), picture);
        EXPECT_EQ(fileBytes(path), fileBytes(directory.file("bare.jpg"))) << fmt2string(format);
    }
}

TEST(Jpeg, SizesThatJpegHasNotAreRefused) {
    const TempDirectory directory;
    const std::string path = directory.write("a.jpg", "something older");
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::writeJpegImage(path, Ko::Image(Ko::PF_YCC444P)); }),
              "[writeJpegImage]: libjpeg failed. (Empty JPEG image (DNL not supported))");
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::writeJpegImage(path, randomImage(Ko::PF_JFIF, 65501, 1)); }),
              "[writeJpegImage]: libjpeg failed. (Maximum supported image dimension is 65500 pixels)");
    EXPECT_EQ(fileBytes(path), "something older");
}

TEST(Jpeg, ARefusedConversionComesAfterTheResize) {
    const TempDirectory directory;
    const std::string path = directory.file("a.jpg");
    Ko::writeJpegImage(path, randomImage(Ko::PF_JFIF, 6, 4));
    WrappedImage wrapped(Ko::PF_Y, 9, 9);
    EXPECT_EQ(thrownText<std::logic_error>([&] { Ko::readJpegImage(wrapped.im, path); }),
              "[convertIm]: Don't know how to convert from PF_JFIF (Packed JFIF Y'CbCr 4:4:4) to PF_Y (Grayscale).");
    EXPECT_EQ(wrapped.im.width, 6u);
    EXPECT_EQ(wrapped.im.height, 4u);
    EXPECT_TRUE(wrapped.im.plane[0].alloc);
    EXPECT_TRUE(wrapped.intact());
}

} // namespace
