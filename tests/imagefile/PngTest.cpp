#include "Kovanta/ImageFile.h"

#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

const std::string notice = "[readPngImage]: Grayscale plus alpha is currently not supported, removing alpha channel.\n";

TEST(Png, DroppedAlphaIsToldOnceARead) {
    for (const auto& [name, text] : {std::pair{"grey_alpha_8", notice}, {"grey_8", ""}, {"rgba_8", ""}}) {
        Image im(Ko::PF_YCC444P);
        testing::internal::CaptureStdout();
        Ko::readPngImage(im, std::string(STILLS "png/") + name + ".png");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), text) << name;
    }
}

TEST(Png, WritesPlainRgb) {
    const TempDirectory directory;
    const std::string path = directory.file("a.png");
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_RGB, Ko::PF_YCC444P}) {
        const Image im = randomImage(format, 37, 19);
        Ko::writePngImage(path, im);
        const std::string bytes = fileBytes(path);
        Image back(Ko::PF_RGB);
        Ko::readPngImage(back, path);
        EXPECT_EQ(difference(back, inFormat(Ko::PF_RGB, im)), "");
        EXPECT_EQ(bytes.substr(16, 13),
                  std::string("\0\0\0\x25\0\0\0\x13\x8\2\0\0\0", 13)); // 8 bits, RGB, not interlaced
        EXPECT_EQ(bytes.substr(37, 4), "IDAT");                        // and nothing between header and pixels,
        EXPECT_EQ(bytes.substr(bytes.size() - 8, 4), "IEND");          // nor after them
    }
}

} // namespace
