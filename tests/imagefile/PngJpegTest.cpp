// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"

#include "BareStills.h"
#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

using namespace test;
using testing::ThrowsMessage;

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
    EXPECT_THAT([&] { Ko::writeJpegImage(path, randomImage(Ko::PF_JFIF, 65501, 1)); },
                ThrowsMessage<std::runtime_error>(
                    "[writeJpegImage]: libjpeg failed. (Maximum supported image dimension is 65500 pixels)"));
    EXPECT_EQ(fileBytes(path), "something older");
}

} // namespace
