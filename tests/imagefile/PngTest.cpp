#include "Kovanta/ImageFile.h"

#include "imagefile/StillMakers.h"
#include "imagefile/StillOracle.h"
#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"

#include <gtest/gtest.h>

#include <png.h>

#include <stdexcept>

namespace {

using namespace test;

const std::string notice = "[readPngImage]: Grayscale plus alpha is currently not supported, removing alpha channel.\n";

std::vector<PngRecipe> everyKind() {
    std::vector<PngRecipe> recipes;
    const std::pair<int, std::vector<int>> depths[] = {
        {PNG_COLOR_TYPE_GRAY, {1, 2, 4, 8, 16}}, {PNG_COLOR_TYPE_RGB, {8, 16}},
        {PNG_COLOR_TYPE_PALETTE, {1, 2, 4, 8}},  {PNG_COLOR_TYPE_GRAY_ALPHA, {8, 16}},
        {PNG_COLOR_TYPE_RGB_ALPHA, {8, 16}},
    };
    for (const auto& [type, bits] : depths)
        for (const int depth : bits)
            for (const bool interlaced : {false, true})
                for (const bool transparency : {false, true})
                    if (!transparency || !(type & PNG_COLOR_MASK_ALPHA))
                        for (const unsigned width : {1u, 11u})
                            recipes.push_back({type, depth, interlaced, transparency, width, 9});
    return recipes;
}

TEST(Png, EveryKindReadsAsItsSamplesSay) {
    const TempDirectory directory;
    for (const PngRecipe& recipe : everyKind()) {
        SCOPED_TRACE(testing::Message() << "type " << recipe.colorType << " depth " << recipe.bitDepth << " interlaced "
                                        << recipe.interlaced << " transparency " << recipe.transparency);
        const std::string bytes = makePng(recipe);
        const std::string path = directory.write("a.png", bytes);
        const auto decoded = decodePng(bytes);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->width, recipe.width);
        for (const Ko::PIXEL_FORMAT format : {decoded->format, Ko::PF_YCC444P}) {
            testing::internal::CaptureStdout();
            EXPECT_EQ(wrongReading(path, *decoded, format), "") << fmt2string(format);
            EXPECT_EQ(testing::internal::GetCapturedStdout(),
                      recipe.colorType == PNG_COLOR_TYPE_GRAY_ALPHA ? notice : "");
        }
    }
}

TEST(Png, WritesPlainRgb) {
    const TempDirectory directory;
    const std::string path = directory.file("a.png");
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_RGB, Ko::PF_YCC444P}) {
        const Image im = randomImage(format, 37, 19);
        Ko::writePngImage(path, im);
        const std::string bytes = fileBytes(path);
        const auto decoded = decodePng(bytes);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(difference(*decoded, inFormat(Ko::PF_RGB, im)), "");
        const std::string start = pngStart(37, 19, 8, PNG_COLOR_TYPE_RGB);
        EXPECT_EQ(bytes.substr(0, start.size()), start);      // not interlaced, and
        EXPECT_EQ(bytes.substr(start.size() + 4, 4), "IDAT"); // nothing between header
        EXPECT_EQ(bytes.substr(bytes.size() - 8, 4), "IEND"); // and pixels
    }
}

TEST(Png, AnEmptyImageIsRefused) {
    const TempDirectory directory;
    const std::string path = directory.write("a.png", "something older");
    EXPECT_EQ(thrownText<std::runtime_error>([&] { Ko::writePngImage(path, Ko::Image(Ko::PF_RGB)); }),
              "writePngImage: png_error called.");
    EXPECT_EQ(fileBytes(path), "something older");
}

TEST(Png, ARefusedConversionComesAfterTheResize) {
    const TempDirectory directory;
    const std::string path = directory.write("a.png", makePng({PNG_COLOR_TYPE_RGB_ALPHA, 8}));
    Image im = randomImage(Ko::PF_RGB, 3, 2);
    EXPECT_EQ(
        thrownText<std::logic_error>([&] { Ko::readPngImage(im, path); }),
        "[convertIm]: Don't know how to convert from PF_RGBA (Packed RGBA 4:4:4:4) to PF_RGB (Packed RGB 4:4:4).");
    EXPECT_EQ(im.width, 11u);
    EXPECT_EQ(im.plane[0].width, 33u);
    EXPECT_EQ(im.plane[0].height, 9u);
}

} // namespace
